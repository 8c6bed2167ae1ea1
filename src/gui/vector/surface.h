// A bitmap that vector content paints on: 32 bits a pixel with premultiplied alpha in the top byte.
#pragma once

#include <cstdint>

#include "gui/vector/compositing.h"
#include "gui/vector/rle.h"

struct VSurface {
    uint32_t* pixels = nullptr; // rows directly one behind the other; not owned
    int32_t width = 0;
    int32_t height = 0;

    VRect bounds() const { return {0, 0, width, height}; }
    void clear();

    // Lays a colour (0xAARRGGBB, straight alpha) over what the spans cover. opacity: 0..1.
    void paint(const VRle& rle, uint32_t color, float opacity,
               vec::BlendMode mode = vec::BlendMode::SourceOver);
};
