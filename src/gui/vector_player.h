// A vector animation as a button sees it: a picture that changes with the time. What stands behind it (the
// content model, the rasterizer) is the business of gui/vector.
#pragma once

#include <cstdint>

#include "gui/vector_surface.h"

class CVrVectorPlayer : public CVrVectorSurface {
public:
    // False: nothing is loaded, and the time does not count.
    virtual bool HasContent() const = 0;
    virtual int32_t FirstFrame() const = 0;
    virtual int32_t LastFrame() const = 0;
    virtual float FrameRate() const = 0; // frames per second

    // Lets the time count from `now` (ms).
    void Start(uint64_t now) { lastTick = now; }
    // Moves on by the frames whose time has passed, from the last frame on to the first again.
    void Advance(uint64_t now);

    uint64_t lastTick = 0;     // ms; when the frame shown began
    uint64_t currentFrame = 0; // counted from FirstFrame()

private:
    uint64_t FrameDuration(int64_t frames) const; // ms, at least 1
};
