// wallslate-host as a program: its options, a whole headless run, and every way in which a display can fail
// it.
#include "host_run.h"

#include "desktop/fault.h"
#include "desktop/headless.h"

#include <csignal>

namespace {

using namespace desktop_test;
using namespace desktop;
using namespace std::chrono_literals;

class HostProgram : public ::testing::Test {
protected:
    void SetUp() override {
        ::unsetenv("FAKE_DISPLAY");
        ::setenv("FAKE_PID_FILE", PidFile().c_str(), 1);
        WriteEmptyHouse(House());
    }

    std::filesystem::path House() const { return folder.Path() / "house"; }
    std::filesystem::path PidFile() const { return folder.Path() / "pid"; }
    std::filesystem::path File(const char* name) const { return folder.Path() / name; }

    // With the fake display and the empty house.
    RunResult Run(const std::string& arguments) const {
        return RunPlain("--display " + BinaryPath("fake_display").string() + " " + arguments + " " +
                        House().string());
    }
    static RunResult RunPlain(const std::string& arguments) {
        return RunShell(BinaryPath("wallslate-host").string() + " " + arguments);
    }

    bool DisplayIsGone() const {
        const std::string text = ReadText(PidFile());
        return !text.empty() && ::kill(std::stoi(text), 0) != 0 && errno == ESRCH;
    }

    // The text of the fault of a run in this process, with little patience.
    std::string FaultWith(const char* fault) const {
        ::setenv("FAKE_DISPLAY", fault, 1);
        HeadlessOptions options;
        options.display.program = BinaryPath("fake_display");
        options.display.patience = {1000ms, 400ms, 600ms, 600ms};
        options.quiet = true;
        try {
            desktop::House house = ReadHouse(House());
            house.Text(HouseFile::Structure) =
                "[" + std::string(1 << 20, ' ') + "]"; // more than a socket swallows
            RunHeadless(house, options);
        } catch (const Fault& problem) {
            return problem.what();
        }
        return "";
    }

    TempFolder folder;
};

TEST_F(HostProgram, ShotIsTheLastWholeFrameWithoutItsAlpha) {
    const RunResult run = Run("-q --shot " + File("a.png").string());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const Png png = ReadPng(File("a.png"));
    ASSERT_EQ(png.width, 784u);
    ASSERT_EQ(png.height, 784u);
    EXPECT_EQ(png.At(31, 32), 0x323232u);
    EXPECT_EQ(png.At(32, 32), 0x808010u) << "the byte order on the wire is blue, green, red";
    EXPECT_EQ(png.At(751, 751), 0x808080u);
    EXPECT_EQ(png.At(752, 751), 0x323232u);
    EXPECT_TRUE(DisplayIsGone());
}

TEST_F(HostProgram, ShotToStandardOutputIsNothingButThePicture) {
    const RunResult run = Run("--shot -");
    EXPECT_EQ(run.exitCode, 0);
    WriteText(File("b.png"), run.out);
    EXPECT_EQ(ReadPng(File("b.png")).width, 784u);
    EXPECT_NE(run.err.find("log 1ms RK Fake::Load"), std::string::npos);
}

TEST_F(HostProgram, AScriptDrivesTheDisplay) {
    WriteText(File("s"), "tap 10 20\n"
                         "expect {\"at\":[42,52]}\n"
                         "settle\n"
                         "shot one\n"
                         "tap 719 0\n"
                         "shot two\n"
                         "night 1\nruntime {\"color\": 1}\nrest\nlog-level 3\n");
    const RunResult run = Run("--script " + File("s").string() + " --out " + File("pictures").string());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(ReadPng(File("pictures") / "one.png").At(400, 400), 0x818181u);
    EXPECT_EQ(ReadPng(File("pictures") / "two.png").At(400, 400), 0x828282u);
    EXPECT_NE(run.out.find("command {\"at\":[751,32]}\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("log 3ms RK Fake::Message: 9 with 4 bytes"), std::string::npos);
    EXPECT_NE(run.out.find("10 with 13 bytes {\"color\": 1}"), std::string::npos);
}

TEST_F(HostProgram, QuietRunsStillPrintTheirTextCommands) {
    WriteText(File("s"), "tap 0 0\n");
    const RunResult run = Run("-q --script - <" + File("s").string());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "command {\"at\":[32,32]}\n");
    EXPECT_EQ(run.err, "");
}

TEST_F(HostProgram, TheUsersSettingsAreLeftAlone) {
    EXPECT_NE(Run("--shot " + File("a.png").string()).out.find("its own folder"), std::string::npos);
    const RunResult run =
        Run("--state-dir " + File("new/state").string() + " --shot " + File("a.png").string());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(std::filesystem::is_directory(File("new/state")));
}

TEST_F(HostProgram, WhatIsWrongWithTheCallIsSaidInOneLine) {
    WriteText(File("bad-script"), "wait 1\n\ntap 900 1\n");
    WriteText(File("late-fault"), "wait 1\nexpect {\"U\":1}\n");
    WriteText(File("shots"), "shot a\n");
    const std::pair<std::string, std::string> cases[] = {
        {"--check --shot a.png", "--check looks at the files only"},
        {"--listen 127.0.0.1:1 --shot a.png", "--shot is headless"},
        {"--out d --shot a.png", "--out is for the shots"},
        {"--log-level x --shot a.png", "x"},
        {"--log-level 77 --shot a.png", "77"},
        {"--no-such-option", "--no-such-option"},
        {"--script " + File("none").string(), "none: no such script"},
        {"--script " + File("bad-script").string(), "bad-script:3: tap 900 is not within 0 to 719"},
        {"--script " + File("late-fault").string(), "late-fault:2: expect: no text command came"},
        {"--script " + File("shots").string(), "--out DIR says where they go"},
        {"--shot " + File("no-folder/a.png").string(), "cannot be written"},
    };
    for (const auto& [arguments, message] : cases) {
        const RunResult run = Run(arguments);
        EXPECT_EQ(run.exitCode, 1) << arguments;
        EXPECT_NE(run.err.find(message), std::string::npos) << arguments << ": " << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_EQ(run.out.find("command"), std::string::npos);
    }
}

TEST_F(HostProgram, AHouseThatCannotBeReadIsRefusedWithItsPlace) {
    WriteText(House() / "structure.json", "[\n  {\"T\": 342,\n   \"U\" 1}\n]\n");
    RunResult run = Run("--shot a.png");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("structure.json:3:8: a colon is missing behind the key"), std::string::npos)
        << run.err;
    std::filesystem::remove(House() / "rooms.json");
    run = Run("--shot a.png");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("rooms.json: no such file"), std::string::npos) << run.err;
}

