// The script language: what is accepted, and what the messages of a refusal say.
#include "desktop/script.h"

#include <deque>
#include <gtest/gtest.h>

namespace {

using namespace desktop;
using namespace std::chrono_literals;

std::string FaultOf(const std::string& text) {
    try {
        ParseScript("s", text);
    } catch (const Fault& fault) {
        return fault.what();
    }
    return "";
}

template <class Step>
Step Only(const std::string& text) {
    const Script script = ParseScript("s", text);
    EXPECT_EQ(script.steps.size(), 1u) << text;
    return std::get<Step>(script.steps.at(0).action);
}

// Time stands still except in Wait, so that a script of minutes runs at once.
class RecordingTarget : public ScriptTarget {
public:
    void Touch(TouchType type, Point at) override {
        log += std::to_string(static_cast<int>(type)) + "@" + std::to_string(at.x) + "," +
               std::to_string(at.y) + " ";
    }
    void Send(std::uint32_t command, const std::string& payload) override {
        log += "cmd" + std::to_string(command) + "(" + std::to_string(payload.size()) + ") ";
    }
    void Wait(std::chrono::milliseconds duration) override { waited += duration; }
    std::chrono::steady_clock::time_point LastFrameTime() const override {
        return restless ? std::chrono::steady_clock::now() : std::chrono::steady_clock::time_point();
    }
    bool TakeTextCommand(std::string& text) override {
        if (commands.empty())
            return false;
        text = commands.front();
        commands.pop_front();
        return true;
    }
    void Shot(const std::string& name) override { log += "shot:" + name + " "; }

    std::string log;
    std::chrono::milliseconds waited{0};
    bool restless = false;
    std::deque<std::string> commands;
};

TEST(Script, EveryLineOfTheLanguageIsUnderstood) {
    const Script script = ParseScript("s", "# a comment\n"
                                           "\n"
                                           "down 0 719\r\n"
                                           "  move 1 2  \n"
                                           "up 3 4\n"
                                           "tap 5 6\n"
                                           "drag 1 2 3 4 500\n"
                                           "wait 10\n"
                                           "settle\n"
                                           "shot page-1_a.b\n"
                                           "night 1\n"
                                           "settings {\"wallslate\": {\"language\": \"de\"}}\n"
                                           "runtime {\"color\": 255}\n"
                                           "rest\n"
                                           "expect {\"U\":1,\"E\":0,\"T\":2,\"V\":1.0}\n"
                                           "log-level 5\n"
                                           "raw 77 00 fF 10\n"
                                           "raw 6");
    EXPECT_EQ(script.steps.size(), 16u);
    EXPECT_EQ(script.steps.front().line, 3u);
    EXPECT_EQ(script.steps.back().line, 18u);
    EXPECT_TRUE(script.TakesShots());
}

TEST(Script, PayloadsAreByteExact) {
    EXPECT_EQ(Only<SendStep>("night 1").payload, std::string("\1\0\0\0", 4));
    EXPECT_EQ(Only<SendStep>("runtime {\"color\": 255}").payload, std::string("{\"color\": 255}\0", 15));
    EXPECT_EQ(Only<SendStep>("raw 4294967295 00fF").payload, std::string("\0\xFF", 2));
    EXPECT_EQ(Only<SendStep>("raw 4294967295 00fF").command, 0xFFFFFFFFu);
    EXPECT_EQ(Only<ExpectStep>("expect  {\"a\": 1} # not a comment ").text, "{\"a\": 1} # not a comment");
}

TEST(Script, RefusalsNameLineAndReason) {
    const std::pair<const char*, const char*> cases[] = {
        {"wait 1\ndance", "s:2: 'dance' is no step of a script"},
        {"tap 1", "s:1: tap needs X and Y"},
        {"tap 1 x", "s:1: tap 'x' is no number"},
        {"tap 1 1.5", "s:1: tap '1.5' is no number"},
        {"tap 1 720", "s:1: tap 720 is not within 0 to 719"},
        {"tap -1 0", "s:1: tap -1 is not within 0 to 719"},
        {"tap 1 99999999999", "s:1: tap 99999999999 is not within 0 to 719"},
        {"tap 1 2 3", "s:1: tap does not know what '3' means here"},
        {"wait", "s:1: wait needs a time in ms"},
        {"wait 600001", "s:1: wait 600001 is not within 0 to 600000"},
        {"night 2", "s:1: night 2 is not within 0 to 1"},
        {"shot ../up", "s:1: shot a name has letters"},
        {"shot .hidden", "s:1: shot a name has letters"},
        {"shot", "s:1: shot needs a name"},
        {"settings [1]", "s:1: settings '[1]' is no JSON object"},
        {"runtime {\"color\": }", "s:1: runtime '{\"color\": }' is no JSON object"},
        {"expect", "s:1: expect needs the text of a command"},
        {"raw", "s:1: raw needs a message number"},
        {"raw 1 abc", "s:1: raw an odd number of hexadecimal digits"},
        {"raw 1 xy", "s:1: raw 'x' is no hexadecimal digit"},
        {"raw -1", "s:1: raw '-1' is no number"},
        {"settle now", "s:1: settle does not know what 'now' means here"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_EQ(FaultOf(text).substr(0, std::string(message).size()), message) << text;
    EXPECT_NE(FaultOf("runtime " + std::string(100'000, '[')), "") << "depth must not matter";
}

TEST(Script, TouchesKeepAPaceTheDisplayCanFollow) {
    RecordingTarget target;
    RunScript(ParseScript("s", "tap 5 6\ndown 1 2\nup 1 2"), target);
    EXPECT_EQ(target.log, "1@5,6 4@5,6 1@1,2 4@1,2 ");
    EXPECT_GE(target.waited, 160ms);
}

TEST(Script, ADragEndsWhereItShouldAndLiftsTheFinger) {
    RecordingTarget target;
    RunScript(ParseScript("s", "drag 100 700 100 10 0"), target);
    EXPECT_EQ(target.log, "1@100,700 2@100,10 4@100,10 ");
}

TEST(Script, ExpectTakesCommandsInOrderAndNamesBoth) {
    RecordingTarget target;
    target.commands = {"a", "b"};
    RunScript(ParseScript("s", "expect a"), target);
    try {
        RunScript(ParseScript("s", "\nexpect c"), target);
        FAIL();
    } catch (const Fault& fault) {
        EXPECT_STREQ(fault.what(), "s:2: expect: the display sent b where the script expects c");
    }
}

TEST(Script, SettleWaitsForQuietAndGivesUpOnAPictureThatNeverRests) {
    RecordingTarget target;
    EXPECT_TRUE(Settle(target));
    target.restless = true;
    EXPECT_FALSE(Settle(target, 200ms));
}

} // namespace
