#include "gui/pixel_ops.h"

#include "support/plain_pixels.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using pixelops::Level;
using pixelops::Loops;

std::mt19937& Random() {
    static std::mt19937 generator(20240229);
    return generator;
}

// Random pixels whose alpha often lies at a threshold, with runs of equal kind as real pictures have them.
std::vector<uint32_t> RandomPixels(size_t count) {
    static constexpr uint32_t kAlphas[] = {0, 1, 3, 4, 5, 127, 128, 239, 240, 251, 252, 253, 254, 255};
    std::vector<uint32_t> pixels(count);
    uint32_t alpha = 255;
    for (uint32_t& pixel : pixels) {
        if (Random()() % 6 == 0)
            alpha = kAlphas[Random()() % std::size(kAlphas)];
        pixel = alpha << 24 | (Random()() & 0xFFFFFF);
        if (Random()() % 16 == 0)
            pixel = 0x00FFFFFF;
    }
    return pixels;
}

std::vector<uint8_t> RandomCoverage(size_t count) {
    std::vector<uint8_t> coverage(count);
    for (uint8_t& c : coverage) {
        const uint32_t kind = Random()() % 4;
        c = static_cast<uint8_t>(kind == 0 ? 0 : kind == 1 ? 255 : Random()() % 256);
    }
    return coverage;
}

class PixelLoops : public testing::TestWithParam<Level> {
protected:
    void SetUp() override {
        loops = pixelops::LoopsFor(GetParam());
        if (!loops)
            GTEST_SKIP() << "not on this processor";
    }

    // Runs both forms on rows of every short length and of a long one, at odd addresses, and looks at the
    // neighbours.
    void Compare(const std::function<void(uint32_t* dst, const uint32_t* src, const uint8_t* coverage,
                                          size_t count)>& fast,
                 const std::function<void(uint32_t* dst, const uint32_t* src, const uint8_t* coverage,
                                          size_t count)>& slow) {
        for (size_t round = 0; round < 40; round++) {
            for (size_t count = 0; count < 70; count++) {
                const size_t length = count == 69 ? 720 : count;
                const size_t shift = Random()() % 4;
                const std::vector<uint32_t> before = RandomPixels(length + 16);
                const std::vector<uint32_t> src = RandomPixels(length + 8);
                const std::vector<uint8_t> coverage = RandomCoverage(length + 8);
                std::vector<uint32_t> actual = before;
                std::vector<uint32_t> expected = before;
                fast(actual.data() + shift, src.data() + shift, coverage.data() + shift, length);
                slow(expected.data() + shift, src.data() + shift, coverage.data() + shift, length);
                ASSERT_EQ(actual, expected) << loops->name << " with " << length << " pixels";
            }
        }
    }

    const Loops* loops = nullptr;
};

TEST_P(PixelLoops, FillStoresTheWordAsItIs) {
    for (uint32_t color : {0x00000000U, 0x00FFFFFFU, 0xFFFFFFFFU, 0x12345678U}) {
        Compare([&](auto* dst, auto*, auto*, size_t n) { loops->fill(dst, n, color); },
                [&](auto* dst, auto*, auto*, size_t n) { plain::Fill(dst, n, color); });
    }
}

TEST_P(PixelLoops, BlendColorEqualsThePlainLoopForEveryAlpha) {
    for (uint32_t a = 0; a < 256; a++) {
        const auto color = static_cast<uint32_t>(Random()());
        std::vector<uint32_t> actual = RandomPixels(517);
        std::vector<uint32_t> expected = actual;
        loops->blendColor(actual.data(), actual.size(), color, a);
        plain::BlendColor(expected.data(), expected.size(), color, a);
        ASSERT_EQ(actual, expected) << loops->name << " alpha " << a;
    }
}

TEST_P(PixelLoops, DivisionTruncatesForEveryPairOfChannelsAndEveryAlpha) {
    std::vector<uint32_t> row(256);
    std::vector<uint32_t> expected(256);
    for (uint32_t a = 0; a < 256; a += 3) {
        for (uint32_t source = 0; source < 256; source += 5) {
            for (uint32_t d = 0; d < 256; d++) {
                row[d] = 0xFF000000 | d * 0x010101;
                expected[d] = 0xFF000000 | (source * a + d * (255 - a)) / 255 * 0x010101;
            }
            loops->blendColor(row.data(), row.size(), source * 0x010101, a);
            ASSERT_EQ(row, expected) << "source " << source << " alpha " << a;
        }
    }
}

