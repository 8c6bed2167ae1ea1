#include "gui/image.h"

#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace {

CVrGuiImage* Filled(uint32_t width, uint32_t height, uint32_t bits = 24) {
    auto* image = new CVrGuiImage;
    EXPECT_TRUE(image->Allocate(width, height, bits));
    std::mt19937 random(3);
    for (uint32_t i = 0; i < height * image->stride; i++)
        image->pixels[i] = static_cast<uint8_t>(random());
    return image;
}

int Sample(const CVrGuiImage& image, int x, int y, int channel) {
    return image.pixels[static_cast<uint32_t>(y) * image.stride +
                        static_cast<uint32_t>(x) * image.BytesPerPixel() + static_cast<uint32_t>(channel)];
}

TEST(Image, AllocateRefusesWhatIsNoPicture) {
    CVrGuiImage image;
    EXPECT_FALSE(image.Allocate(0, 5, 24));
    EXPECT_FALSE(image.Allocate(5, 0, 24));
    EXPECT_FALSE(image.Allocate(5, 5, 16));
    EXPECT_FALSE(image.Allocate(UINT32_MAX, 2, 32));
    EXPECT_TRUE(image.IsEmpty());
    EXPECT_TRUE(image.Allocate(5, 2, 24));
    EXPECT_EQ(image.stride, 15U);
    EXPECT_FALSE(image.Allocate(5, 2, 0));
    EXPECT_TRUE(image.IsEmpty());
}

TEST(CreateScaledImage, RefusesOtherDepthsEmptySizesAndCropsOutside) {
    const std::unique_ptr<CVrGuiImage> image(Filled(8, 8));
    const std::unique_ptr<CVrGuiImage> deep(Filled(8, 8, 32));
    const CVrGuiImage none;
    EXPECT_EQ(CreateScaledImage(none, CVrSize(4, 4)), nullptr);
    EXPECT_EQ(CreateScaledImage(*deep, CVrSize(4, 4)), nullptr);
    EXPECT_EQ(CreateScaledImage(*image, CVrSize(0, 4)), nullptr);
    EXPECT_EQ(CreateScaledImage(*image, CVrSize(4, -1)), nullptr);
    EXPECT_EQ(CreateScaledImage(*image, CVrSize(100000, 4)), nullptr);
    for (const CVrRect& crop : {CVrRect(-1, 0, 4, 4), CVrRect(5, 0, 4, 4), CVrRect(0, 0, 4, 0)})
        EXPECT_EQ(CreateScaledImage(*image, CVrSize(4, 4), &crop), nullptr);
}

// The weights of the three samples as they are written down.
TEST(CreateScaledImage, WeighsThreeSamplesForEachPixel) {
    const std::unique_ptr<CVrGuiImage> image(Filled(23, 17));
    const CVrRect crop(2, 3, 20, 13);
    constexpr int32_t kSizes[][2] = {{7, 5}, {64, 41}, {20, 13}, {1, 1}, {2, 9}};
    for (const auto& [width, height] : kSizes) {
        const CVrSize size(width, height);
        const std::unique_ptr<CVrGuiImage> scaled(CreateScaledImage(*image, size, &crop));
        ASSERT_NE(scaled, nullptr);
        EXPECT_EQ(scaled->bitsPerPixel, 32U);
        const double stepX = size.width > 1 ? 19.0 / (size.width - 1) : 0;
        const double stepY = size.height > 1 ? 12.0 / (size.height - 1) : 0;
        for (int j = 0; j < size.height; j++) {
            for (int i = 0; i < size.width; i++) {
                const int ip = std::min(static_cast<int>(i * stepX), 19);
                const int iq = std::min(static_cast<int>(j * stepY), 12);
                const double fx = i * stepX - ip;
                const double fy = j * stepY - iq;
                for (int c = 0; c < 3; c++) {
                    const double exact = Sample(*image, 2 + ip, 3 + iq, c) * (1 - fx) * (1 - fy) +
                                         Sample(*image, 2 + std::min(ip + 1, 19), 3 + iq, c) * fx +
                                         Sample(*image, 2 + ip, 3 + std::min(iq + 1, 12), c) * (1 - fx) * fy;
                    ASSERT_EQ(Sample(*scaled, i, j, c), static_cast<int>(exact + 1e-9)) << i << "/" << j;
                }
                ASSERT_EQ(Sample(*scaled, i, j, 3), 255);
            }
        }
    }
}

TEST(CreateScaledImage, AFlatAreaStaysFlat) {
    CVrGuiImage image;
    ASSERT_TRUE(image.Allocate(37, 29, 24));
    std::fill_n(image.pixels, image.stride * 29, uint8_t{201});
    const std::unique_ptr<CVrGuiImage> scaled(CreateScaledImage(image, CVrSize(222, 222)));
    for (int i = 0; i < 222 * 222; i++)
        ASSERT_EQ(Sample(*scaled, i % 222, i / 222, i % 3), 201);
}

} // namespace
