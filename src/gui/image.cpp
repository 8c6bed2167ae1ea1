#include "gui/image.h"

#include <algorithm>
#include <cstdlib>
#include <new>

CVrGuiImage::~CVrGuiImage() {
    Free();
}

bool CVrGuiImage::Allocate(uint32_t newWidth, uint32_t newHeight, uint32_t newBitsPerPixel) {
    Free();
    const bool isDepthKnown = newBitsPerPixel == kRgbBits || newBitsPerPixel == kRgbaBits;
    if (newWidth == 0 || newHeight == 0 || newWidth > kMaxSide || newHeight > kMaxSide || !isDepthKnown)
        return false;
    const uint32_t newStride = newWidth * newBitsPerPixel / 8;
    pixels = static_cast<uint8_t*>(calloc(newHeight, newStride));
    if (!pixels)
        return false;
    width = newWidth;
    height = newHeight;
    bitsPerPixel = newBitsPerPixel;
    stride = newStride;
    return true;
}

void CVrGuiImage::Adopt(uint8_t* newPixels, uint32_t newWidth, uint32_t newHeight) {
    Free();
    pixels = newPixels;
    width = newWidth;
    height = newHeight;
    bitsPerPixel = kRgbBits;
    stride = newWidth * kRgbBits / 8;
}

void CVrGuiImage::Free() {
    free(pixels);
    pixels = nullptr;
    width = height = bitsPerPixel = stride = 0;
}

namespace {

// One axis of the scaling: where the samples of a target column or row lie in the source.
class SampleAxis {
public:
    SampleAxis(int32_t start, int32_t sourceLength, int32_t targetLength)
        : m_start(start),
          m_last(sourceLength - 1),
          m_step(targetLength > 1 ? double(sourceLength - 1) / double(targetLength - 1) : 0.0) {}

    struct Sample {
        int32_t at;   // the sample
        int32_t next; // its neighbour, or the sample itself at the end of the source, where the fraction is 0
        double fraction; // weight of the neighbour, 0 <= fraction < 1
    };

    Sample At(int32_t target) const {
        const double position = target * m_step;
        const int32_t whole = std::min(static_cast<int32_t>(position), m_last);
        return {m_start + whole, m_start + std::min(whole + 1, m_last), position - whole};
    }

private:
    int32_t m_start;
    int32_t m_last;
    double m_step;
};

// Three samples make a pixel: (at, at), its right and its lower neighbour. The weights sum to 1; the sum of
// the products may fall short of a whole number by less than this, which truncation must not turn into a
// step.
constexpr double kSumError = 1e-9;

uint8_t Weigh(double a, double weightA, double b, double weightB, double c, double weightC) {
    return static_cast<uint8_t>(a * weightA + b * weightB + c * weightC + kSumError);
}

void ScaleRow(const CVrGuiImage& source, const SampleAxis& columns, const SampleAxis::Sample& y,
              CVrGuiImage& out, int32_t row) {
    const uint8_t* upper = source.pixels + size_t{source.stride} * static_cast<uint32_t>(y.at);
    const uint8_t* lower = source.pixels + size_t{source.stride} * static_cast<uint32_t>(y.next);
    uint8_t* dst = out.pixels + size_t{out.stride} * static_cast<uint32_t>(row);
    for (int32_t i = 0; i < static_cast<int32_t>(out.width); i++, dst += 4) {
        const SampleAxis::Sample x = columns.At(i);
        const uint8_t* here = upper + x.at * 3;
        const uint8_t* right = upper + x.next * 3;
        const uint8_t* below = lower + x.at * 3;
        const double rest = 1 - x.fraction;
        for (int channel = 0; channel < 3; channel++)
            dst[channel] = Weigh(here[channel], rest * (1 - y.fraction), right[channel], x.fraction,
                                 below[channel], rest * y.fraction);
        dst[3] = 255;
    }
}

} // namespace

CVrGuiImage* CreateScaledImage(const CVrGuiImage& source, const CVrSize& size, const CVrRect* crop) {
    if (source.IsEmpty() || source.bitsPerPixel != CVrGuiImage::kRgbBits || size.IsEmpty())
        return nullptr;
    const CVrRect whole(0, 0, static_cast<int32_t>(source.width), static_cast<int32_t>(source.height));
    const CVrRect window = crop ? *crop : whole;
    if (window.IsEmpty() || !whole.Contains(window))
        return nullptr;

    CVrGuiImage* scaled = new (std::nothrow) CVrGuiImage;
    if (!scaled || !scaled->Allocate(static_cast<uint32_t>(size.width), static_cast<uint32_t>(size.height),
                                     CVrGuiImage::kRgbaBits)) {
        delete scaled;
        return nullptr;
    }
    const SampleAxis columns(window.x, window.width, size.width);
    const SampleAxis rows(window.y, window.height, size.height);
    for (int32_t j = 0; j < size.height; j++)
        ScaleRow(source, columns, rows.At(j), *scaled, j);
    return scaled;
}
