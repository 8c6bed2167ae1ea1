// The parser of scripts. script_run.cpp runs them.
#include "desktop/script.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

namespace desktop {

namespace {

using std::chrono::milliseconds;

constexpr int LongestWaitMs = 600'000;
constexpr int LongestDragMs = 60'000;
constexpr int HighestLogLevel = 9;
constexpr std::size_t LongestShotName = 100;
constexpr std::size_t LongestShownWord = 40;

constexpr std::string_view Spaces = " \t\r";

// One line, taken apart word by word. Every Fail names what the line's word wants.
class Line {
public:
    explicit Line(std::string_view text) : rest(Trimmed(text)) {}

    bool Empty() const { return rest.empty(); }
    bool IsComment() const { return rest.starts_with("#"); }

    std::string_view Word() {
        const std::size_t end = std::min(rest.find_first_of(Spaces), rest.size());
        const std::string_view word = rest.substr(0, end);
        rest = Trimmed(rest.substr(end));
        return word;
    }

    // All that is left, as it stands.
    std::string Rest(const char* what) {
        if (rest.empty())
            throw Fault(std::string("needs ") + what);
        return std::string(std::exchange(rest, {}));
    }

    template <class Number>
    Number Integer(const char* what, Number lowest, Number highest) {
        if (rest.empty())
            throw Fault(std::string("needs ") + what);
        const std::string_view word = Word();
        Number value = 0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
        if (error != std::errc() || end != word.data() + word.size())
            if (error != std::errc::result_out_of_range)
                throw Fault("'" + Shown(word) + "' is no number");
        if (error == std::errc::result_out_of_range || value < lowest || value > highest)
            throw Fault(Shown(word) + " is not within " + std::to_string(lowest) + " to " +
                        std::to_string(highest));
        return value;
    }

    Point ScreenPoint() {
        Point point;
        point.x = Integer("X and Y", 0, ScreenPixels - 1);
        point.y = Integer("X and Y", 0, ScreenPixels - 1);
        return point;
    }

    milliseconds Duration(int longest) { return milliseconds(Integer("a time in ms", 0, longest)); }

    void RequireEnd() const {
        if (!rest.empty())
            throw Fault("does not know what '" + Shown(rest) + "' means here");
    }

    static std::string Shown(std::string_view word) {
        return std::string(word.substr(0, LongestShownWord)) + (word.size() > LongestShownWord ? "..." : "");
    }

private:
    static std::string_view Trimmed(std::string_view text) {
        const std::size_t from = text.find_first_not_of(Spaces);
        if (from == std::string_view::npos)
            return {};
        return text.substr(from, text.find_last_not_of(Spaces) + 1 - from);
    }

