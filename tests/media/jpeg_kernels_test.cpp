// The inner loops against the formulas they stand for, and the vector routines against the plain ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "media/jpeg/kernels.h"

namespace {

using Block = std::array<int16_t, 64>;  // column by column
using Table = std::array<uint32_t, 64>; // column by column
using Samples = std::array<uint8_t, 64>;

Table MakeTable(const std::array<uint8_t, 64>& steps) {
    Table table;
    for (uint32_t i = 0; i < 64; ++i)
        table[i] = static_cast<uint32_t>(std::lround(steps[i] * jpeg::TransformScale(i / 8, i % 8) * 8192));
    return table;
}

// T.81, A.3.3, term by term in double precision, with the level shift, not yet limited.
std::array<double, 64> ExactSamples(const Block& block, const std::array<uint8_t, 64>& steps) {
    static const auto basis = [] {
        std::array<std::array<double, 8>, 8> cosines{}; // [point][frequency]
        for (int x = 0; x < 8; ++x)
            for (int u = 0; u < 8; ++u)
                cosines[x][u] =
                    (u == 0 ? std::sqrt(0.5) : 1.0) * std::cos((2 * x + 1) * u * std::numbers::pi / 16);
        return cosines;
    }();
    std::array<double, 64> samples{};
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            double sum = 0;
            for (int i = 0; i < 64; ++i)
                sum += block[i] * steps[i] * basis[x][i / 8] * basis[y][i % 8];
            samples[y * 8 + x] = sum / 4 + 128;
        }
    return samples;
}

// The largest distance of the routine's samples from the exact ones, both limited to 0..255.
double WorstError(jpeg::InverseDctFn inverse, const Block& block, const std::array<uint8_t, 64>& steps) {
    Samples samples;
    inverse(block.data(), MakeTable(steps).data(), samples.data());
    const auto exact = ExactSamples(block, steps);
    double worst = 0;
    for (int i = 0; i < 64; ++i)
        worst = std::max(worst, std::abs(samples[i] - std::clamp(exact[i], 0.0, 255.0)));
    return worst;
}

std::vector<const jpeg::Kernels*> AllKernels() {
    std::vector<const jpeg::Kernels*> all{&jpeg::PlainKernels()};
    if (jpeg::VectorKernels())
        all.push_back(jpeg::VectorKernels());
    return all;
}

class JpegKernels : public testing::Test {
protected:
    int Random(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

    std::array<uint8_t, 64> RandomSteps(int high) {
        std::array<uint8_t, 64> steps;
        for (auto& step : steps)
            step = static_cast<uint8_t>(Random(1, high));
        return steps;
    }

    // count coefficients at random places, so that the dequantised value stays within +-reach.
    Block RandomBlock(const std::array<uint8_t, 64>& steps, int count, int reach) {
        Block block{};
        for (int i = 0; i < count; ++i) {
            const int at = i == 0 ? 0 : Random(0, 63);
            const int most = std::min(1023, reach / steps[at]);
            block[at] = static_cast<int16_t>(Random(-most, most));
        }
        return block;
    }

    std::mt19937 m_random{20260501};
};

} // namespace

TEST_F(JpegKernels, SamplesAreTheExactTransformRounded) {
    // Half a step is the rounding itself; what is left is the rounding of the table.
    constexpr double kAllowed = 0.65;
    for (const jpeg::Kernels* kernels : AllKernels())
        for (int round = 0; round < 4000; ++round) {
            const auto steps = RandomSteps(round % 2 ? 255 : 4);
            const Block block = RandomBlock(steps, 1 + round % 64, round % 3 ? 300 : 1023);
            ASSERT_LE(WorstError(kernels->inverseDct, block, steps), kAllowed) << "round " << round;
        }
}

TEST_F(JpegKernels, EveryBasisFunctionAloneIsExact) {
    std::array<uint8_t, 64> steps;
    steps.fill(1);
    for (const jpeg::Kernels* kernels : AllKernels())
        for (int at = 0; at < 64; ++at)
            for (const int value : {-1023, -200, 1, 511, 1023}) {
                Block block{};
                block[at] = static_cast<int16_t>(value);
                EXPECT_LE(WorstError(kernels->inverseDct, block, steps), 0.6) << at << " " << value;
            }
}

