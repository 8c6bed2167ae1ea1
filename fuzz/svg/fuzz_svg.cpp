// Any bytes as a symbol: parsed, drawn mono, in colours and filled. The first byte sets the size.
#include "gui/svg_image.h"

#include <cstdint>
#include <cstdlib>

namespace {

constexpr size_t kMaxText = 16384; // a longer text takes long and finds nothing that a short one does not

void Require(bool condition) {
    if (!condition)
        abort();
}

void Look(const CVrGuiSvg2Img& image, const CVrRect& rect, uint32_t bytesPerPixel) {
    Require(image.image == nullptr && image.Size() == rect.Size());
    const auto pixels = static_cast<uint32_t>(rect.width * rect.height);
    Require(image.bitmapBytes == pixels * bytesPerPixel);
    volatile uint8_t last = image.bitmap[image.bitmapBytes - 1];
    (void)last;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2 || size > kMaxText) // a length of 0 would ask for a NUL behind the text
        return 0;
    const CVrRect rect(0, 0, 1 + data[0] % 96, 1 + data[0] % 96);
    const auto* text = reinterpret_cast<const char*>(data + 1);
    const auto length = static_cast<uint32_t>(size - 1);
    CVrGuiSvg2Img image;
    if (image.LoadAndRender(text, length, rect, true))
        Look(image, rect, 1);
    if (image.LoadAndRender(text, length, rect, false))
        Look(image, rect, 4);
    if (image.Parse(text, length) && image.RenderFilled(rect))
        Look(image, rect, 1);
    return 0;
}
