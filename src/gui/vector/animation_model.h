// What a vector animation needs of its content: to be brought to a frame, and to paint itself.
#pragma once

#include <atomic>
#include <cstdint>

#include "gui/vector/matrix.h"
#include "gui/vector/surface.h"

class VAnimationModel {
public:
    virtual ~VAnimationModel() = default;

    // Brings the content to a frame. matrix: from the content's own size to the surface; opacity: 0..1.
    virtual void update(int32_t frame, const VMatrix& matrix, float opacity) = 0;
    // Lays the content over the surface as it was brought to a frame last.
    virtual void paint(VSurface& surface) = 0;

    int32_t startFrame = 0;
    int32_t endFrame = 0; // belongs to the animation
    float frameRate = 25; // frames per second
    float width = 0;      // own size, any unit
    float height = 0;
    std::atomic<uint8_t> busy{0}; // 1 while somebody renders a frame
};