TEST_F(JpegKernels, AbsurdCoefficientsStayWithinOneOfTheExactTransform) {
    const auto steps = RandomSteps(255);
    for (const jpeg::Kernels* kernels : AllKernels())
        for (int round = 0; round < 1000; ++round) {
            Block block;
            for (auto& value : block)
                value = static_cast<int16_t>(Random(-1023, 1023));
            ASSERT_LE(WorstError(kernels->inverseDct, block, steps), 1.0);
        }
}

TEST_F(JpegKernels, AFlatBlockEqualsTheTransform) {
    for (int step : {1, 3, 16, 255}) {
        std::array<uint8_t, 64> steps;
        steps.fill(static_cast<uint8_t>(step));
        const Table table = MakeTable(steps);
        for (int dc = -2047; dc <= 2047; ++dc) {
            const Block block{static_cast<int16_t>(dc)};
            Samples flat;
            Samples full;
            jpeg::FlatBlock(dc, table.data(), flat.data());
            jpeg::PlainKernels().inverseDct(block.data(), table.data(), full.data());
            ASSERT_EQ(flat, full) << dc << " x " << step;
        }
    }
}

TEST_F(JpegKernels, VectorTransformGivesTheSameBytes) {
    if (!jpeg::VectorKernels())
        GTEST_SKIP() << "no vector routines on this processor";
    for (int round = 0; round < 20000; ++round) {
        const Table table = MakeTable(RandomSteps(255));
        Block block{};
        const int reach = round % 2 ? 32767 : 60;
        for (int i = 0; i <= round % 64; ++i)
            block[Random(0, 63)] = static_cast<int16_t>(Random(-reach, reach));
        Samples plain;
        Samples vector;
        jpeg::PlainKernels().inverseDct(block.data(), table.data(), plain.data());
        jpeg::VectorKernels()->inverseDct(block.data(), table.data(), vector.data());
        ASSERT_EQ(plain, vector) << "round " << round;
    }
}

TEST_F(JpegKernels, ColoursFollowTheIntegerFormulas) {
    const auto limited = [](int value) { return std::clamp(value, 0, 255); };
    for (int cb = 0; cb < 256; ++cb)
        for (int cr = 0; cr < 256; ++cr)
            for (int y : {0, 1, 100, 128, 254, 255}) {
                uint8_t pixel[3];
                jpeg::ConvertPixel(static_cast<uint8_t>(y), static_cast<uint8_t>(cb),
                                   static_cast<uint8_t>(cr), pixel);
                ASSERT_EQ(pixel[0], limited(y + (cb - 128) * 1814 / 1024));
                ASSERT_EQ(pixel[1], limited(y - (352 * cb - 138624 + 731 * cr) / 1024));
                ASSERT_EQ(pixel[2], limited(y + (cr - 128) * 1435 / 1024));
            }
}

TEST_F(JpegKernels, AnMcuIsConvertedPixelByPixelWithChromaRepeated) {
    for (const jpeg::Kernels* kernels : AllKernels())
        for (const jpeg::McuShape shape : {jpeg::McuShape{1, 1}, jpeg::McuShape{2, 1}, jpeg::McuShape{2, 2}})
            for (int round = 0; round < 200; ++round) {
                std::vector<uint8_t> blocks(shape.Blocks() * 64);
                for (auto& sample : blocks)
                    sample = static_cast<uint8_t>(Random(0, 255));
                constexpr size_t kPitch = 60; // more than a row: what lies behind must stay
                std::vector<uint8_t> target(kPitch * shape.Height(), 0xA5);
                kernels->convertMcu(blocks.data(), shape, target.data(), kPitch);

                std::vector<uint8_t> expected(target.size(), 0xA5);
                for (uint32_t y = 0; y < shape.Height(); ++y)
                    for (uint32_t x = 0; x < shape.Width(); ++x) {
                        const uint32_t block = y / 8 * shape.across + x / 8;
                        const uint32_t chroma =
                            shape.LumaBlocks() * 64 + y / shape.down * 8 + x / shape.across;
                        jpeg::ConvertPixel(blocks[block * 64 + y % 8 * 8 + x % 8], blocks[chroma],
                                           blocks[chroma + 64], &expected[y * kPitch + x * 3]);
                    }
                ASSERT_EQ(target, expected) << shape.across << "x" << shape.down;
            }
}
