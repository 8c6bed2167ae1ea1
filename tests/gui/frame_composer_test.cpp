#include "gui/frame_composer.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

uint32_t PixelAt(const uint8_t* frame, int x, int y) {
    uint32_t pixel = 0;
    std::memcpy(&pixel, frame + (y * 784 + x) * 4, 4);
    return pixel;
}

TEST(ComposeFrame, PutsTheScreenIntoTheBorder) {
    std::vector<uint32_t> screen(720 * 720);
    for (uint32_t i = 0; i < screen.size(); i++)
        screen[i] = 0xFF000000 | i;
    CVrFrame frame;
    const uint8_t* bytes = ComposeFrame(screen.data(), frame);
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(kFrameBytes, 2458624U);
    for (int y = 0; y < 784; y++) {
        for (int x = 0; x < 784; x++) {
            const bool isScreen = x >= 32 && x < 752 && y >= 32 && y < 752;
            const bool isMarker = x >= 382 && x < 402 && y >= 9 && y < 29;
            const uint32_t expected =
                isScreen ? screen[static_cast<size_t>((y - 32) * 720 + x - 32)] : 0xFF323232U;
            if (!isMarker) {
                ASSERT_EQ(PixelAt(bytes, x, y), expected) << x << "/" << y;
            }
        }
    }
    EXPECT_EQ(bytes[100480 + 4], 1) << "blue of the screen's second pixel";
}

// The marker's rows of 20 levels are cut from one string of 196 that was written in rows of 14.
TEST(ComposeFrame, StampsTheMarkerFromItsLevelsInRowsOfTwenty) {
    const std::string half = "00000000000000"
                             "00000488400000"
                             "0004CFFFFC4000"
                             "004EFFFFFFE400"
                             "04EFFFFFFFFE40"
                             "0CFFFFFFFFFFC0"
                             "4EFFFFFFFFFFE4";
    const std::string levels = half + std::string(half.rbegin(), half.rend()); // The disc is symmetric.
    auto level = [](char c) -> uint32_t {
        switch (c) {
        case '0':
            return 0;
        case 'F':
            return 0xFF;
        default: // '4' is 0x40, 'C' is 0xC0
            return static_cast<uint32_t>(c <= '9' ? c - '0' : c - 'A' + 10) << 4;
        }
    };
    const std::vector<uint32_t> screen(720 * 720, 0xFFFFFFFF);
    CVrFrame frame;
    for (int run = 0; run < 2; run++) { // The second frame carries it too.
        const uint8_t* bytes = ComposeFrame(screen.data(), frame);
        for (size_t i = 0; i < 400; i++) {
            const uint32_t grey = (i < levels.size() ? level(levels[i]) : 0) / 2;
            ASSERT_EQ(PixelAt(bytes, 382 + static_cast<int>(i % 20), 9 + static_cast<int>(i / 20)),
                      0xFF000000U | grey * 0x010101U)
                << i;
        }
    }
}

} // namespace
