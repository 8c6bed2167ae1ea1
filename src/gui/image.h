// A picture of 24 or 32 bits a pixel, such as a cover, and its scaling. Symbols are another matter:
// gui/svg_image.h.
#pragma once

#include "foundation/geometry.h"

#include <cstdint>

// Rows from top to bottom, `stride` bytes apart. A pixel's bytes are blue, green, red and, with 32 bits,
// alpha, as in a pixel store.
struct CVrGuiImage {
    static constexpr uint32_t kRgbBits = 24;
    static constexpr uint32_t kRgbaBits = 32;
    // Longest side that Allocate accepts, in pixels.
    static constexpr uint32_t kMaxSide = 16384;

    CVrGuiImage() = default;
    ~CVrGuiImage();
    CVrGuiImage(const CVrGuiImage&) = delete;
    CVrGuiImage& operator=(const CVrGuiImage&) = delete;

    // Replaces the picture by a black one, without padding between its rows. False, and no picture, for an
    // empty or too large size, another depth than 24 or 32, or without memory.
    bool Allocate(uint32_t newWidth, uint32_t newHeight, uint32_t newBitsPerPixel);

    // Replaces the picture by one of 24 bits without padding whose pixels come from malloc and are owned from
    // here on.
    void Adopt(uint8_t* newPixels, uint32_t newWidth, uint32_t newHeight);

    // Leaves no picture.
    void Free();

    bool IsEmpty() const { return !pixels || width == 0 || height == 0; }
    uint32_t BytesPerPixel() const { return bitsPerPixel / 8; }

    uint32_t width = 0;        // pixels
    uint32_t height = 0;       // pixels
    uint32_t bitsPerPixel = 0; // kRgbBits or kRgbaBits
    uint32_t stride = 0;       // bytes from one row to the next
    uint8_t* pixels = nullptr; // from malloc's family, owned
};

// The 24-bit picture, or its part `crop`, at another size as a new 32-bit picture with alpha 255. The caller
// deletes it. Null if the source is not a 24-bit picture, a side of the size is 0, the crop leaves the
// picture, or without memory.
CVrGuiImage* CreateScaledImage(const CVrGuiImage& source, const CVrSize& size, const CVrRect* crop = nullptr);
