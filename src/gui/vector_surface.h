// What the frame buffer needs of a vector animation: its current picture (see
// CVrGuiFrameBuffer::DrawVectorFrame).
#pragma once

#include "foundation/geometry.h"

#include <cstdint>

class CVrVectorSurface {
public:
    virtual ~CVrVectorSurface() = default;

    // Brings the surface to the current frame.
    virtual void RenderFrame() = 0;

    // Size of the surface in pixels; empty while there is none.
    virtual CVrSize GetSurfaceSize() const = 0;

    // The surface, rows directly one behind the other; only the alpha in the top byte of each word counts
    // here.
    virtual const uint32_t* GetSurfacePixels() const = 0;
};