TEST_F(HostProgram, HelpAndVersionNeedNoHouse) {
    EXPECT_EQ(RunPlain("--version").out.substr(0, 15), "wallslate-host ");
    const RunResult help = RunPlain("--help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("--script"), std::string::npos);
}

TEST_F(HostProgram, ADisplayThatFailsIsReportedAndNeverLeftRunning) {
    const std::pair<const char*, const char*> cases[] = {
        {"exit-at-start",
         "the display ended before the host could connect with exit code 5: nobody connected in time"},
        {"no-socket", "the display does not open its socket"},
        {"deaf", "the display does not read its commands"},
        {"mute", "the display does not answer: no picture came within 600 ms"},
        {"exit-on-load", "the display ended unexpectedly with exit code 9"},
        {"crash-on-load",
         "the display ended unexpectedly with signal 9 (Killed); its last words were:\nthe roof"},
        {"cut-frame", "the display ended unexpectedly with exit code 0"},
        {"nonsense", "the display closed the link but did not end; it was stopped"},
        {"vanish", "the display closed the link but did not end; it was stopped"},
        {"bad-exit", "the display ended badly with exit code 7"},
        {"undying", "the display does not end when told to; it was stopped"},
    };
    for (const auto& [fault, message] : cases) {
        std::filesystem::remove(PidFile());
        EXPECT_EQ(FaultWith(fault).substr(0, std::string(message).size()), message) << fault;
        EXPECT_TRUE(DisplayIsGone()) << fault;
    }
}

TEST_F(HostProgram, AMissingDisplayProgramIsNamed) {
    const RunResult run = RunPlain("--display /no/such/display --shot a.png " + House().string());
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("/no/such/display cannot be started: No such file"), std::string::npos) << run.err;
}

TEST_F(HostProgram, TheHostInTwentyLinesOfTheProtocolPageWorks) {
    if (RunShell("python3 --version").exitCode != 0)
        GTEST_SKIP() << "no python3 here";
    const std::string page = ReadText(std::filesystem::path(WALLSLATE_SOURCE_DIR) / "docs/protocol.md");
    const std::string fence = "```python\n";
    const std::size_t start = page.find(fence) + fence.size();
    WriteText(File("host.py"), page.substr(start, page.find("```", start) - start));
    const RunResult run =
        RunShell("cd " + folder.Path().string() + " && TMPDIR=. timeout 20 python3 host.py " +
                 BinaryPath("fake_display").string() + " " + House().string());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("{\"at\":[392,392]}"), std::string::npos) << run.out;
    EXPECT_EQ(std::filesystem::file_size(File("screen.ppm")), 15 + 3u * 784 * 784);
    EXPECT_TRUE(DisplayIsGone());
}

TEST_F(HostProgram, ASignalEndsHostAndDisplay) {
    WriteText(File("s"), "wait 60000\n");
    const RunResult run = RunShell(
        "timeout --preserve-status -s TERM 0.7 " + BinaryPath("wallslate-host").string() + " --display " +
        BinaryPath("fake_display").string() + " --script " + File("s").string() + " " + House().string());
    EXPECT_EQ(run.exitCode, 128 + SIGTERM);
    EXPECT_NE(run.err.find("stopped by a signal"), std::string::npos);
    EXPECT_TRUE(DisplayIsGone());
}

} // namespace
