// Motion through the whole display by the stepped clock: a wire that is full, and fingers gone mad.

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "gui/application.h"
#include "shell/frame.h"
#include "shell/menu.h"
#include "support/test_display.h"

namespace {

bool g_hasRoom = true;

class MotionTest : public testing::Test {
protected:
    ~MotionTest() override { g_hasRoom = true; }

    // A fling along the menu row, with room for a frame at every `period`th pass only; the offsets pass by pass.
    std::vector<int32_t> Fling(TestDisplay& display, int period) {
        std::vector<int32_t> offsets;
        std::vector<uint32_t> before(kScreenSide * kScreenSide);
        display.App().readySlot = [] { return g_hasRoom; };
        int pass = 0;
        const auto step = [&](const auto& act) {
            g_hasRoom = pass++ % period == 0;
            memcpy(before.data(), display.Screen(), kScreenBytes);
            const uint32_t sent = display.FrameCount();
            display.clock.Advance(8);
            act();
            const bool painted = memcmp(before.data(), display.Screen(), kScreenBytes) != 0;
            EXPECT_LE(display.FrameCount() - sent, g_hasRoom ? 1u : 0u);
            EXPECT_FALSE(painted && !g_hasRoom) << "painted for nobody at pass " << pass;
            offsets.push_back(display.Root().menu->offsetX);
        };
        step([&] { display.Down(600, 55); });
        for (int x = 560; x >= 200; x -= 40)
            step([&] { display.Move(x, 55); });
        step([&] {
            display.App().PostTouch(CVrGuiElement::EventUp, CVrPoint(200, 55));
            display.Pass();
        });
        for (int i = 0; i < 150; i++)
            step([&] { display.Pass(); });
        g_hasRoom = true;
        display.Pass();
        return offsets;
    }
};

} // namespace

TEST_F(MotionTest, AFullWireCostsFramesButNeitherMotionNorTheLastState) {
    const TestHouse house = TestHouse::FromFolder("tests/houses/twelve-pages");
    std::vector<int32_t> offsets;
    std::vector<uint32_t> last;
    uint32_t frames = 0;
    for (int period : {1, 7, 1000}) {
        TestDisplay display(house);
        const std::vector<int32_t> way = Fling(display, period);
        const std::vector<uint32_t> screen(display.Screen(), display.Screen() + kScreenSide * kScreenSide);
        if (period == 1) {
            offsets = way;
            last = screen;
            frames = display.FrameCount();
            EXPECT_LT(way.back(), -300);
            continue;
        }
        EXPECT_EQ(way, offsets);
        EXPECT_TRUE(screen == last);
        EXPECT_LT(display.FrameCount(), frames / 4);
    }
}

// Downs after downs, ups without downs, moves far outside, types that do not exist: after each thousand a plain tap on
// the menu row brings up its page.
TEST_F(MotionTest, AHundredThousandRandomEventsLeaveADisplayThatTakesATap) {
    TestDisplay display(TestHouse::FromFolder("demo"));
    display.App().readySlot = [] { return g_hasRoom; };
    std::mt19937 random(20);
    const auto any = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    static constexpr uint32_t kTypes[] = {1, 1, 2, 2, 2, 2, 4, 4, 0, 3, 7, 1024};
    for (int i = 1; i <= 100'000; i++) {
        g_hasRoom = any(500) == 0; // painting is not what is tried here
        display.clock.Advance(static_cast<uint64_t>(any(30)));
        const int far = any(60) == 0 ? 2'000'000 : 1;
        display.App().PostTouch(kTypes[any(std::size(kTypes))],
                                CVrPoint((any(900) - 90) * far, (any(900) - 90) * far));
        display.Pass();
        if (i % 1000 != 0)
            continue;
        display.Up(-50, -50); // the last gesture may be open
        display.Advance(2000);
        CVrGuiMenu& menu = *display.Root().menu;
        CVrPoint shift;
        CVrElementRef<> button(menu.HitTest(CVrPoint(360 - menu.rect.x, 55), &shift));
        ASSERT_TRUE(button) << i;
        display.Tap(360, 55);
        ASSERT_EQ(display.Page(), static_cast<CVrGuiButton&>(*button).linkedElement.Get()) << i;
        ASSERT_EQ(display.App().Capture(), nullptr) << i;
        display.TakeCommands();
        display.TakeLog();
    }
}