TEST_P(PixelLoops, BlendColorsEqualsThePlainLoop) {
    Compare([&](auto* dst, auto* src, auto*, size_t n) { loops->blendColors(dst, src, n); },
            [&](auto* dst, auto* src, auto*, size_t n) { plain::BlendColors(dst, src, n); });
}

TEST_P(PixelLoops, BlendRowEqualsThePlainLoop) {
    Compare([&](auto* dst, auto* src, auto*, size_t n) { loops->blendRow(dst, src, n); },
            [&](auto* dst, auto* src, auto*, size_t n) { plain::BlendRow(dst, src, n); });
}

TEST_P(PixelLoops, BlendMonoEqualsThePlainLoopForEveryKindOfColour) {
    for (uint32_t alpha : {0U, 1U, 17U, 127U, 128U, 240U, 254U, 255U}) {
        const uint32_t color = alpha << 24 | (Random()() & 0xFFFFFF);
        Compare(
            [&](auto* dst, auto*, auto* coverage, size_t n) {
                loops->blendMono({dst, n, coverage, n, n, 1}, color);
            },
            [&](auto* dst, auto*, auto* coverage, size_t n) { plain::BlendMono(dst, coverage, n, color); });
    }
}

TEST_P(PixelLoops, BlendMonoPaintsBlocksOfEveryWidthRowByRow) {
    constexpr size_t kStride = 60;
    constexpr size_t kHeight = 5;
    for (size_t width = 0; width < 40; width++) {
        const std::vector<uint8_t> coverage = RandomCoverage(width * kHeight);
        std::vector<uint32_t> actual = RandomPixels(kStride * kHeight);
        std::vector<uint32_t> expected = actual;
        loops->blendMono({actual.data() + 7, kStride, coverage.data(), width, width, kHeight}, 0xC0204080);
        for (size_t y = 0; y < kHeight; y++)
            plain::BlendMono(expected.data() + 7 + y * kStride, coverage.data() + y * width, width,
                             0xC0204080);
        ASSERT_EQ(actual, expected) << loops->name << " " << width << " wide";
    }
}

TEST_P(PixelLoops, EveryCoverageWithEveryAlphaIsInkedAlike) {
    std::vector<uint8_t> coverage(256);
    for (size_t i = 0; i < 256; i++)
        coverage[i] = static_cast<uint8_t>(i);
    for (uint32_t alpha = 0; alpha < 256; alpha++) {
        const uint32_t color = alpha << 24 | 0x20C0FF;
        std::vector<uint32_t> actual(256, 0xFF8060A0);
        std::vector<uint32_t> expected = actual;
        loops->blendMono({actual.data(), 256, coverage.data(), 256, 256, 1}, color);
        plain::BlendMono(expected.data(), coverage.data(), 256, color);
        ASSERT_EQ(actual, expected) << "alpha " << alpha;
    }
}

TEST_P(PixelLoops, BlendTintEqualsThePlainLoop) {
    for (uint32_t a : {0U, 1U, 102U, 254U, 255U}) {
        Compare([&](auto* dst, auto* src, auto*, size_t n) { loops->blendTint(dst, src, n, 0x40FF8001, a); },
                [&](auto* dst, auto* src, auto*, size_t n) { plain::BlendTint(dst, src, n, 0x40FF8001, a); });
    }
}

TEST_P(PixelLoops, ARowIsSolidUntilOnePixelIsNot) {
    for (size_t count = 1; count < 40; count++) {
        std::vector<uint32_t> row(count, 0xFC000000);
        EXPECT_TRUE(loops->isSolidRow(row.data(), count));
        for (size_t i = 0; i < count; i++) {
            row[i] = 0xFBFFFFFF;
            EXPECT_FALSE(loops->isSolidRow(row.data(), count)) << i << " of " << count;
            row[i] = 0xFFFFFFFF;
        }
    }
    EXPECT_TRUE(loops->isSolidRow(nullptr, 0));
}

INSTANTIATE_TEST_SUITE_P(Levels, PixelLoops, testing::Values(Level::Portable, Level::Sse2, Level::Avx2),
                         [](const auto& tested) {
                             return tested.param == Level::Portable ? "Portable"
                                    : tested.param == Level::Sse2   ? "Sse2"
                                                                    : "Avx2";
                         });

} // namespace
