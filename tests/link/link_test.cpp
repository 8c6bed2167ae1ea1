// What a host can do to a display, right or wrong, over the real socket. Each test runs against the display
// itself and against its link with a double for the application.
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "link/display_process.h"

namespace fs = std::filesystem;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr uint32_t kEndMs = 5000; // the run-time's own work at the end
#else
constexpr uint32_t kEndMs = 500; // within which a display must be gone
#endif
constexpr uint32_t kLoadMs = 2000; // commands are not heard while the display loads
constexpr uint32_t kStartMs = 20000;
constexpr uint32_t kReplyMs = 20000;
constexpr size_t kFrameBytes = 2458624;

void Sleep(uint32_t ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string House(const std::string& categories, const std::string& structure) {
    return categories + '\0' + "[]" + '\0' + "[]" + '\0' + structure + '\0';
}

std::string Touch(uint32_t type, uint32_t x, uint32_t y) {
    return EncodeWords(5, {type, x, y});
}

const std::string kCreate = Encode(1);
const std::string kVerbose = EncodeWords(2, {4});
const std::string kLoad = Encode(3, House("[]", "{}"));
const std::string kEnd = Encode(6);

class LinkTest : public ::testing::TestWithParam<const char*> {
protected:
    std::string Program() const { return GetParam(); }
};

} // namespace

// ---- Command line and exit codes

TEST_P(LinkTest, TooFewArguments) {
    for (const auto& arguments : {std::vector<std::string>{"0", "1000"}, std::vector<std::string>{"0"}}) {
        DisplayProcess::Options options;
        options.arguments = arguments;
        DisplayProcess display(Program(), options);
        EXPECT_EQ(display.WaitForExit(kStartMs), 2);
        EXPECT_TRUE(
            std::regex_match(display.Errors(), std::regex("-?\\d+ WallSlateLib: no pipe specified\n")));
    }
}

TEST_P(LinkTest, NameThatIsTaken) {
    DisplayProcess first(Program());
    auto host = first.Connect();
    DisplayProcess::Options options;
    options.arguments = {"0", "10000", first.SocketPath()};
    DisplayProcess second(Program(), options);
    EXPECT_EQ(second.WaitForExit(kStartMs), 2);
    EXPECT_NE(second.Errors().find(" WallSlateLib: another instance is already running\n"),
              std::string::npos);
    host.Send(kCreate + kEnd); // the first one is none the worse
    EXPECT_EQ(first.WaitForExit(kEndMs), 0);
}

TEST_P(LinkTest, SecondDisplayCostsAWaitingOneNothing) {
    DisplayProcess first(Program());
    while (!fs::exists(first.SocketPath()))
        Sleep(2);
    DisplayProcess::Options options;
    options.arguments = {"0", "10000", first.SocketPath()};
    DisplayProcess second(Program(), options);
    EXPECT_EQ(second.WaitForExit(kStartMs), 2);
    const auto host = first.Connect();
    host.Send(kCreate + kVerbose + kLoad);
    EXPECT_TRUE(host.WaitForMessage(102, kReplyMs));
    host.Send(kEnd);
    EXPECT_EQ(first.WaitForExit(kEndMs + kLoadMs), 0);
}

TEST_P(LinkTest, NameThatCannotBeMade) {
    DisplayProcess::Options options;
    options.arguments = {"0", "1000", "/nowhere/at/all"};
    DisplayProcess display(Program(), options);
    EXPECT_EQ(display.WaitForExit(kStartMs), 3);
    EXPECT_TRUE(
        std::regex_match(display.Errors(), std::regex("-?\\d+ Use \\\\\\\\.\\\\pipe\\\\/nowhere/at/all\n")))
        << display.Errors();
}

TEST_P(LinkTest, NobodyConnects) {
    DisplayProcess::Options options;
    options.timeoutMs = 150;
    DisplayProcess display(Program(), options);
    EXPECT_EQ(display.WaitForExit(kStartMs), 5);
    EXPECT_NE(display.Errors().find(" WallSlateLib: timed out waiting for client\n"), std::string::npos);
    EXPECT_FALSE(fs::exists(display.SocketPath()));
}

