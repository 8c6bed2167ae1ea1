// Scripts: what a user's hand and the host's settings do to a display, one step a line, with expectations.
// Parsing is whole and comes first; running works on any ScriptTarget.
//
//   down X Y | move X Y | up X Y | tap X Y      touches; screen pixels, 0 to 719
//   drag X1 Y1 X2 Y2 MS                         down, moves every 10 ms, up
//   wait MS                                     lets time pass
//   settle                                      until no frame has come for 150 ms
//   shot NAME                                   the picture as NAME.png
//   night 0|1 | settings JSON | runtime JSON    settings messages
//   rest                                        the display rests at once
//   expect TEXT                                 the next text command must be TEXT
//   log-level N                                 0 to 9
//   raw CMD HEX                                 any message, the payload in hexadecimal digits
//   # comment
#pragma once

#include "desktop/fault.h"
#include "desktop/wire.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace desktop {

struct TouchStep {
    TouchType type = TouchType::Down;
    Point at;
};
struct TapStep {
    Point at;
};
struct DragStep {
    Point from;
    Point to;
    std::chrono::milliseconds duration{0};
};
struct WaitStep {
    std::chrono::milliseconds duration{0};
};
struct SettleStep {};
struct ShotStep {
    std::string name; // safe as a file name, without extension
};
struct SendStep { // night, settings, runtime, rest, log-level, raw
    std::uint32_t command = 0;
    std::string payload;
};
struct ExpectStep {
    std::string text;
};

struct ScriptStep {
    std::size_t line = 0; // from 1
    std::variant<TouchStep, TapStep, DragStep, WaitStep, SettleStep, ShotStep, SendStep, ExpectStep> action;
};

struct Script {
    std::string name; // for messages: the file's name
    std::vector<ScriptStep> steps;

    bool TakesShots() const;
};

// Throws Fault "NAME:LINE: what is wrong".
Script ParseScript(const std::string& name, std::string_view text);

// Reads the file ("-" is standard input) and parses it.
Script ReadScript(const std::string& file);

// What a script works on.
class ScriptTarget {
public:
    virtual ~ScriptTarget() = default;
    virtual void Touch(TouchType type, Point at) = 0;
    virtual void Send(std::uint32_t command, const std::string& payload) = 0;
    // Lets that much time pass while frames and text commands are taken in.
    virtual void Wait(std::chrono::milliseconds duration) = 0;
    // When the last frame came; the epoch if none did.
    virtual std::chrono::steady_clock::time_point LastFrameTime() const = 0;
    // Takes the oldest text command that no step has taken; false when there is none.
    virtual bool TakeTextCommand(std::string& text) = 0;
    virtual void Shot(const std::string& name) = 0;
};

// Throws Fault with the script's line when an expectation fails or the picture never comes to rest.
void RunScript(const Script& script, ScriptTarget& target);

// Until no frame has come for 150 ms; false if that does not happen within the limit.
constexpr std::chrono::milliseconds SettleLimit{10'000};
bool Settle(ScriptTarget& target, std::chrono::milliseconds limit = SettleLimit);

} // namespace desktop
