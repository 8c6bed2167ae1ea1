// How a row of pixels is laid over another: four blend modes, each for one colour and for a row of source
// pixels. All pixels have premultiplied alpha.
#pragma once

#include <cstdint>

namespace vec {

enum class BlendMode : uint8_t { Source = 0, SourceOver = 1, DestinationIn = 2, DestinationOut = 3 };

inline constexpr uint32_t kBlendModes = 4;

// alpha: 0..255, the share of the mode's effect.
using BlendColorFn = void (*)(uint32_t* dest, uint32_t length, uint32_t color, uint32_t alpha);
using BlendSourceFn = void (*)(uint32_t* dest, uint32_t length, const uint32_t* source, uint32_t alpha);

struct BlendFunctions {
    BlendColorFn color = nullptr;
    BlendSourceFn source = nullptr;
};

// [BlendMode]
extern const BlendFunctions kBlendTable[kBlendModes];

inline const BlendFunctions& BlendOf(BlendMode mode) {
    return kBlendTable[static_cast<uint32_t>(mode)];
}

// Each channel of c times a / 256, truncated; a 0..255.
inline uint32_t ByteMul(uint32_t c, uint32_t a) {
    return ((((c >> 8) & 0xFF00FF) * a) & 0xFF00FF00) + ((((c & 0xFF00FF) * a) >> 8) & 0xFF00FF);
}

inline uint32_t AlphaOf(uint32_t pixel) {
    return pixel >> 24;
}

// 0xAARRGGBB with straight alpha to premultiplied alpha, rounded.
uint32_t Premultiplied(uint32_t color);

} // namespace vec
