#include "path_text.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <vector>

namespace iconpack {
namespace {

constexpr double kLongestDot = 0.1; // units of the 24 x 24 grid

struct Point {
    double x = 0;
    double y = 0;
};

// One command with the arguments of one repetition.
struct Command {
    char letter = 0;
    std::vector<double> args;

    bool IsRelative() const { return std::islower(static_cast<unsigned char>(letter)); }
    char Upper() const { return static_cast<char>(std::toupper(static_cast<unsigned char>(letter))); }
};

size_t ArgumentCount(char upper) {
    switch (upper) {
    case 'M':
    case 'L':
    case 'T':
        return 2;
    case 'H':
    case 'V':
        return 1;
    case 'S':
    case 'Q':
        return 4;
    case 'C':
        return 6;
    case 'A':
        return 7;
    case 'Z':
        return 0;
    default:
        throw std::runtime_error(std::string("unknown path command ") + upper);
    }
}

bool IsFlag(char upper, size_t argument) {
    return upper == 'A' && (argument == 3 || argument == 4);
}

class Parser {
public:
    explicit Parser(std::string_view text) : m_text(text) {}

    std::vector<Command> Run() {
        std::vector<Command> commands;
        char letter = 0;
        while (SkipSeparators()) {
            if (std::isalpha(static_cast<unsigned char>(m_text.front())))
                letter = TakeLetter();
            else if (letter == 0 || letter == 'Z' || letter == 'z')
                throw std::runtime_error("path data does not begin with a command");
            commands.push_back(ReadArguments(letter));
            // Further pairs behind a move are lines.
            if (letter == 'M' || letter == 'm')
                letter = letter == 'M' ? 'L' : 'l';
        }
        return commands;
    }

private:
    Command ReadArguments(char letter) {
        Command command{letter, {}};
        for (size_t i = 0; i < ArgumentCount(command.Upper()); i++)
            command.args.push_back(IsFlag(command.Upper(), i) ? TakeFlag() : TakeNumber());
        return command;
    }

    bool SkipSeparators() {
        size_t count = m_text.find_first_not_of(" \t\r\n,");
        m_text.remove_prefix(count == std::string_view::npos ? m_text.size() : count);
        return !m_text.empty();
    }

    char TakeLetter() {
        char letter = m_text.front();
        m_text.remove_prefix(1);
        return letter;
    }

    double TakeFlag() {
        if (!SkipSeparators() || (m_text.front() != '0' && m_text.front() != '1'))
            throw std::runtime_error("a flag of an arc is missing");
        return TakeLetter() - '0';
    }

    double TakeNumber() {
        SkipSeparators();
        if (m_text.starts_with('+'))
            m_text.remove_prefix(1);
        double value = 0;
        auto [end, error] = std::from_chars(m_text.data(), m_text.data() + m_text.size(), value);
        if (error != std::errc())
            throw std::runtime_error("a number is missing in path data");
        m_text.remove_prefix(static_cast<size_t>(end - m_text.data()));
        return value;
    }

    std::string_view m_text;
};

double Round(double value) {
    return std::round(value * 100) / 100;
}

std::string NumberText(double value) {
    char text[32];
    snprintf(text, sizeof(text), "%.2f", value);
    std::string result = text;
    result.erase(result.find_last_not_of('0') + 1);
    if (result.back() == '.')
        result.pop_back();
    if (result == "-0")
        return "0";
    if (result.starts_with("0.") || result.starts_with("-0."))
        result.erase(result.find('0'), 1);
    return result;
}

// Writes commands and follows two points: where the path is, and where its rounded text is.
class Writer {
public:
    void Put(Command command) {
        Point end = m_exact;
        m_next = m_written;
        for (size_t i = 0; i < command.args.size(); i++)
            PutOnGrid(command, i, end);
        Append(command);
        m_exact = end;
        if (command.Upper() == 'M') {
            m_exactStart = m_exact;
            m_writtenStart = m_written;
        } else if (command.Upper() == 'Z') {
            m_exact = m_exactStart;
            m_written = m_writtenStart;
        }
    }

    std::string Take() { return std::move(m_text); }

private:
    // Rounds argument i, so that the point it belongs to comes out as near as two decimals allow; end follows
    // the last point of the command.
    void PutOnGrid(Command& command, size_t i, Point& end) {
        char upper = command.Upper();
        if (upper == 'A' && i < 5)
            return;
        bool isX = upper == 'H' || (upper != 'V' && (i % 2 == 0) != (upper == 'A'));
        double exactBase = isX ? m_exact.x : m_exact.y;
        double writtenBase = isX ? m_written.x : m_written.y;
        double target = command.args[i] + (command.IsRelative() ? exactBase : 0);
        (isX ? end.x : end.y) = target;
        double rounded = Round(target - (command.IsRelative() ? writtenBase : 0));
        command.args[i] = rounded;
        (isX ? m_next.x : m_next.y) = rounded + (command.IsRelative() ? writtenBase : 0);
    }

    void Append(const Command& command) {
        char implied = m_last == 'M' ? 'L' : m_last == 'm' ? 'l' : m_last;
        bool needsLetter = command.letter != implied || command.args.empty() || command.Upper() == 'M';
        if (needsLetter)
            m_text += command.letter;
        bool isFirst = needsLetter;
        for (double value : command.args) {
            std::string number = NumberText(value);
            if (!isFirst && number.front() != '-')
                m_text += ' ';
            m_text += number;
            isFirst = false;
        }
        m_last = command.letter;
        if (command.Upper() != 'Z')
            m_written = m_next;
    }

    std::string m_text;
    char m_last = 0;
    Point m_exact;
    Point m_exactStart;
    Point m_written;
    Point m_writtenStart;
    Point m_next; // of the command being written
};

} // namespace

std::string NormalizePath(std::string_view data) {
    Writer writer;
    for (Command& command : Parser(data).Run())
        writer.Put(std::move(command));
    return writer.Take();
}

bool IsDots(std::string_view data) {
    std::vector<Command> commands = Parser(data).Run();
    for (size_t i = 0; i < commands.size(); i++) {
        bool isMove = commands[i].Upper() == 'M';
        bool isShortLine = (commands[i].letter == 'h' || commands[i].letter == 'v') &&
                           std::abs(commands[i].args[0]) <= kLongestDot;
        if (i % 2 == 0 ? !isMove : !isShortLine)
            return false;
    }
    return !commands.empty() && commands.size() % 2 == 0;
}

} // namespace iconpack
