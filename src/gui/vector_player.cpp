#include "gui/vector_player.h"

uint64_t CVrVectorPlayer::FrameDuration(int64_t frames) const {
    constexpr double kLongest = 86'400'000; // a day
    const double whole = static_cast<double>(int64_t{LastFrame()} - FirstFrame()) / FrameRate() * 1000.0;
    const double duration = whole / static_cast<double>(frames);
    if (!(duration >= 1.0)) // also for a rate that is no number
        return 1;
    return static_cast<uint64_t>(duration < kLongest ? duration : kLongest);
}

// What is left of a frame's time counts for the next call: an animation whose frames last longer than the
// timer's period moves on all the same.
void CVrVectorPlayer::Advance(uint64_t now) {
    const int64_t frames = int64_t{LastFrame()} - FirstFrame() + 1;
    if (frames <= 0 || now < lastTick)
        return;
    const uint64_t duration = FrameDuration(frames);
    const uint64_t steps = (now - lastTick) / duration;
    currentFrame = (currentFrame + steps) % static_cast<uint64_t>(frames);
    lastTick += steps * duration;
}
