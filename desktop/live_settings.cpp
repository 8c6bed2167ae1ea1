// LiveHost's settings: read from JSON as the page and the API send them, sent on as the display wants them.
#include "desktop/live_host.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <utility>

namespace desktop {

namespace {

using nlohmann::json;

constexpr int RestModes = 6;
constexpr int DateFormats = 4;
constexpr std::uint32_t LongestRestDelay = 86'400;
constexpr std::uint32_t HighestLogLevel = 9;
constexpr int DateFormatMask = 255;
constexpr int FahrenheitBit = 256;
constexpr const char* RestWords[RestModes] = {"ECO", "TIME", "DATE", "TEMPERATURE", "HUMIDITY", "NEVER"};

// Reads one value; false when it is none that the key can have.
template <class Number>
bool ReadNumber(const json& value, std::optional<Number>& out, std::int64_t highest) {
    if (!value.is_number_integer() || value < 0 || value > highest)
        return false;
    out = value.get<Number>();
    return true;
}

bool ReadFlag(const json& value, std::optional<bool>& out) {
    if (!value.is_boolean())
        return false;
    out = value.get<bool>();
    return true;
}

// "#rrggbb"
bool ReadColor(const json& value, std::optional<std::uint32_t>& out) {
    const std::string text = value.is_string() ? value.get<std::string>() : "";
    const auto isHex = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
    if (text.size() != 7 || text[0] != '#' || !std::all_of(text.begin() + 1, text.end(), isHex))
        return false;
    out = static_cast<std::uint32_t>(std::stoul(text.substr(1), nullptr, 16));
    return true;
}

bool ReadCode(const json& value, std::optional<std::string>& out, std::size_t length) {
    const std::string text = value.is_string() ? value.get<std::string>() : "";
    const auto plain = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; };
    if (text.size() != length || !std::all_of(text.begin(), text.end(), plain))
        return false;
    out = text;
    return true;
}

std::string ColorText(std::uint32_t color) {
    std::string text = "#000000";
    for (std::size_t i = 6; i > 0; --i, color >>= 4)
        text[i] = "0123456789abcdef"[color & 15];
    return text;
}

// The other byte order; it is its own inverse.
std::uint32_t RedAndBlueExchanged(std::uint32_t color) {
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

// The folder that the display takes as docs/protocol.md says.
std::filesystem::path StateFolder(const DisplayOptions& display) {
    const auto variable = [](const char* name) -> std::filesystem::path {
        const char* value = std::getenv(name);
        return value ? value : "";
    };
    if (!display.stateFolder.empty() || !display.userState)
        return display.stateFolder;
    if (const auto chosen = variable("WALLSLATE_STATE_DIR"); !chosen.empty())
        return chosen;
    if (const auto base = variable("XDG_STATE_HOME"); !base.empty())
        return base / "wallslate";
    return variable("HOME") / ".local/state/wallslate";
}

// The member as a number within 0..highest; nothing when it is none.
std::optional<std::uint32_t> NumberIn(const json& object, const char* key,
                                      std::uint32_t highest = UINT32_MAX) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_number_unsigned() || *found > highest)
        return std::nullopt;
    return found->get<std::uint32_t>();
}

std::string TextIn(const json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

// The change counter of a house: any number that differs from house to house (FNV-1a).
std::uint32_t CounterOf(const std::string& text) {
    std::uint32_t hash = 2166136261u;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
    return hash;
}

} // namespace

// As the display writes its file; what it has not written, or somebody has broken, stays unknown.
LiveHost::Settings LiveHost::StoredSettings(const DisplayOptions& display) {
    Settings stored;
    std::ifstream file(StateFolder(display) / "settings.json");
    const json all = json::parse(file, nullptr, /*allow_exceptions=*/false);
    const json known = all.is_object() ? all.value("wallslate", json()) : json();
    if (!known.is_object())
        return stored;
    const auto word = std::find(std::begin(RestWords), std::end(RestWords), TextIn(known, "screenSaver"));
    if (word != std::end(RestWords))
        stored.restMode = static_cast<int>(word - std::begin(RestWords));
    stored.restDelay = NumberIn(known, "nRestModeDelaySeconds", LongestRestDelay);
    if (const auto color = NumberIn(known, "backgroundColor", 0xFFFFFF))
        stored.color = RedAndBlueExchanged(*color);
    if (const auto hours = NumberIn(known, "24hFormat", 1))
        stored.hours24 = *hours != 0;
    if (const auto format = NumberIn(known, "dateFormat", FahrenheitBit + DateFormats - 1)) {
        stored.dateFormat = static_cast<int>(*format) & DateFormatMask;
        stored.fahrenheit = (*format & FahrenheitBit) != 0;
    }
    ReadCode(TextIn(known, "country"), stored.country, 2);
    ReadCode(TextIn(known, "language"), stored.language, 3);
    return stored;
}

// A display that has just started knows what it has stored, but not the night; and it waits for a word about either
// before it shows its background.
void LiveHost::RenewSettings() {
    if (settings.night || settings.color)
        display->Send(Command::Night, EncodeU32(settings.night.value_or(false) ? 1 : 0));
}

