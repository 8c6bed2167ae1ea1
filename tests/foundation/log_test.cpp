#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "foundation/clock.h"
#include "foundation/utf8.h"
#include "support/log_capture.h"

TEST(LogTest, LinesLeaveOnlyUpToTheLevelAndWithASlot) {
    Log(LogError, "A", "nobody listens");
    LogCapture log(LogError);
    Log(LogWarning, "A", "too quiet");
    EXPECT_FALSE(LogEnabled(LogWarning));
    EXPECT_TRUE(LogEnabled(LogError));
    Log(LogError, "A", "heard %d", 1);
    ASSERT_EQ(log.All().size(), 1u);
    SetLogLevel(UINT32_MAX);
    Log(77, "A", "any level");
    EXPECT_EQ(log.All().size(), 2u);
}

TEST(LogTest, PrefixCarriesTickAndTag) {
    LogCapture log;
    CVrTestClock clock(0x1'0000'0005); // beyond 32 bits: the prefix wraps
    Log(LogError, "CVrGuiApp::MainLoop", "text %s", "x");
    Log(LogError, nullptr, "bare");
    Log(LogError, "", "bare too");
    EXPECT_EQ(log.All(),
              (std::vector<std::string>{"5ms RK CVrGuiApp::MainLoop: text x", "bare", "bare too"}));
}

TEST(LogTest, LongLinesAreCutAtACharacter) {
    LogCapture log;
    std::string text;
    while (text.size() < 2 * kLogLineSize)
        text += "\xE2\x82\xAC"; // euro sign
    for (const char* tag : {"", "t", "tt", "ttt"}) {
        Log(LogError, tag, "%s", text.c_str());
        const std::string line = log.All().back();
        EXPECT_LT(line.size(), kLogLineSize);
        EXPECT_GT(line.size(), kLogLineSize - 5);
        EXPECT_TRUE(line.ends_with("\xE2\x82\xAC"));
    }
    const std::string longTag(2 * kLogLineSize, 'T');
    Log(LogError, longTag.c_str(), "text");
    EXPECT_EQ(log.All().back().size(), kLogLineSize - 1);
}

TEST(LogTest, StrayBytesAreReplaced) {
    LogCapture log;
    Log(LogError, nullptr, "a%sb", "\xC3\xA4\xFF\x80\xE2\x82z\xED\xA0\x80");
    EXPECT_EQ(log.All().back(), "a\xC3\xA4????z???b");
}

TEST(LogTest, LinesOfManyThreadsDoNotMix) {
    LogCapture log;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; i++) {
        threads.emplace_back([i] {
            for (int n = 0; n < 200; n++)
                Log(LogError, "T", "%s", std::string(200, static_cast<char>('a' + i)).c_str());
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const auto lines = log.All();
    EXPECT_EQ(lines.size(), 800u);
    for (const std::string& line : lines) {
        const size_t text = line.find("ms RK T: ") + 9;
        ASSERT_EQ(line.substr(text), std::string(200, line.back())) << line;
    }
}

TEST(Utf8Test, OnlyWellFormedSequencesCount) {
    struct Case {
        const char* text;
        uint32_t length;
    };
    const Case cases[] = {
        {"a", 1},
        {"\xC3\xA4", 2},
        {"\xC0\xAF", 0},     // overlong
        {"\xE0\x9F\xBF", 0}, // overlong
        {"\xE0\xA0\x80", 3},
        {"\xED\x9F\xBF", 3},
        {"\xED\xA0\x80", 0},     // surrogate
        {"\xF0\x8F\xBF\xBF", 0}, // overlong
        {"\xF4\x8F\xBF\xBF", 4}, // U+10FFFF
        {"\xF4\x90\x80\x80", 0}, // above it
        {"\xF5\x80\x80\x80", 0},
        {"\x80", 0},
        {"\xE2\x82", 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Utf8SequenceLength(c.text, static_cast<uint32_t>(strlen(c.text))), c.length) << c.text;
}
