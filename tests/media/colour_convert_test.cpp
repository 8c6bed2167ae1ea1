// The colour conversion: every triple of samples against the formulas in floating point, and pictures of all shapes,
// doubled or not, against the picture put together pixel by pixel.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "media/colour_convert.h"

namespace {

using namespace colour;

std::vector<const Routines*> AllRoutines() {
    std::vector<const Routines*> all = {&PlainRoutines()};
    for (const Routines* routines : {Sse2Routines(), Avx2Routines()}) {
        if (routines != nullptr)
            all.push_back(routines);
    }
    return all;
}

int Product(double factor, int value) {
    return static_cast<int>(std::trunc(factor * value));
}

uint32_t ExpectedPixel(int y, int cb, int cr) {
    const int light = Product(1.164, y - 16);
    const int red = light + Product(1.596, cr - 128);
    const int green = light + Product(-0.391, cb - 128) + Product(-0.813, cr - 128);
    const int blue = light + Product(2.018, cb - 128);
    const auto channel = [](int value) { return static_cast<uint32_t>(std::clamp(value, 0, 255)); };
    return 0xFF000000U | channel(red) << 16 | channel(green) << 8 | channel(blue);
}

TEST(ColourConvert, EveryTripleOfSamplesGivesTheColourOfTheFormulas) {
    constexpr uint32_t width = 512; // for each Cb two rows of 256 pairs, a pair for each Cr
    std::vector<uint8_t> cr(256), cb(256), luma(2 * width);
    std::vector<uint32_t> out(2 * width), expected(256);
    for (uint32_t i = 0; i < 256; i++)
        cr[i] = static_cast<uint8_t>(i);
    const auto all = AllRoutines();
    for (int y = 0; y < 256; y++) {
        std::fill(luma.begin(), luma.end(), static_cast<uint8_t>(y));
        for (int blueness = 0; blueness < 256; blueness++) {
            std::fill(cb.begin(), cb.end(), static_cast<uint8_t>(blueness));
            for (int redness = 0; redness < 256; redness++)
                expected[static_cast<size_t>(redness)] = ExpectedPixel(y, blueness, redness);
            for (const Routines* routines : all) {
                routines->same(
                    {{luma.data(), luma.data() + width}, cb.data(), cr.data(), width, out.data(), width});
                for (size_t i = 0; i < out.size(); i++)
                    ASSERT_EQ(out[i], expected[i % width / 2])
                        << routines->name << " Y " << y << " Cb " << blueness << " Cr " << i % width / 2;
            }
        }
    }
}

// The part of larger planes that begins at sample (2, 2).
struct RandomPicture {
    std::vector<uint8_t> luma, cb, cr;
    PlanarPicture part;

    RandomPicture(std::mt19937& random, uint32_t width, uint32_t height, uint32_t stride) {
        for (auto* plane : {&luma, &cb, &cr}) {
            plane->resize(size_t{stride} * (height + 2) / (plane == &luma ? 1 : 4));
            for (uint8_t& sample : *plane)
                sample = static_cast<uint8_t>(random());
        }
        const size_t chroma = stride / 2 + 1;
        part = {luma.data() + 2 * stride + 2, cb.data() + chroma, cr.data() + chroma, width, height, stride};
    }
    uint32_t Pixel(uint32_t x, uint32_t y) const {
        const size_t chroma = size_t{y} / 2 * (part.stride / 2) + x / 2;
        return ExpectedPixel(part.luma[size_t{y} * part.stride + x], part.cb[chroma], part.cr[chroma]);
    }
};

// Pixels of the store that do not belong to the picture must stay as they were.
constexpr uint32_t kUntouched = 0x12345678;

void ExpectPicture(const RandomPicture& picture, Scale scale, size_t stride, const Routines* routines) {
    const uint32_t times = static_cast<uint32_t>(scale);
    const size_t rows = size_t{picture.part.height} * times;
    std::vector<uint32_t> out(1 + stride * rows, kUntouched); // one pixel in front spoils any alignment
    if (routines != nullptr)
        ConvertPicture(*routines, picture.part, out.data() + 1, stride, scale);
    else
        ConvertPicture(picture.part, out.data() + 1, stride, scale);
    ASSERT_EQ(out[0], kUntouched);
    for (uint32_t y = 0; y < rows; y++) {
        for (uint32_t x = 0; x < stride; x++) {
            const bool isInside = x < picture.part.width * times;
            ASSERT_EQ(out[1 + y * stride + x], isInside ? picture.Pixel(x / times, y / times) : kUntouched)
                << "x " << x << " y " << y;
        }
    }
}

TEST(ColourConvert, PicturesOfAllShapesStandWhereTheyBelong) {
    std::mt19937 random(8);
    std::vector<std::pair<uint32_t, uint32_t>> sizes = {{16, 16}, {32, 16}, {16, 48}, {48, 32}, {368, 368}};
    for (uint32_t width = 2; width <= 66; width += 2)
        sizes.emplace_back(width, 2 + 2 * static_cast<uint32_t>(random() % 4));
    auto all = AllRoutines();
    all.push_back(nullptr); // what the processor chooses
    for (const auto& [width, height] : sizes) {
        const RandomPicture picture(random, width, height,
                                    width + 2 + 2 * static_cast<uint32_t>(random() % 9));
        for (const Routines* routines : all) {
            for (Scale scale : {Scale::Same, Scale::Doubled}) {
                SCOPED_TRACE(std::string(routines != nullptr ? routines->name : "chosen") + " " +
                             std::to_string(width) + "x" + std::to_string(height));
                const size_t stride = size_t{width} * static_cast<size_t>(scale) + random() % 19;
                ASSERT_NO_FATAL_FAILURE(ExpectPicture(picture, scale, stride, routines));
            }
        }
    }
}

} // namespace
