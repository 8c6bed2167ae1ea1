// Matrices, fixed-point trigonometry and the blend modes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "gui/vector/compositing.h"
#include "gui/vector/fixed_math.h"
#include "gui/vector/matrix.h"

TEST(VectorMatrix, TheTypeFollowsTheValuesNotTheCalls) {
    VMatrix matrix;
    EXPECT_EQ(matrix.matrixType(), VMatrix::Identity);
    matrix.translate(0, 0).scale(1, 1);
    EXPECT_EQ(matrix.matrixType(), VMatrix::Identity);
    matrix.translate(5, 6);
    EXPECT_EQ(matrix.matrixType(), VMatrix::Translate);
    matrix.scale(2, 4);
    EXPECT_EQ(matrix.matrixType(), VMatrix::Scale);
    matrix.scale(0.5F, 0.25F);
    EXPECT_EQ(matrix.matrixType(), VMatrix::Translate) << "scaled back";
    matrix.rotate(30);
    EXPECT_EQ(matrix.matrixType(), VMatrix::Rotate);
    EXPECT_EQ((VMatrix().rotate(30) * VMatrix().scale(1, 3)).matrixType(), VMatrix::Shear);
    VMatrix projected;
    projected.m13 = 0.01F;
    EXPECT_EQ((VMatrix() * projected).matrixType(), VMatrix::Project);
}

TEST(VectorMatrix, WhatIsAddedLastHappensToThePointFirst) {
    VMatrix matrix;
    matrix.translate(100, 50).scale(2, 3);
    EXPECT_EQ(matrix.map({10, 10}), (VPointF{120, 80}));
    matrix.translate(1, 1);
    EXPECT_EQ(matrix.map({9, 9}), (VPointF{120, 80}));
    const VPointF turned = VMatrix().rotate(90).map({1, 0});
    EXPECT_NEAR(turned.x, 0, 1e-6);
    EXPECT_NEAR(turned.y, 1, 1e-6) << "clockwise on the screen";
}

TEST(VectorTrigonometry, AgreesWithFloatingPoint) {
    constexpr double kDegree = M_PI / 180;
    std::mt19937 random(5);
    for (int round = 0; round < 20000; ++round) {
        const auto angle = static_cast<vec::Angle>(random() % (2u * vec::kAngle360)) - vec::kAngle360;
        const auto length = static_cast<int32_t>(random() % (1u << (round % 28)));
        const double degrees = angle / 65536.0;
        const vec::FixedPoint point = vec::FromPolar(length, angle);
        ASSERT_NEAR(point.x, length * std::cos(degrees * kDegree), 1 + length * 4e-6);
        ASSERT_NEAR(point.y, length * std::sin(degrees * kDegree), 1 + length * 4e-6);
        ASSERT_NEAR(vec::LengthOf(point), std::hypot(point.x, point.y), 1 + length * 4e-6);
        if (length > 64) {
            const double exact = std::atan2(point.y, point.x) / kDegree * 65536;
            ASSERT_NEAR(vec::AngleOf(point), exact, 24);
        }
    }
}

TEST(VectorTrigonometry, AxesAreExact) {
    for (int32_t length : {1, 63, 64, 1000, 1 << 27}) {
        EXPECT_EQ(vec::AngleOf({length, 0}), 0);
        EXPECT_EQ(vec::AngleOf({0, length}), vec::kAngle90);
        EXPECT_EQ(vec::AngleOf({-length, 0}), vec::kAngle180);
        EXPECT_EQ(vec::AngleOf({0, -length}), -vec::kAngle90);
        EXPECT_EQ(vec::FromPolar(length, vec::kAngle90), (vec::FixedPoint{0, length}));
        EXPECT_EQ(vec::FromPolar(length, -vec::kAngle180), (vec::FixedPoint{-length, 0}));
    }
}

TEST(VectorTrigonometry, DifferencesLieAbove180AndUpTo180) {
    EXPECT_EQ(vec::Difference(0, vec::kAngle180), vec::kAngle180);
    EXPECT_EQ(vec::Difference(vec::kAngle180, 0), vec::kAngle180);
    EXPECT_EQ(vec::Difference(-vec::kAngle90, vec::kAngle180), -vec::kAngle90);
    EXPECT_EQ(vec::Difference(-4 * vec::kAngle360, 3 * vec::kAngle360 + 7), 7);
}

