#include "gui/vector/surface.h"

#include <algorithm>
#include <cmath>

void VSurface::clear() {
    std::fill_n(pixels, static_cast<size_t>(width) * static_cast<size_t>(height), 0u);
}

void VSurface::paint(const VRle& rle, uint32_t color, float opacity, vec::BlendMode mode) {
    const auto alpha = static_cast<uint32_t>(
        std::lround(static_cast<float>(vec::AlphaOf(color)) * std::clamp(opacity, 0.0F, 1.0F)));
    const uint32_t ink = vec::Premultiplied((color & 0xFFFFFF) | alpha << 24);
    const vec::BlendColorFn blend = vec::BlendOf(mode).color;
    for (const VRle::Span& span : rle.spans()) {
        if (span.y < 0 || span.y >= height)
            continue;
        const int32_t left = std::max<int32_t>(span.x, 0);
        const int32_t right = std::min<int32_t>(span.x + span.len, width);
        if (left < right)
            blend(pixels + int64_t{span.y} * width + left, static_cast<uint32_t>(right - left), ink,
                  span.coverage);
    }
}
