#include <cmath>

#include <gtest/gtest.h>

#include "foundation/color.h"
#include "foundation/geometry.h"

TEST(RectTest, IsHalfOpen) {
    constexpr CVrRect rect(10, 20, 30, 40);
    static_assert(rect.Contains(CVrPoint(10, 20)));
    EXPECT_TRUE(rect.Contains(CVrPoint(39, 59)));
    EXPECT_FALSE(rect.Contains(CVrPoint(40, 59)));
    EXPECT_FALSE(rect.Contains(CVrPoint(39, 60)));
    EXPECT_FALSE(rect.Intersects(rect.Moved(30, 0))); // neighbours share an edge only
    EXPECT_FALSE(CVrRect(5, 5, 0, 10).Contains(CVrPoint(5, 5)));
    EXPECT_FALSE(CVrRect(5, 5, -3, 10).Contains(CVrPoint(5, 5)));
}

TEST(RectTest, IntersectionAndUnionAgreeWithTheirPoints) {
    const CVrRect a(0, 0, 6, 5);
    const CVrRect b(4, 2, 7, 9);
    const CVrRect common = a.Intersected(b);
    EXPECT_EQ(common, CVrRect(4, 2, 2, 3));
    for (int32_t y = -1; y < 13; y++) {
        for (int32_t x = -1; x < 13; x++) {
            const CVrPoint point(x, y);
            EXPECT_EQ(common.Contains(point), a.Contains(point) && b.Contains(point));
        }
    }
    EXPECT_EQ(a.United(b), CVrRect(0, 0, 11, 11));
    EXPECT_TRUE(a.United(b).Contains(a));
    EXPECT_EQ(a.Intersected(CVrRect(50, 50, 5, 5)), CVrRect());
    EXPECT_EQ(CVrRect().United(b), b);
}

TEST(RectTest, ShrinkingAndCentering) {
    const CVrRect rect(10, 10, 20, 20);
    EXPECT_EQ(rect.Shrunken(3), CVrRect(13, 13, 14, 14));
    EXPECT_EQ(rect.Shrunken(1, 2), CVrRect(11, 12, 18, 16));
    EXPECT_EQ(rect.Shrunken(1, 2, 3, 4), CVrRect(11, 12, 16, 14));
    EXPECT_EQ(rect.Grown(5).Shrunken(5), rect);
    EXPECT_TRUE(rect.Shrunken(10).IsEmpty());
    EXPECT_EQ(CVrRect(0, 0, 4, 5).CenteredWithin(rect), CVrRect(18, 17, 4, 5));
    EXPECT_EQ(CVrRect(0, 0, 23, 5).CenteredWithin(rect), CVrRect(8, 17, 23, 5)); // larger than the outer one
}

TEST(RectTest, AbsurdValuesSaturate) {
    const CVrRect huge(INT32_MAX - 5, INT32_MIN, INT32_MAX, INT32_MAX);
    EXPECT_EQ(huge.Right(), INT32_MAX);
    EXPECT_EQ(huge.Moved(INT32_MAX, -100).x, INT32_MAX);
    EXPECT_EQ(huge.Moved(INT32_MAX, -100).y, INT32_MIN);
    EXPECT_FALSE(huge.Shrunken(INT32_MIN).IsEmpty());
    EXPECT_TRUE(huge.Contains(CVrPoint(INT32_MAX, -2)));
    EXPECT_EQ((CVrPoint(INT32_MIN, 0) - CVrPoint(INT32_MAX, INT32_MIN)), CVrPoint(INT32_MIN, INT32_MAX));
}

TEST(ColorTest, HexconeCornersAndTruncation) {
    constexpr auto pack = [](uint32_t r, uint32_t g, uint32_t b) { return r * 65536 + g * 256 + b; };
    EXPECT_EQ(HsvToRgbPercent(0, 100, 100), pack(100, 0, 0));
    EXPECT_EQ(HsvToRgbPercent(60, 100, 100), pack(100, 100, 0));
    EXPECT_EQ(HsvToRgbPercent(120, 100, 80), pack(0, 80, 0));
    EXPECT_EQ(HsvToRgbPercent(180, 100, 100), pack(0, 100, 100));
    EXPECT_EQ(HsvToRgbPercent(240, 50, 100), pack(50, 50, 100));
    EXPECT_EQ(HsvToRgbPercent(300, 100, 100), pack(100, 0, 100));
    EXPECT_EQ(HsvToRgbPercent(90, 100, 100), pack(50, 100, 0));
    EXPECT_EQ(HsvToRgbPercent(77, 0, 33.9), pack(33, 33, 33));
    EXPECT_EQ(HsvToRgbPercent(0, 80, 50), pack(50, 10, 10)); // whole percentages lose nothing
}

TEST(ColorTest, ValuesOutOfRangeStayWithinTheChannels) {
    for (const double odd : {-1e300, -5.0, 359.9, 360.0, 1e300, double(NAN), double(INFINITY)}) {
        for (const double percent : {-50.0, 50.0, 500.0, double(NAN)}) {
            const uint32_t packed = HsvToRgbPercent(odd, percent, percent);
            EXPECT_LE(packed >> 16, 100u);
            EXPECT_LE(packed >> 8 & 0xFF, 100u);
            EXPECT_LE(packed & 0xFF, 100u);
        }
    }
}
