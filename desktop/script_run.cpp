// Runs scripts: the pace of touches, and the waiting for pictures and commands.
#include "desktop/script.h"

namespace desktop {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// The display holds one touch at a time: a newer one replaces an older one that it has not looked at yet. It
// looks every 10 ms at the latest, plus the time of a repaint.
constexpr auto TouchPace = 40ms;
constexpr auto TapHold = 60ms;
constexpr auto DragStepTime = 10ms; // moves may be lost without harm, as a later one carries the position
constexpr auto Quiet = 150ms;
constexpr auto ExpectPatience = 3s;
constexpr auto ExpectPoll = 5ms;

class Runner {
public:
    explicit Runner(ScriptTarget& on) : target(on) {}

    void operator()(const TouchStep& step) { Touch(step.type, step.at); }

    void operator()(const TapStep& step) {
        Touch(TouchType::Down, step.at);
        target.Wait(TapHold - TouchPace);
        Touch(TouchType::Up, step.at);
    }

    void operator()(const DragStep& step) {
        Touch(TouchType::Down, step.from);
        const auto start = Clock::now();
        for (auto passed = 0ms; passed < step.duration; passed = Since(start)) {
            target.Touch(TouchType::Move, Between(step, passed));
            target.Wait(std::min<std::chrono::milliseconds>(DragStepTime, step.duration - passed));
        }
        Touch(TouchType::Move, step.to);
        Touch(TouchType::Up, step.to);
    }

    void operator()(const WaitStep& step) { target.Wait(step.duration); }

    void operator()(const SettleStep&) {
        if (!Settle(target))
            throw Fault("settle: the picture does not come to rest");
    }

    void operator()(const ShotStep& step) {
        target.Wait(0ms);
        target.Shot(step.name);
    }

    void operator()(const SendStep& step) { target.Send(step.command, step.payload); }

    void operator()(const ExpectStep& step) {
        std::string text;
        const auto deadline = Clock::now() + ExpectPatience;
        while (!target.TakeTextCommand(text)) {
            if (Clock::now() >= deadline)
                throw Fault("expect: no text command came; expected " + step.text);
            target.Wait(ExpectPoll);
        }
        if (text != step.text)
            throw Fault("expect: the display sent " + text + " where the script expects " + step.text);
    }

private:
    static std::chrono::milliseconds Since(Clock::time_point start) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    }

    static Point Between(const DragStep& step, std::chrono::milliseconds passed) {
        const auto part = [&](int from, int to) {
            return from + static_cast<int>((to - from) * passed.count() / step.duration.count());
        };
        return {part(step.from.x, step.to.x), part(step.from.y, step.to.y)};
    }

    void Touch(TouchType type, Point at) {
        target.Touch(type, at);
        target.Wait(TouchPace);
    }

    ScriptTarget& target;
};

} // namespace

bool Settle(ScriptTarget& target, std::chrono::milliseconds limit) {
    const auto start = Clock::now();
    for (;;) {
        const auto now = Clock::now();
        const auto quiet = now - std::max(start, target.LastFrameTime());
        if (quiet >= Quiet)
            return true;
        if (now - start >= limit)
            return false;
        target.Wait(std::chrono::ceil<std::chrono::milliseconds>(Quiet - quiet));
    }
}

void RunScript(const Script& script, ScriptTarget& target) {
    for (const ScriptStep& step : script.steps) {
        try {
            std::visit(Runner(target), step.action);
        } catch (const Interrupted&) {
            throw;
        } catch (const Fault& fault) {
            throw Fault(script.name + ":" + std::to_string(step.line) + ": " + fault.what());
        }
    }
}

} // namespace desktop
