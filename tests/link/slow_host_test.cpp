// A host that stops reading in the middle of a fling: what it could not take is not built, and what it gets last is the
// display as it then is.

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "link/display_process.h"

#ifdef WALLSLATE

namespace {

constexpr uint32_t kFrame = 102, kLogLine = 101, kTouch = 5, kNight = 9;
constexpr uint32_t kBorder = 32;
constexpr uint32_t kQuietMs = 700;
constexpr uint32_t kRingFrames =
    6; // whole frames that wait on the display's side at most; the socket holds some more

// What came until the display was quiet.
struct Arrived {
    int frames = 0;
    int built = 0; // as the display's log says
    std::string last;
};

Arrived ReadUntilQuiet(const HostConnection& host) {
    Arrived arrived;
    while (const auto message = host.ReceiveMessage(kQuietMs)) {
        if (message->command == kFrame) {
            arrived.frames++;
            arrived.last = message->payload;
        } else if (message->command == kLogLine) {
            arrived.built += message->payload.find("UpdateFullscreen: UpdateFullscreen") != std::string::npos;
        }
    }
    return arrived;
}

std::string TwelvePages() {
    std::string entries;
    for (int i = 1; i <= 12; i++)
        entries +=
            (i > 1 ? "," : "") + std::string(R"({"T":342,"N":"Switch","C":1,"U":)") + std::to_string(i) + "}";
    const std::string tables = std::string(R"([{"U":1,"N":"Light","I":1}])") + '\0' + "[]" + '\0' +
                               R"([{"I":1,"N":"lightbulb.svg"}])" + '\0';
    return tables + "[" + entries + "]" + '\0';
}

class Finger {
public:
    explicit Finger(const HostConnection& host) : m_host(host) {}
    void Send(uint32_t type, uint32_t x, uint32_t y) const {
        m_host.Send(EncodeWords(kTouch, {type, x + kBorder, y + kBorder}));
        std::this_thread::sleep_for(std::chrono::milliseconds(8));
    }
    void Fling(uint32_t fromX, uint32_t toX, uint32_t y) const {
        Send(1, fromX, y);
        for (uint32_t i = 1; i <= 10; i++)
            Send(2, fromX + (toX - fromX) * i / 10, y); // unsigned: the sum wraps to where it should
        Send(4, toX, y);
    }
    void Tap(uint32_t x, uint32_t y) const {
        Send(1, x, y);
        Send(4, x, y);
    }

private:
    const HostConnection& m_host;
};

} // namespace

TEST(SlowHost, GetsEveryFrameThatIsBuiltAndTheLastState) {
    DisplayProcess display(WALLSLATE);
    const auto host = display.Connect();
    ASSERT_TRUE(host.Send(Encode(1) + EncodeWords(2, {5}) + Encode(3, TwelvePages())));
    ASSERT_TRUE(host.Send(EncodeWords(kNight, {0}))); // the first one sets the colours
    ASSERT_GT(ReadUntilQuiet(host).frames, 0);
    const Finger finger(host);
    for (int stall = 0; stall < 2; stall++) {
        finger.Fling(650, 90, 55); // nobody reads from here on
        finger.Tap(360, 400);      // and the switch turns
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        const Arrived arrived = ReadUntilQuiet(host);
        EXPECT_EQ(arrived.frames, arrived.built) << "frames were built and thrown away";
        EXPECT_GE(arrived.frames, 3);
        EXPECT_LE(arrived.frames, static_cast<int>(kRingFrames) + 6) << "it should have waited for room";
        ASSERT_TRUE(host.Send(EncodeWords(kNight, {0}))); // paints all, changes nothing
        EXPECT_TRUE(ReadUntilQuiet(host).last == arrived.last) << "the last frame is not the last state";
    }
    host.Send(Encode(6));
    EXPECT_EQ(display.WaitForExit(5000), 0);
}

#endif
