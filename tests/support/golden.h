// Golden pictures: a test draws, and the picture must equal tests/golden/NAME.png pixel by pixel.
//
//     EXPECT_TRUE(golden::Matches("switch-page", pixels, 720, 720));
//
// When it does not, NAME.actual.png and NAME.difference.png lie in the folder "golden" of the build, and the
// message names them. `WALLSLATE_GOLDEN=renew` in the environment (./dev golden) writes the new truth
// instead: look at it, then commit it.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace golden {

// Rows from top to bottom, each directly behind the one before; a pixel is 0xAARRGGBB.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;

    uint32_t At(int x, int y) const { return pixels[static_cast<size_t>(y) * width + x]; }
};

// Whether the alpha bytes belong to the picture. What is shown to people is Rgb; a store with unpainted
// pixels is Rgba.
enum class Channels { Rgb, Rgba };

// Compares with the golden picture `name` (without folder and ending).
testing::AssertionResult Matches(const std::string& name, const Picture& actual,
                                 Channels channels = Channels::Rgb);
testing::AssertionResult Matches(const std::string& name, const uint32_t* pixels, int width, int height,
                                 Channels channels = Channels::Rgb);

// False when the file is missing or is no PNG.
bool ReadPng(const std::string& path, Picture& out);
bool WritePng(const std::string& path, const Picture& picture, Channels channels = Channels::Rgb);

} // namespace golden