std::optional<std::string> LiveHost::ReadSettings(const json& wishes, Settings& read) const {
    if (!wishes.is_object() || wishes.empty())
        return "Settings are a JSON object with at least one key.";
    struct Key {
        const char* name;
        const char* wants;
        std::function<bool(const json&)> read;
    };
    const Key keys[] = {
        {"night", "true or false", [&](const json& v) { return ReadFlag(v, read.night); }},
        {"color", "a colour as \"#rrggbb\"", [&](const json& v) { return ReadColor(v, read.color); }},
        {"restMode", "a number from 0 to 5",
         [&](const json& v) { return ReadNumber(v, read.restMode, RestModes - 1); }},
        {"restDelay", "seconds from 0 to 86400",
         [&](const json& v) { return ReadNumber(v, read.restDelay, LongestRestDelay); }},
        {"hours24", "true or false", [&](const json& v) { return ReadFlag(v, read.hours24); }},
        {"dateFormat", "a number from 0 to 3",
         [&](const json& v) { return ReadNumber(v, read.dateFormat, DateFormats - 1); }},
        {"fahrenheit", "true or false", [&](const json& v) { return ReadFlag(v, read.fahrenheit); }},
        {"country", "two letters or digits", [&](const json& v) { return ReadCode(v, read.country, 2); }},
        {"language", "three letters", [&](const json& v) { return ReadCode(v, read.language, 3); }},
        {"logLevel", "a number from 0 to 9",
         [&](const json& v) { return ReadNumber(v, read.logLevel, HighestLogLevel); }},
        {"rest", "true",
         [&](const json& v) { return v.is_boolean() && std::exchange(read.rest, v.get<bool>()) == false; }},
    };
    for (const auto& [name, value] : wishes.items()) {
        const auto key = std::find_if(std::begin(keys), std::end(keys),
                                      [&wanted = name](const Key& k) { return k.name == wanted; });
        if (key == std::end(keys))
            return "There is no setting \"" + name.substr(0, 40) + "\".";
        if (!key->read(value))
            return "The setting \"" + name + "\" wants " + key->wants + ".";
    }
    return std::nullopt;
}

std::optional<std::string> LiveHost::ApplySettings(const json& wishes) {
    Settings read;
    if (const auto problem = ReadSettings(wishes, read))
        return problem;
    Commit(read);
    ++stateVersion;
    NewsForAll();
    return std::nullopt;
}

void LiveHost::Commit(const Settings& read) {
    const auto keep = [](auto& into, const auto& from) {
        if (from)
            into = from;
    };
    keep(settings.night, read.night);
    keep(settings.color, read.color);
    keep(settings.restMode, read.restMode);
    keep(settings.restDelay, read.restDelay);
    keep(settings.hours24, read.hours24);
    keep(settings.dateFormat, read.dateFormat);
    keep(settings.fahrenheit, read.fahrenheit);
    keep(settings.country, read.country);
    keep(settings.language, read.language);
    keep(settings.logLevel, read.logLevel);
    const auto send = [&](Command command, const std::string& payload) {
        SendRaw(static_cast<std::uint32_t>(command), payload);
    };
    if (read.logLevel)
        send(Command::LogLevel, EncodeU32(*read.logLevel));
    if (read.HasFormats())
        SendFormats();
    if (read.HasRuntime())
        SendRuntime(read);
    if (read.night)
        send(Command::Night, EncodeU32(*read.night ? 1 : 0));
    if (read.rest)
        send(Command::Rest, "");
}

// Formats go all together: what is missing would fall back to its default.
void LiveHost::SendFormats() {
    const int format =
        settings.dateFormat.value_or(0) + (settings.fahrenheit.value_or(false) ? FahrenheitBit : 0);
    const json message = {{"wallslate",
                           {{"24hFormat", settings.hours24.value_or(true) ? 1 : 0},
                            {"dateFormat", format},
                            {"country", settings.country.value_or("01")},
                            {"language", settings.language.value_or("ENG")},
                            {"crcRooms", CounterOf(house.Text(HouseFile::Rooms))},
                            {"crcCategories", CounterOf(house.Text(HouseFile::Categories))},
                            {"crcStructure", CounterOf(house.Text(HouseFile::Structure))}}}};
    SendRaw(static_cast<std::uint32_t>(Command::Settings), message.dump() + std::string(1, '\0'));
}

void LiveHost::SendRuntime(const Settings& read) {
    json message = json::object();
    if (read.color) // the display wants blue in the high byte
        message["color"] = RedAndBlueExchanged(*read.color);
    if (read.restMode)
        message["restmode"] = *read.restMode;
    if (read.restDelay)
        message["restModeDelay"] = *read.restDelay;
    SendRaw(static_cast<std::uint32_t>(Command::Runtime), message.dump() + std::string(1, '\0'));
}

// What is known: stored by an earlier run, or set in this one.
nlohmann::json LiveHost::SettingsJson() const {
    json known = json::object();
    const auto put = [&](const char* key, const auto& value) {
        if (value)
            known[key] = *value;
    };
    put("night", settings.night);
    put("restMode", settings.restMode);
    put("restDelay", settings.restDelay);
    put("hours24", settings.hours24);
    put("dateFormat", settings.dateFormat);
    put("fahrenheit", settings.fahrenheit);
    put("country", settings.country);
    put("language", settings.language);
    put("logLevel", settings.logLevel);
    if (settings.color)
        known["color"] = ColorText(*settings.color);
    return known;
}

} // namespace desktop