    std::string_view rest;
};

using Action = decltype(ScriptStep::action);

SendStep Sending(Command command, std::string payload) {
    return {static_cast<std::uint32_t>(command), std::move(payload)};
}

Action ParseTouch(TouchType type, Line& line) {
    return TouchStep{type, line.ScreenPoint()};
}

Action ParseDrag(Line& line) {
    DragStep drag;
    drag.from = line.ScreenPoint();
    drag.to = line.ScreenPoint();
    drag.duration = line.Duration(LongestDragMs);
    return drag;
}

Action ParseShot(Line& line) {
    const std::string_view name = line.Word();
    if (name.empty())
        throw Fault("needs a name");
    const auto isPlain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
               c == '_' || c == '.';
    };
    if (name.size() > LongestShotName || name.front() == '.' ||
        !std::all_of(name.begin(), name.end(), isPlain))
        throw Fault("a name has letters, digits, '-', '_' and '.' only, and no '.' in front: '" +
                    Line::Shown(name) + "'");
    return ShotStep{std::string(name)};
}

Action ParseNight(Line& line) {
    return Sending(Command::Night, EncodeU32(line.Integer<std::uint32_t>("0 or 1", 0, 1)));
}

Action ParseLogLevel(Line& line) {
    return Sending(Command::LogLevel, EncodeU32(line.Integer<std::uint32_t>(
                                          "a level", 0, static_cast<std::uint32_t>(HighestLogLevel))));
}

Action ParseJsonMessage(Command command, Line& line) {
    std::string text = line.Rest("a JSON object");
    // Depth is bounded here, as the reader that we call recurses.
    constexpr int deepest = 64;
    bool tooDeep = false;
    const auto watch = [&](int depth, nlohmann::json::parse_event_t, nlohmann::json&) {
        tooDeep = tooDeep || depth > deepest;
        return !tooDeep;
    };
    const nlohmann::json value = nlohmann::json::parse(text, watch, /*allow_exceptions=*/false);
    if (tooDeep || value.is_discarded() || !value.is_object())
        throw Fault("'" + Line::Shown(text) + "' is no JSON object");
    text.push_back('\0');
    return Sending(command, std::move(text));
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

Action ParseRaw(Line& line) {
    SendStep step;
    step.command = line.Integer<std::uint32_t>("a message number", 0, 0xFFFFFFFF);
    if (line.Empty())
        return step;
    const std::string digits = line.Rest("hexadecimal digits");
    std::string nibbles;
    for (const char c : digits) {
        if (Spaces.find(c) != std::string_view::npos)
            continue;
        if (HexDigit(c) < 0)
            throw Fault(std::string("'") + c + "' is no hexadecimal digit");
        nibbles.push_back(static_cast<char>(HexDigit(c)));
    }
    if (nibbles.size() % 2 != 0)
        throw Fault("an odd number of hexadecimal digits");
    for (std::size_t i = 0; i < nibbles.size(); i += 2)
        step.payload.push_back(static_cast<char>(nibbles[i] << 4 | nibbles[i + 1]));
    return step;
}

struct Verb {
    std::string_view name;
    std::function<Action(Line&)> parse;
};

const std::vector<Verb>& Verbs() {
    static const std::vector<Verb> verbs = {
        {"down", [](Line& line) { return ParseTouch(TouchType::Down, line); }},
        {"move", [](Line& line) { return ParseTouch(TouchType::Move, line); }},
        {"up", [](Line& line) { return ParseTouch(TouchType::Up, line); }},
        {"tap", [](Line& line) { return Action(TapStep{line.ScreenPoint()}); }},
        {"drag", ParseDrag},
        {"wait", [](Line& line) { return Action(WaitStep{line.Duration(LongestWaitMs)}); }},
        {"settle", [](Line&) { return Action(SettleStep{}); }},
        {"shot", ParseShot},
        {"night", ParseNight},
        {"settings", [](Line& line) { return ParseJsonMessage(Command::Settings, line); }},
        {"runtime", [](Line& line) { return ParseJsonMessage(Command::Runtime, line); }},
        {"rest", [](Line&) { return Action(Sending(Command::Rest, "")); }},
        {"expect", [](Line& line) { return Action(ExpectStep{line.Rest("the text of a command")}); }},
        {"log-level", ParseLogLevel},
        {"raw", ParseRaw},
    };
    return verbs;
}

Action ParseAction(Line& line) {
    const std::string_view name = line.Word();
    for (const Verb& verb : Verbs()) {
        if (verb.name != name)
            continue;
        try {
            Action action = verb.parse(line);
            line.RequireEnd();
            return action;
        } catch (const Fault& fault) {
            throw Fault(std::string(name) + " " + fault.what());
        }
    }
    throw Fault("'" + Line::Shown(name) + "' is no step of a script");
}

} // namespace

bool Script::TakesShots() const {
    return std::any_of(steps.begin(), steps.end(),
                       [](const ScriptStep& step) { return std::holds_alternative<ShotStep>(step.action); });
}

Script ParseScript(const std::string& name, std::string_view text) {
    Script script;
    script.name = name;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        Line line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.Empty() || line.IsComment())
            continue;
        try {
            script.steps.push_back({number, ParseAction(line)});
        } catch (const Fault& fault) {
            throw Fault(name + ":" + std::to_string(number) + ": " + fault.what());
        }
    }
    return script;
}

Script ReadScript(const std::string& file) {
    std::ostringstream text;
    if (file == "-") {
        text << std::cin.rdbuf();
        return ParseScript("standard input", text.view());
    }
    std::ifstream in(file, std::ios::binary);
    if (!in || std::filesystem::is_directory(file))
        throw Fault(file + ": no such script");
    text << in.rdbuf();
    return ParseScript(file, text.view());
}

} // namespace desktop
