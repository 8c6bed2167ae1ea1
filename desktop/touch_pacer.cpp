#include "desktop/touch_pacer.h"

namespace desktop {

void TouchPacer::Add(PacedTouch touch) {
    const bool isMove = touch.type == TouchType::Move;
    if (isMove && !waiting.empty() && waiting.back().type == TouchType::Move)
        waiting.back() = touch;
    else if (waiting.size() < LongestQueue || touch.type == TouchType::Up) // an up must never be lost
        waiting.push_back(touch);
}

std::optional<PacedTouch> TouchPacer::Next(Time now) {
    if (waiting.empty() || now < *Due())
        return std::nullopt;
    const PacedTouch touch = waiting.front();
    waiting.pop_front();
    if (touch.type != TouchType::Move) {
        lastSharp = now;
        anySharp = true;
    }
    return touch;
}

std::optional<TouchPacer::Time> TouchPacer::Due() const {
    if (waiting.empty())
        return std::nullopt;
    const bool waits = anySharp; // a move too would overwrite the down before it
    return waits ? lastSharp + Gap : Time{};
}

} // namespace desktop
