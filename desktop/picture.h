// Pictures of the display: a view on a frame's pixels, and PNG files made of them.
#pragma once

#include "desktop/wire.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace desktop {

// Rows of BGRA pixels as they came over the link; refers to the frame, owns nothing.
struct PictureView {
    const std::uint8_t* pixels = nullptr; // top left pixel
    int width = 0;
    int height = 0;
    int stride = 0; // bytes from one row to the next

    const std::uint8_t* Row(int y) const { return pixels + static_cast<std::ptrdiff_t>(y) * stride; }
};

PictureView WholeFrame(std::span<const std::uint8_t> frame); // 784 x 784, with its border
PictureView ScreenOf(std::span<const std::uint8_t> frame);   // the 720 x 720 inside

// 8 bits, RGB: a wall panel is opaque, whatever stands in the alpha bytes.
std::vector<std::uint8_t> EncodePng(const PictureView& picture);

// Throws Fault when the file cannot be written; "-" is standard output.
void WriteFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

} // namespace desktop
