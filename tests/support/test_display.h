// A whole display in the test's own process: application, house and pages, without threads and without a socket. The
// clock stands still unless a test steps it; touches go through the real record and the real loop.
//
//     TestDisplay display(TestHouse::OneSwitch());
//     display.Tap(360, 400);
//     EXPECT_EQ(display.TakeCommands(), std::vector<std::string>{R"({"U":1,"E":0,"T":2,"V":1.0})"});
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/gui_app.h"
#include "foundation/clock.h"

// The four texts of a house.
struct TestHouse {
    std::string categories = "[]", rooms = "[]", symbols = "[]", structure = "[]";

    // Structure only; the tables hold one category (1, symbol 1) with the symbol "lightbulb.svg".
    static TestHouse Of(const std::string& structure);
    // The four files of a folder below the source tree, such as "demo".
    static TestHouse FromFolder(const std::string& folder);
};

// A fresh, empty folder for what displays remember, in effect while it lives. Every TestDisplay brings one of its own
// unless the test holds one already, to restart a display with it.
class TestStateFolder {
public:
    TestStateFolder();
    ~TestStateFolder();
    TestStateFolder(const TestStateFolder&) = delete;
    TestStateFolder& operator=(const TestStateFolder&) = delete;

    std::string Settings() const; // the settings file; empty without one
    void WriteSettings(const std::string& text) const;

private:
    std::filesystem::path path;
};

class TestDisplay {
public:
    explicit TestDisplay(const TestHouse& house);
    ~TestDisplay();
    TestDisplay(const TestDisplay&) = delete;
    TestDisplay& operator=(const TestDisplay&) = delete;

    // ---- Time and touch, in screen pixels ----

    void Pass();               // one pass of the main loop, without waiting
    void Advance(uint64_t ms); // steps the clock in steps of 10 ms, with a pass after each
    void Down(int32_t x, int32_t y);
    void Move(int32_t x, int32_t y);
    void Up(int32_t x, int32_t y);
    void Tap(int32_t x, int32_t y);
    // Down, a move every 10 ms along the line, up at the end.
    void Drag(int32_t x1, int32_t y1, int32_t x2, int32_t y2, uint64_t ms);
    // The host's message that switches night mode.
    void ShowNight(bool night);
    // Passes until no frame has come for 150 ms of the stepped clock.
    void Settle();

    // ---- What came out ----

    std::vector<std::string> TakeCommands(); // text commands since the last call
    std::vector<std::string> TakeLog();      // log lines since the last call
    uint32_t FrameCount() const;
    const uint32_t* Screen() const { return app->mainWin.pixels; } // 720 x 720, the root's store
    uint32_t PixelAt(int32_t x, int32_t y) const { return Screen()[y * kScreenSide + x]; }

    CVrGuiMainWin& Root() { return app->mainWin; }
    // The page on screen; null without one.
    CVrGuiFrame* Page();
    CVrGuiApp& App() { return *app; }

    CVrTestClock clock;

private:
    std::optional<TestStateFolder> state;
    void Post(uint32_t type, int32_t x, int32_t y);

    CVrGuiApp* app = nullptr; // owned
};