namespace {

using vec::BlendMode;

uint32_t BlendColor(BlendMode mode, uint32_t dest, uint32_t color, uint32_t alpha) {
    uint32_t pixels[3] = {dest, dest, dest};
    vec::BlendOf(mode).color(pixels, 2, color, alpha);
    EXPECT_EQ(pixels[0], pixels[1]);
    EXPECT_EQ(pixels[2], dest) << "beyond the length";
    return pixels[0];
}

uint32_t BlendSource(BlendMode mode, uint32_t dest, uint32_t source, uint32_t alpha) {
    const uint32_t sources[2] = {source, source};
    uint32_t pixels[3] = {dest, dest, dest};
    vec::BlendOf(mode).source(pixels, 2, sources, alpha);
    EXPECT_EQ(pixels[2], dest) << "beyond the length";
    return pixels[1];
}

} // namespace

TEST(VectorCompositing, EachModeDoesToAPixelWhatItsNameSays) {
    constexpr uint32_t kRed = 0xFFFF0000;
    constexpr uint32_t kHalfBlue = 0x80000080;
    EXPECT_EQ(BlendColor(BlendMode::Source, kRed, kHalfBlue, 255), kHalfBlue);
    EXPECT_EQ(BlendColor(BlendMode::Source, kRed, kHalfBlue, 0), vec::ByteMul(kRed, 255));
    EXPECT_EQ(BlendColor(BlendMode::SourceOver, kRed, kHalfBlue, 255), kHalfBlue + vec::ByteMul(kRed, 127));
    EXPECT_EQ(BlendColor(BlendMode::SourceOver, 0, kRed, 128), vec::ByteMul(kRed, 128));
    EXPECT_EQ(BlendColor(BlendMode::DestinationIn, kRed, kHalfBlue, 255), vec::ByteMul(kRed, 0x80));
    EXPECT_EQ(BlendColor(BlendMode::DestinationIn, kRed, 0, 100), vec::ByteMul(kRed, 155));
    EXPECT_EQ(BlendColor(BlendMode::DestinationOut, kRed, kRed, 255), 0u);
    EXPECT_EQ(BlendColor(BlendMode::DestinationOut, kRed, kHalfBlue, 100),
              vec::ByteMul(kRed, (127 * 100 >> 8) + 155));
}

TEST(VectorCompositing, ARowOfOneColourEqualsTheColour) {
    std::mt19937 random(6);
    for (int round = 0; round < 2000; ++round) {
        const auto dest = vec::Premultiplied(static_cast<uint32_t>(random()));
        const auto color = vec::Premultiplied(static_cast<uint32_t>(random()));
        const uint32_t alpha = round % 3 == 0 ? 255 : random() % 256;
        for (const BlendMode mode :
             {BlendMode::SourceOver, BlendMode::DestinationIn, BlendMode::DestinationOut}) {
            const bool isTransparent =
                mode == BlendMode::SourceOver && alpha == 255 && (color == 0 || color >> 24 == 255);
            if (!isTransparent) { // where the row takes a shortcut that a colour does not
                EXPECT_EQ(BlendSource(mode, dest, color, alpha), BlendColor(mode, dest, color, alpha));
            }
        }
        // Source works on sums there and on rounded parts here.
        const uint32_t row = BlendSource(BlendMode::Source, dest, color, alpha);
        const uint32_t one = BlendColor(BlendMode::Source, dest, color, alpha);
        for (uint32_t shift = 0; shift < 32; shift += 8)
            EXPECT_NEAR(static_cast<int>(row >> shift & 255), static_cast<int>(one >> shift & 255), 1);
    }
}

TEST(VectorCompositing, NoChannelRunsIntoItsNeighbour) {
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        const auto dest = vec::Premultiplied(static_cast<uint32_t>(random()) | 0xFF000000);
        const auto color = vec::Premultiplied(static_cast<uint32_t>(random()));
        const auto alpha = static_cast<uint32_t>(random() % 255);
        const uint32_t result = BlendColor(BlendMode::SourceOver, dest, color, alpha);
        const uint32_t share = vec::ByteMul(color, alpha);
        for (uint32_t shift = 0; shift < 32; shift += 8) {
            const uint32_t exact =
                (share >> shift & 255) + ((dest >> shift & 255) * (255 - (share >> 24)) >> 8);
            ASSERT_EQ(result >> shift & 255, exact);
        }
    }
}
