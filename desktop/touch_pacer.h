// Spaces touches so that the display sees every press and every release.
//
// The display holds one touch at a time. A click that a browser delivers within a millisecond, or an API
// call, would have its down overwritten by its up. So an up follows its down by 30 ms at least, and a down an
// up likewise; of moves in between only the newest is kept.
#pragma once

#include "desktop/wire.h"

#include <chrono>
#include <deque>
#include <optional>

namespace desktop {

struct PacedTouch {
    TouchType type = TouchType::Down;
    Point at;
    bool operator==(const PacedTouch&) const = default;
};

class TouchPacer {
public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::milliseconds Gap{30};

    void Add(PacedTouch touch);
    // The next touch that may leave now.
    std::optional<PacedTouch> Next(Time now);
    // When Next has something again; empty when nothing waits.
    std::optional<Time> Due() const;
    bool Empty() const { return waiting.empty(); }

private:
    static constexpr std::size_t LongestQueue = 256; // whole taps beyond are dropped

    std::deque<PacedTouch> waiting;
    Time lastSharp{}; // when the last down or up left
    bool anySharp = false;
};

} // namespace desktop
