#include "gui/vector/compositing.h"

#include <algorithm>
#include <cstring>

namespace vec {

namespace {

constexpr uint32_t kOpaque = 255;

// (src * a + dest * (255 - a)) >> 8, two channels at a time.
uint32_t Interpolate(uint32_t src, uint32_t a, uint32_t dest) {
    const uint32_t ia = kOpaque - a;
    const uint32_t even = (((src & 0xFF00FF) * a + (dest & 0xFF00FF) * ia) >> 8) & 0xFF00FF;
    const uint32_t odd = (((src >> 8) & 0xFF00FF) * a + ((dest >> 8) & 0xFF00FF) * ia) & 0xFF00FF00;
    return even | odd;
}

uint32_t Over(uint32_t src, uint32_t dest) {
    return src + ByteMul(dest, kOpaque - AlphaOf(src));
}

// What the destination keeps: `share` of it, as far as `alpha` lets the mode have its effect.
uint32_t Kept(uint32_t dest, uint32_t share, uint32_t alpha) {
    return ByteMul(dest, alpha == kOpaque ? share : (share * alpha >> 8) + kOpaque - alpha);
}

void SourceColor(uint32_t* dest, uint32_t length, uint32_t color, uint32_t alpha) {
    if (alpha == kOpaque) {
        std::fill_n(dest, length, color);
        return;
    }
    const uint32_t share = ByteMul(color, alpha);
    for (uint32_t i = 0; i < length; ++i)
        dest[i] = share + ByteMul(dest[i], kOpaque - alpha);
}

void SourceRow(uint32_t* dest, uint32_t length, const uint32_t* source, uint32_t alpha) {
    if (alpha == kOpaque) {
        std::memcpy(dest, source, length * sizeof(uint32_t));
        return;
    }
    for (uint32_t i = 0; i < length; ++i)
        dest[i] = Interpolate(source[i], alpha, dest[i]);
}

void SourceOverColor(uint32_t* dest, uint32_t length, uint32_t color, uint32_t alpha) {
    const uint32_t share = alpha == kOpaque ? color : ByteMul(color, alpha);
    const uint32_t rest = kOpaque - AlphaOf(share);
    for (uint32_t i = 0; i < length; ++i)
        dest[i] = share + ByteMul(dest[i], rest);
}

void SourceOverRow(uint32_t* dest, uint32_t length, const uint32_t* source, uint32_t alpha) {
    if (alpha != kOpaque) {
        for (uint32_t i = 0; i < length; ++i)
            dest[i] = Over(ByteMul(source[i], alpha), dest[i]);
        return;
    }
    for (uint32_t i = 0; i < length; ++i) {
        if (AlphaOf(source[i]) == kOpaque)
            dest[i] = source[i];
        else if (source[i] != 0)
            dest[i] = Over(source[i], dest[i]);
    }
}

void DestinationInColor(uint32_t* dest, uint32_t length, uint32_t color, uint32_t alpha) {
    for (uint32_t i = 0; i < length; ++i)
        dest[i] = Kept(dest[i], AlphaOf(color), alpha);
}

void DestinationInRow(uint32_t* dest, uint32_t length, const uint32_t* source, uint32_t alpha) {
    for (uint32_t i = 0; i < length; ++i)
        dest[i] = Kept(dest[i], AlphaOf(source[i]), alpha);
}

void DestinationOutColor(uint32_t* dest, uint32_t length, uint32_t color, uint32_t alpha) {
    for (uint32_t i = 0; i < length; ++i)
        dest[i] = Kept(dest[i], kOpaque - AlphaOf(color), alpha);
}

void DestinationOutRow(uint32_t* dest, uint32_t length, const uint32_t* source, uint32_t alpha) {
    for (uint32_t i = 0; i < length; ++i)
        dest[i] = Kept(dest[i], kOpaque - AlphaOf(source[i]), alpha);
}

} // namespace

const BlendFunctions kBlendTable[kBlendModes] = {
    {SourceColor, SourceRow},
    {SourceOverColor, SourceOverRow},
    {DestinationInColor, DestinationInRow},
    {DestinationOutColor, DestinationOutRow},
};

uint32_t Premultiplied(uint32_t color) {
    const uint32_t alpha = AlphaOf(color);
    const auto channel = [color, alpha](uint32_t shift) {
        return ((color >> shift & 255) * alpha + 127) / 255 << shift;
    };
    return alpha << 24 | channel(16) | channel(8) | channel(0);
}

} // namespace vec
