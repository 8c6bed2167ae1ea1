// The sample routines: the plain ones against the formulas of the standard, written out sample by sample; the
// vector ones against the plain ones on random data.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "media/h264/sample_routines.h"

namespace {

using namespace h264;

constexpr ptrdiff_t Stride = 64;
constexpr u32 Rows = 48;
constexpr u32 Corner = 12; // where blocks begin, in both directions
using Canvas = std::array<u8, Stride * Rows>;

u8* At(Canvas& canvas, u32 x, u32 y) {
    return canvas.data() + static_cast<ptrdiff_t>(y) * Stride + x;
}

// What the random samples look like matters: smooth ones pass the deblocking thresholds, extreme ones clip.
enum class Texture { Noise, Smooth, Extreme };

Canvas RandomCanvas(std::mt19937& random, Texture texture) {
    Canvas canvas;
    const u32 base = static_cast<u32>(random() % 200);
    for (u8& sample : canvas) {
        if (texture == Texture::Noise)
            sample = static_cast<u8>(random());
        else if (texture == Texture::Smooth)
            sample = static_cast<u8>(base + random() % 24);
        else
            sample = random() % 2 != 0 ? 255 : 0;
    }
    return canvas;
}

constexpr Texture Textures[] = {Texture::Noise, Texture::Smooth, Texture::Extreme};

std::vector<const SampleRoutines*> VectorRoutines() {
    std::vector<const SampleRoutines*> all;
    for (const SampleRoutines* routines : {Sse2Routines(), Avx2Routines()}) {
        if (routines != nullptr)
            all.push_back(routines);
    }
    return all;
}

// ---- 8.4.2.2.1, letter by letter ----

struct LumaFormulas {
    Canvas& canvas;
    u32 x, y; // of sample G

    i32 Full(i32 dx, i32 dy) const {
        return canvas[static_cast<size_t>((static_cast<i32>(y) + dy) * Stride + static_cast<i32>(x) + dx)];
    }
    static i32 Tap(i32 e, i32 f, i32 g, i32 h, i32 i, i32 j) {
        return e - 5 * f + 20 * g + 20 * h - 5 * i + j;
    }
    static i32 Clip(i32 v) { return std::clamp(v, 0, 255); }
    i32 B1(i32 dy) const {
        return Tap(Full(-2, dy), Full(-1, dy), Full(0, dy), Full(1, dy), Full(2, dy), Full(3, dy));
    }
    i32 H1(i32 dx) const {
        return Tap(Full(dx, -2), Full(dx, -1), Full(dx, 0), Full(dx, 1), Full(dx, 2), Full(dx, 3));
    }
    i32 B() const { return Clip((B1(0) + 16) >> 5); }
    i32 S() const { return Clip((B1(1) + 16) >> 5); }
    i32 H() const { return Clip((H1(0) + 16) >> 5); }
    i32 M() const { return Clip((H1(1) + 16) >> 5); }
    i32 J() const { return Clip((Tap(B1(-2), B1(-1), B1(0), B1(1), B1(2), B1(3)) + 512) >> 10); }

