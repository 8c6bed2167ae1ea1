// The portable loops, and the choice among the tables.
#include "gui/pixel_ops.h"

#include "gui/pixel_kernels.h"
#include "gui/pixel_ops_x86.h"

namespace {

void Fill(uint32_t* dst, size_t count, uint32_t color) {
    for (size_t i = 0; i < count; i++)
        dst[i] = color;
}

void BlendColor(uint32_t* dst, size_t count, uint32_t color, uint32_t a) {
    for (size_t i = 0; i < count; i++)
        dst[i] = BlendPixel(dst[i], color, a);
}

void BlendColors(uint32_t* dst, const uint32_t* src, size_t count) {
    for (size_t i = 0; i < count; i++)
        GradientPixel(dst[i], src[i]);
}

void BlendRow(uint32_t* dst, const uint32_t* src, size_t count) {
    for (size_t i = 0; i < count; i++)
        StorePixel(dst[i], src[i]);
}

bool IsSolidRow(const uint32_t* src, size_t count) {
    for (size_t i = 0; i < count; i++) {
        if (src[i] >> 24 < kSolidAlpha)
            return false;
    }
    return true;
}

void BlendMono(const pixelops::CoverageBlock& block, uint32_t color) {
    const MonoInk ink(color);
    for (size_t y = 0; y < block.height; y++) {
        for (size_t x = 0; x < block.width; x++)
            MonoPixel(block.dst[y * block.dstStride + x], block.coverage[y * block.coverageStride + x], ink);
    }
}

void BlendTint(uint32_t* dst, const uint32_t* src, size_t count, uint32_t color, uint32_t a) {
    for (size_t i = 0; i < count; i++)
        TintPixel(dst[i], src[i], color, a);
}

constexpr pixelops::Loops kPortableLoops = {"portable", Fill,       BlendColor, BlendColors,
                                            BlendRow,   IsSolidRow, BlendMono,  BlendTint};

const pixelops::Loops* ChooseLoops() {
    if (const pixelops::Loops* loops = pixelops::Avx2Loops())
        return loops;
    if (const pixelops::Loops* loops = pixelops::Sse2Loops())
        return loops;
    return &kPortableLoops;
}

} // namespace

const pixelops::Loops* pixelops::LoopsFor(Level level) {
    switch (level) {
    case Level::Avx2:
        return Avx2Loops();
    case Level::Sse2:
        return Sse2Loops();
    case Level::Portable:
        break;
    }
    return &kPortableLoops;
}

const pixelops::Loops& pixelops::BestLoops() {
    static const Loops* const best = ChooseLoops();
    return *best;
}
