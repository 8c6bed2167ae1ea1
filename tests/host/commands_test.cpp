#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/application_double.h"
#include "host/commands.h"
#include "host/protocol.h"
#include "support/log_capture.h"

namespace {

std::vector<std::string> g_dispatched; // "COMMAND:payload"

class CommandsTest : public ::testing::Test {
protected:
    CommandsTest() {
        g_dispatched.clear();
        ApplicationDouble::created = 0;
    }

    bool Handle(uint32_t command, const std::string& payload = "") {
        CVrxByteArray bytes(payload.data(), static_cast<uint32_t>(payload.size()));
        return commands.handle_cmd(command, bytes);
    }
    bool Touch(uint32_t type, uint32_t x, uint32_t y) {
        const uint32_t words[] = {type, x, y};
        return Handle(CommandTouch, std::string(reinterpret_cast<const char*>(words), sizeof words));
    }
    static ApplicationDouble& App() { return *ApplicationDouble::current; }

    static CHostSlots Slots() {
        CHostSlots slots;
        slots.log = [](const char*) {};
        return slots;
    }

    CHostCommands commands{Slots(), ApplicationDouble::Make,
                           [](uint32_t command, const CVrxByteArray& payload) {
                               g_dispatched.push_back(std::to_string(command) + ":" +
                                                      std::string(payload.begin(), payload.end()));
                           }};
};

std::string Text(const char* text) {
    return std::string(text) + '\0';
}

using Strings = std::vector<std::string>;

} // namespace

TEST_F(CommandsTest, NothingReachesTheApplicationBeforeItExists) {
    for (uint32_t command : {3u, 4u, 5u, 7u, 8u, 9u, 10u, 0u, 11u, 0xFFFFFFFFu})
        EXPECT_TRUE(Handle(command, std::string(12, '\0')));
    EXPECT_EQ(ApplicationDouble::created, 0);
    Handle(CommandCreate, "ignored");
    commands.DrainQueue();
    EXPECT_TRUE(g_dispatched.empty());
    EXPECT_TRUE(App().loads.empty());
    Handle(CommandCreate);
    EXPECT_EQ(ApplicationDouble::created, 1);
}

TEST_F(CommandsTest, LogLevelNeedsFourBytes) {
    SetLogLevel(1);
    Handle(CommandLogLevel, std::string("\5\0\0", 3));
    EXPECT_EQ(GetLogLevel(), 1u);
    Handle(CommandLogLevel, std::string("\4\0\0\0rest", 8));
    EXPECT_EQ(GetLogLevel(), 4u);
    SetLogLevel(1);
}

TEST_F(CommandsTest, EndIsTheOnlyCommandThatEnds) {
    EXPECT_FALSE(Handle(CommandEnd, "with payload"));
    Handle(CommandCreate);
    EXPECT_FALSE(Handle(CommandEnd));
}

TEST_F(CommandsTest, LoadsTheFourTextsOnce) {
    Handle(CommandCreate);
    LogCapture log;
    Handle(CommandLoad, Text("c") + Text("r") + "unterminated");
    Handle(CommandLoad, Text("c") + Text("r") + Text("s"));
    Handle(CommandLoad);
    EXPECT_TRUE(App().loads.empty());
    EXPECT_EQ(log.Count("fewer than four texts"), 3u);
    Handle(CommandLoad, Text("c") + Text("") + Text("symbols") + Text("s") + "beyond");
    ASSERT_EQ(App().loads.size(), 1u);
    EXPECT_EQ(App().loads[0], (Strings{"c", "", "symbols", "s"}));
    Handle(CommandLoad, Text("1") + Text("2") + Text("3") + Text("4"));
    EXPECT_EQ(App().loads.size(), 1u);
    EXPECT_TRUE(log.Has("command 3 repeated"));
}

TEST_F(CommandsTest, TouchesLoseTheBorderAndMovesToNewPlacesComeTwice) {
    Handle(CommandCreate);
    Touch(1, 132, 232); // down
    Touch(2, 132, 232); // the down took over the position
    Touch(2, 133, 232);
    Touch(2, 133, 232);
    Touch(4, 0, 31); // up in the border
    Touch(2, 0, 31);
    Touch(3, 0xFFFFFFFF, 0); // unknown types and absurd places pass
    EXPECT_EQ(App().touches, (Strings{"1@100,200", "2@100,200", "2@101,200", "2@101,200", "2@101,200",
                                      "4@-32,-1", "2@-32,-1", "3@-33,-32"}));
    Handle(CommandTouch, std::string(11, '\1'));
    EXPECT_EQ(App().touches.size(), 8u);
}

TEST_F(CommandsTest, FirstMoveToTheCornerIsPostedOnce) {
    Handle(CommandCreate);
    Touch(2, 32, 32); // the last position starts at 0, 0
    EXPECT_EQ(App().touches, (Strings{"2@0,0"}));
}

TEST_F(CommandsTest, QueuedMessagesAreHandedOutInOrder) {
    Handle(CommandCreate);
    Handle(CommandText, Text("one"));
    Handle(CommandSettings, Text("{}"));
    Handle(CommandRest);
    Handle(CommandNight, std::string("\1\0\0\0", 4));
    Handle(CommandRuntime, Text("{}"));
    EXPECT_EQ(App().repaints, 5);
    EXPECT_TRUE(g_dispatched.empty());
    commands.DrainQueue();
    EXPECT_EQ(g_dispatched, (Strings{"4:" + Text("one"), "7:" + Text("{}"),
                                     "8:", "9:" + std::string("\1\0\0\0", 4), "10:" + Text("{}")}));
    commands.DrainQueue();
    EXPECT_EQ(g_dispatched.size(), 5u);
}

TEST_F(CommandsTest, TextsWithoutTheirEndAreDropped) {
    Handle(CommandCreate);
    LogCapture log;
    for (const uint32_t command : {4u, 7u, 10u})
        Handle(command, "endless");
    EXPECT_EQ(log.Count("without its end"), 3u);
    commands.DrainQueue();
    EXPECT_TRUE(g_dispatched.empty());
    EXPECT_EQ(App().repaints, 0);
}

TEST_F(CommandsTest, QueueDoesNotGrowWithoutLimit) {
    Handle(CommandCreate);
    LogCapture log(LogError);
    const std::string large(16u << 20, '\0');
    for (int i = 0; i < 6; i++)
        Handle(CommandText, large);
    EXPECT_EQ(App().repaints, 4);
    EXPECT_EQ(log.Count("too many messages wait"), 2u);
    commands.DrainQueue();
    EXPECT_EQ(g_dispatched.size(), 4u);
    Handle(CommandText, large); // there is room again
    EXPECT_EQ(App().repaints, 5);

    CHostMessageQueue queue;
    for (uint32_t i = 0; i < CHostMessageQueue::kMaxCount; i++)
        ASSERT_TRUE(queue.Push(CommandRest, CVrxByteArray()));
    EXPECT_FALSE(queue.Push(CommandRest, CVrxByteArray()));
}

TEST_F(CommandsTest, TerminateDestroysTheApplication) {
    commands.Terminate();
    Handle(CommandCreate);
    EXPECT_TRUE(ApplicationDouble::current);
    commands.Terminate();
    EXPECT_FALSE(ApplicationDouble::current);
}