TEST_P(LinkTest, PlainNamesLieWhereNamedPipesAreLookedFor) {
    const std::string folder = DisplayProcess::NewFolder();
    setenv("TMPDIR", folder.c_str(), 1);
    DisplayProcess::Options options;
    options.arguments = {"0", "10000", "kitchen"};
    DisplayProcess display(Program(), options);
    unsetenv("TMPDIR");
    const fs::path socket = fs::path(folder) / "CoreFxPipe_kitchen";
    for (int i = 0; i < 5000 && !fs::exists(socket); i++)
        Sleep(2);
    EXPECT_EQ(fs::status(socket).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    HostConnection host(socket.string());
    EXPECT_TRUE(host.Send(kEnd));
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
    EXPECT_NE(display.Errors().find(" Use \\\\.\\pipe\\kitchen\n"), std::string::npos);
    EXPECT_FALSE(fs::exists(socket));
    fs::remove_all(folder);
}

TEST_P(LinkTest, DebugFlagSendsRemarksToTheFile) {
    DisplayProcess::Options options;
    options.debug = "1";
    DisplayProcess display(Program(), options);
    display.Connect().Send(kEnd);
    EXPECT_EQ(display.WaitForExit(kStartMs), 0);
    EXPECT_EQ(display.Errors(), "");
    const std::string log = ReadFile(display.StateFolder() / "WallSlateLib.log");
    EXPECT_NE(log.find(" Connected\n"), std::string::npos);
    EXPECT_NE(log.find(" handle_cmd 6\n"), std::string::npos);
    EXPECT_NE(log.find(" Terminate\n"), std::string::npos);
}

// ---- The ways a link ends: always with code 0, soon, and without the socket's file

TEST_P(LinkTest, EndCommand) {
    for (const std::string& before : {std::string(), kCreate, kCreate + kLoad}) {
        DisplayProcess display(Program());
        const auto host = display.Connect();
        host.Send(before + Encode(6, "its payload is read first"));
        EXPECT_TRUE(host.WaitForClose(kStartMs));
        EXPECT_EQ(display.WaitForExit(kEndMs), 0);
        EXPECT_NE(display.Errors().find(" Terminate\n"), std::string::npos);
        EXPECT_FALSE(fs::exists(display.SocketPath()));
    }
}

TEST_P(LinkTest, Signals) {
    for (const int number : {SIGTERM, SIGINT}) {
        DisplayProcess waiting(Program());
        while (!fs::exists(waiting.SocketPath()))
            Sleep(2);
        waiting.Signal(number);
        EXPECT_EQ(waiting.WaitForExit(kEndMs), 0);
        EXPECT_FALSE(fs::exists(waiting.SocketPath()));

        DisplayProcess running(Program());
        const auto host = running.Connect();
        host.Send(kCreate + kLoad);
        EXPECT_TRUE(host.WaitForMessage(102, kReplyMs));
        running.Signal(number); // the first frame leaves at the begin of the splash
        EXPECT_EQ(running.WaitForExit(kEndMs), 0);
        EXPECT_FALSE(fs::exists(running.SocketPath()));
    }
}

TEST_P(LinkTest, HostThatVanishesAtAnyByte) {
    const std::string session =
        kCreate + kVerbose + kLoad + Touch(1, 100, 100) + Encode(4, std::string("text\0", 5));
    for (size_t cut = 1; cut <= session.size(); cut += cut < 24 ? 3 : 11) {
        DisplayProcess display(Program());
        auto host = display.Connect();
        ASSERT_TRUE(host.Send(session.substr(0, cut)));
        host.Close();
        ASSERT_EQ(display.WaitForExit(kStartMs), 0) << cut;
    }
}

TEST_P(LinkTest, HostThatVanishesAtAnyMoment) {
    for (const uint32_t ms : {0u, 3u, 10u, 30u, 100u}) {
        DisplayProcess display(Program());
        auto host = display.Connect();
        host.Send(kCreate + kVerbose + kLoad);
        Sleep(ms);
        host.Close();
        ASSERT_EQ(display.WaitForExit(kEndMs), 0) << ms; // the splash does not delay it
    }
}

TEST_P(LinkTest, PayloadThatStopsHalfwayEndsTheLink) {
    DisplayProcess display(Program());
    const auto host = display.Connect();
    host.Send(kCreate + Encode(4, std::string(1000, 'x')).substr(0, 500));
    EXPECT_TRUE(host.WaitForClose(kStartMs));
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
}

TEST_P(LinkTest, AbsurdLengthsEndTheLinkAtOnce) {
    for (const char* length : {"\xFF\xFF\xFF\xFF", "\x01\x00\x00\x04"}) {
        DisplayProcess display(Program());
        const auto host = display.Connect();
        host.Send(kCreate + std::string("\4\0\0\0", 4) + std::string(length, 4) + "x");
        EXPECT_TRUE(host.WaitForClose(kStartMs));
        EXPECT_EQ(display.WaitForExit(kEndMs), 0);
    }
}

// ---- Slow and odd hosts that are served all the same

TEST_P(LinkTest, SingleBytesMakeASession) {
    DisplayProcess display(Program());
    const auto host = display.Connect();
    for (const char byte : kCreate + kVerbose + kLoad + Touch(1, 132, 232))
        ASSERT_TRUE(host.Send(std::string(1, byte)));
    EXPECT_TRUE(host.WaitForLog("RK CVrGuiApp::TouchEvent: 100/200 00000001 gesture 00000000", kReplyMs));
    for (const char byte : kEnd)
        ASSERT_TRUE(host.Send(std::string(1, byte)));
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
}

TEST_P(LinkTest, PausesWithinAHeaderLoseNothing) {
    DisplayProcess display(Program());
    const auto host = display.Connect();
    host.Send(kCreate + kVerbose + kLoad.substr(0, 3));
    Sleep(250);
    host.Send(kLoad.substr(3, 2));
    Sleep(150);
    host.Send(kLoad.substr(5) + Touch(1, 33, 0));
    EXPECT_TRUE(host.WaitForLog("1/-32 00000001", kReplyMs));
    host.Send(kEnd);
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
}

TEST_P(LinkTest, UnknownAndUntimelyCommandsAreIgnored) {
    DisplayProcess display(Program());
    const auto host = display.Connect();
    host.Send(kLoad + Touch(1, 50, 50) + Encode(0, "x") + Encode(11) + Encode(0x80000000, "y") +
              Encode(2, "abc") + Encode(5, "short"));
    host.Send(kCreate + kCreate + Encode(3, "one text only") + kVerbose + kLoad + kLoad + Encode(77, "z") +
              Encode(5, std::string(11, '\1')) + Touch(4, 42, 42));
    EXPECT_TRUE(host.WaitForLog("10/10 00000004", kReplyMs));
    host.Send(kEnd);
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
    EXPECT_NE(display.Errors().find(" handle_cmd 11\n"), std::string::npos);
    EXPECT_NE(display.Errors().find(" handle_cmd 0\n"), std::string::npos);
}

TEST_P(LinkTest, FramesAreWhole) {
    DisplayProcess display(Program());
    const auto host = display.Connect();
    host.Send(kCreate + kLoad);
    for (;;) {
        const auto message = host.ReceiveMessage(kReplyMs);
        ASSERT_TRUE(message);
        if (message->command != 102)
            continue;
        ASSERT_EQ(message->payload.size(), kFrameBytes);
        EXPECT_EQ(message->payload.substr(0, 3), "\x32\x32\x32"); // the border
        break;
    }
    host.Send(kEnd);
    EXPECT_EQ(display.WaitForExit(kEndMs + kLoadMs), 0);
}

TEST_P(LinkTest, HostThatDoesNotReadForAWhile) {
    DisplayProcess display(Program());
    const auto host = display.Connect();
    host.Send(kCreate + EncodeWords(2, {5}) + Encode(3, House("flood", "{}")));
    for (int i = 0; i < 150; i++) {
        ASSERT_TRUE(host.Send(Encode(8) + Touch(1 + i % 2 * 3, 100, 100)));
        Sleep(10);
    }
    // What comes now must still be cut at the right places, up to an answer to something new.
    ASSERT_TRUE(host.Send(Touch(1, 777, 32)));
    Sleep(200);
    EXPECT_TRUE(host.WaitForMessage(102, kReplyMs));
    bool isAnswered = false;
    for (int i = 0; i < 20 && !isAnswered; i++) {
        ASSERT_TRUE(host.Send(Touch(1, 700, 700)));
        isAnswered = host.WaitForLog("668/668", 1000);
    }
    EXPECT_TRUE(isAnswered);
    host.Send(kEnd);
    EXPECT_TRUE(host.WaitForClose(kReplyMs));
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
}

TEST_P(LinkTest, HostThatNeverReadsAndVanishes) {
    DisplayProcess display(Program());
    auto host = display.Connect();
    host.Send(kCreate + EncodeWords(2, {5}) + Encode(3, House("flood", "{}")));
    for (int i = 0; i < 50; i++) {
        host.Send(Encode(8));
        Sleep(10);
    }
    host.Close();
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
}

TEST_P(LinkTest, SignalWhileTheHostDoesNotRead) {
    DisplayProcess display(Program());
    const auto host = display.Connect();
    host.Send(kCreate + EncodeWords(2, {5}) + Encode(3, House("flood", "{}")));
    Sleep(kLoadMs);
    display.Signal(SIGTERM);
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
}

TEST_P(LinkTest, RemarksThatNobodyReadsBlockNothing) {
    DisplayProcess::Options options;
    options.readsErrors = false;
    DisplayProcess display(Program(), options);
    const auto host = display.Connect();
    host.Send(kCreate + kVerbose);
    std::string many;
    for (int i = 0; i < 8000; i++) // far more lines than a pipe holds
        many += Encode(11);
    ASSERT_TRUE(host.Send(many + kLoad + Touch(1, 40, 41)));
    EXPECT_TRUE(host.WaitForLog("8/9 00000001", kReplyMs));
    host.Send(kEnd);
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
}

TEST_P(LinkTest, RemarksDoNotGoIntoTheStreamWhenStandardErrorIsClosed) {
    DisplayProcess::Options options;
    options.hasStandardStreams = false;
    DisplayProcess display(Program(), options);
    const auto host = display.Connect();
    host.Send(Encode(11) + Encode(11) + kCreate + kVerbose + kLoad + Touch(1, 40, 40));
    EXPECT_TRUE(host.WaitForLog("8/8 00000001", kReplyMs)); // which throws if the framing is lost
    host.Send(kEnd);
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
}

TEST_P(LinkTest, SecondHostIsTurnedAway) {
    DisplayProcess display(Program());
    const auto host = display.Connect();
    host.Send(kCreate + kVerbose);
    const HostConnection second(display.SocketPath());
    ASSERT_TRUE(second.IsOpen());
    EXPECT_TRUE(second.WaitForClose(kReplyMs));
    host.Send(kLoad + Touch(1, 40, 40));
    EXPECT_TRUE(host.WaitForLog("8/8 00000001", kReplyMs));
    host.Send(kEnd);
    EXPECT_EQ(display.WaitForExit(kEndMs), 0);
}

namespace {

const char* const kPrograms[] = {
#ifdef WALLSLATE
    WALLSLATE,
#endif
    LINK_DOUBLE};

std::string ProgramName(const ::testing::TestParamInfo<const char*>& info) {
    return fs::path(info.param).filename() == "wallslate" ? "Display" : "Double";
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Programs, LinkTest, ::testing::ValuesIn(kPrograms), ProgramName);