    i32 Sample(u32 xFrac, u32 yFrac) const {
        const i32 g = Full(0, 0), right = Full(1, 0), below = Full(0, 1);
        const auto mean = [](i32 a, i32 b) { return (a + b + 1) >> 1; };
        const i32 table[4][4] = {{g, mean(g, B()), B(), mean(B(), right)},
                                 {mean(g, H()), mean(B(), H()), mean(B(), J()), mean(B(), M())},
                                 {H(), mean(H(), J()), J(), mean(J(), M())},
                                 {mean(H(), below), mean(H(), S()), mean(J(), S()), mean(S(), M())}};
        return table[yFrac][xFrac];
    }
};

TEST(H264PlainRoutines, LumaPositionsFollowTheFormulas) {
    std::mt19937 random(1);
    for (Texture texture : Textures) {
        Canvas source = RandomCanvas(random, texture);
        for (u32 position = 0; position < 16; ++position) {
            Canvas target{};
            PlainRoutines().lumaInter[position](At(target, 0, 0), Stride, At(source, Corner, Corner), Stride,
                                                16, 16);
            for (u32 y = 0; y < 16; ++y) {
                for (u32 x = 0; x < 16; ++x)
                    ASSERT_EQ(*At(target, x, y), (LumaFormulas{source, Corner + x, Corner + y}.Sample(
                                                     position % 4, position / 4)))
                        << "position " << position << " at " << x << "," << y;
            }
        }
    }
}

// ---- 8.5.12.2 as matrices ----

// In exact halves: row and column transforms with their intermediate truncation.
std::array<i32, 16> TransformFormula(const std::array<i32, 16>& d) { // d in raster order
    std::array<i32, 16> r{}, f{};
    for (u32 i = 0; i < 4; ++i) {
        const i32* row = &d[i * 4];
        const i32 e0 = row[0] + row[2], e1 = row[0] - row[2];
        const i32 e2 = (row[1] >> 1) - row[3], e3 = row[1] + (row[3] >> 1);
        f[i * 4] = e0 + e3, f[i * 4 + 1] = e1 + e2, f[i * 4 + 2] = e1 - e2, f[i * 4 + 3] = e0 - e3;
    }
    for (u32 j = 0; j < 4; ++j) {
        const i32 g0 = f[j] + f[8 + j], g1 = f[j] - f[8 + j];
        const i32 g2 = (f[4 + j] >> 1) - f[12 + j], g3 = f[4 + j] + (f[12 + j] >> 1);
        r[j] = (g0 + g3 + 32) >> 6, r[4 + j] = (g1 + g2 + 32) >> 6;
        r[8 + j] = (g1 - g2 + 32) >> 6, r[12 + j] = (g0 - g3 + 32) >> 6;
    }
    return r;
}

std::array<i32, 16> RandomCoefficients(std::mt19937& random, i32 limit) {
    std::array<i32, 16> d{};
    for (i32& value : d) {
        if (random() % 2 != 0)
            value = static_cast<i32>(random() % static_cast<u32>(2 * limit + 1)) - limit;
    }
    return d;
}

class H264Residual : public testing::TestWithParam<const SampleRoutines*> {};

TEST_P(H264Residual, FollowsTheFormulaAndTellsWhatIsOutOfRange) {
    std::mt19937 random(2);
    const SampleRoutines& routines = *GetParam();
    u32 refused = 0;
    for (i32 limit : {10, 300, 3000, 9000, 20000, 18000000}) {
        for (u32 round = 0; round < 300; ++round) {
            const std::array<i32, 16> d = RandomCoefficients(random, limit);
            const std::array<i32, 16> residual = TransformFormula(d);
            const bool inRange = std::all_of(residual.begin(), residual.end(),
                                             [](i32 r) { return r >= MinResidual && r <= MaxResidual; });
            alignas(16) i32 byColumn[16];
            for (u32 i = 0; i < 16; ++i)
                byColumn[i % 4 * 4 + i / 4] = d[i];
            Canvas canvas = RandomCanvas(random, Texture::Noise);
            const Canvas before = canvas;
            ASSERT_EQ(routines.addResidual(At(canvas, Corner, Corner), Stride, byColumn), inRange);
            EXPECT_TRUE(std::all_of(std::begin(byColumn), std::end(byColumn), [](i32 c) { return c == 0; }));
            refused += !inRange;
            for (u32 i = 0; inRange && i < 16; ++i) {
                const size_t place = (Corner + i / 4) * Stride + Corner + i % 4;
                ASSERT_EQ(canvas[place], std::clamp(before[place] + residual[i], 0, 255));
            }
        }
    }
    EXPECT_GT(refused, 100u);
}

TEST_P(H264Residual, DcAloneEqualsTheFullTransform) {
    std::mt19937 random(3);
    const SampleRoutines& routines = *GetParam();
    for (i32 dc :
         {-75000000, -33000, -32800, -32799, -5000, -33, -32, -1, 1, 31, 32, 900, 32735, 32736, 75000000}) {
        Canvas byDc = RandomCanvas(random, Texture::Noise);
        Canvas byAll = byDc;
        alignas(16) i32 first[16] = {dc};
        alignas(16) i32 second[16] = {dc};
        const bool inRange = routines.addDcResidual(At(byDc, Corner, Corner), Stride, first);
        ASSERT_EQ(inRange, routines.addResidual(At(byAll, Corner, Corner), Stride, second)) << dc;
        ASSERT_EQ(inRange, (dc + 32) >> 6 >= MinResidual && (dc + 32) >> 6 <= MaxResidual) << dc;
        if (inRange) {
            EXPECT_EQ(byDc, byAll) << dc;
        }
        EXPECT_EQ(first[0], 0);
    }
}

std::vector<const SampleRoutines*> AllRoutines() {
    std::vector<const SampleRoutines*> all = VectorRoutines();
    all.push_back(&PlainRoutines());
    return all;
}
INSTANTIATE_TEST_SUITE_P(Each, H264Residual, testing::ValuesIn(AllRoutines()),
                         [](const auto& each) { return std::string(each.param->name); });

// ---- Vector routines against the plain ones ----

class H264Twins : public testing::TestWithParam<const SampleRoutines*> {};

TEST_P(H264Twins, LumaInterpolationAgrees) {
    std::mt19937 random(4);
    constexpr std::array<std::array<u32, 2>, 7> Sizes = {
        {{16, 16}, {16, 8}, {8, 16}, {8, 8}, {8, 4}, {4, 8}, {4, 4}}};
    for (Texture texture : Textures) {
        Canvas source = RandomCanvas(random, texture);
        for (u32 position = 0; position < 16; ++position) {
            for (const auto& [width, height] : Sizes) {
                Canvas expected = RandomCanvas(random, Texture::Noise);
                Canvas actual = expected;
                PlainRoutines().lumaInter[position](At(expected, 4, 4), Stride,
                                                    At(source, Corner + 1, Corner), Stride, width, height);
                GetParam()->lumaInter[position](At(actual, 4, 4), Stride, At(source, Corner + 1, Corner),
                                                Stride, width, height);
                ASSERT_EQ(expected, actual) << "position " << position << ", " << width << "x" << height;
            }
        }
    }
}

TEST_P(H264Twins, ChromaInterpolationAgrees) {
    std::mt19937 random(5);
    constexpr std::array<std::array<u32, 2>, 7> Sizes = {
        {{8, 8}, {8, 4}, {4, 8}, {4, 4}, {4, 2}, {2, 4}, {2, 2}}};
    for (Texture texture : Textures) {
        Canvas source = RandomCanvas(random, texture);
        for (u32 fraction = 0; fraction < 64; ++fraction) {
            for (const auto& [width, height] : Sizes) {
                Canvas expected = RandomCanvas(random, Texture::Noise);
                Canvas actual = expected;
                PlainRoutines().chromaInter(At(expected, 4, 4), Stride, At(source, Corner + 1, Corner),
                                            Stride, width, height, fraction % 8, fraction / 8);
                GetParam()->chromaInter(At(actual, 4, 4), Stride, At(source, Corner + 1, Corner), Stride,
                                        width, height, fraction % 8, fraction / 8);
                ASSERT_EQ(expected, actual) << "fraction " << fraction << ", " << width << "x" << height;
            }
        }
    }
}

using NormalMember = SampleRoutines::NormalFilter SampleRoutines::*;
using StrongMember = SampleRoutines::StrongFilter SampleRoutines::*;

EdgeFilter RandomFilter(std::mt19937& random) {
    EdgeFilter filter;
    filter.alpha = static_cast<i32>(1 + random() % 255);
    filter.beta = static_cast<i32>(1 + random() % 18);
    for (i8& tc0 : filter.tc0)
        tc0 = static_cast<i8>(static_cast<i32>(random() % 27) - 1);
    return filter;
}

TEST_P(H264Twins, EdgesBelowStrengthFourAgree) {
    constexpr NormalMember Members[] = {&SampleRoutines::lumaVertical, &SampleRoutines::lumaHorizontal,
                                        &SampleRoutines::chromaVertical, &SampleRoutines::chromaHorizontal};
    std::mt19937 random(6);
    for (u32 round = 0; round < 3000; ++round) {
        const EdgeFilter filter = RandomFilter(random);
        for (NormalMember member : Members) {
            Canvas expected = RandomCanvas(random, Textures[round % 3]);
            Canvas actual = expected;
            (PlainRoutines().*member)(At(expected, Corner + 4, Corner), Stride, filter);
            (GetParam()->*member)(At(actual, Corner + 4, Corner), Stride, filter);
            ASSERT_EQ(expected, actual) << "round " << round;
        }
    }
}

TEST_P(H264Twins, EdgesOfStrengthFourAgree) {
    constexpr StrongMember Members[] = {
        &SampleRoutines::lumaVerticalStrong, &SampleRoutines::lumaHorizontalStrong,
        &SampleRoutines::chromaVerticalStrong, &SampleRoutines::chromaHorizontalStrong};
    std::mt19937 random(7);
    for (u32 round = 0; round < 3000; ++round) {
        const EdgeFilter filter = RandomFilter(random);
        for (StrongMember member : Members) {
            Canvas expected = RandomCanvas(random, Textures[round % 3]);
            Canvas actual = expected;
            (PlainRoutines().*member)(At(expected, Corner + 4, Corner), Stride, filter.alpha, filter.beta);
            (GetParam()->*member)(At(actual, Corner + 4, Corner), Stride, filter.alpha, filter.beta);
            ASSERT_EQ(expected, actual) << "round " << round;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Each, H264Twins, testing::ValuesIn(VectorRoutines()),
                         [](const auto& each) { return std::string(each.param->name); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(H264Twins);

} // namespace
