// The host with the real display: scripts that work the small houses of tests/houses through the whole way
// from finger to text command. CMake leaves this out where the display is not built.
#include "host_run.h"

#include <algorithm>

namespace {

using namespace desktop_test;

class RealDisplay : public ::testing::Test {
protected:
    // Runs the script on a house of tests/houses; its pictures are read with Shot().
    RunResult Run(const std::string& house, const std::string& script, const std::string& more = "-q") const {
        WriteText(folder.Path() / "script", script);
        return RunShell(BinaryPath("wallslate-host").string() + " " + more + " --script " +
                        (folder.Path() / "script").string() + " --out " + folder.Path().string() + " " +
                        (std::filesystem::path(WALLSLATE_SOURCE_DIR) / "tests/houses" / house).string());
    }
    void Passes(const std::string& house, const std::string& script) const {
        const RunResult run = Run(house, script);
        EXPECT_EQ(run.exitCode, 0) << house << ": " << run.err;
    }
    Png Shot(const std::string& name) const { return ReadPng(folder.Path() / (name + ".png")); }

    desktop::TempFolder folder;
};

// The part of a frame that lies in the rectangle of screen pixels.
std::vector<unsigned> Part(const Png& png, unsigned left, unsigned top, unsigned width, unsigned height) {
    std::vector<unsigned> pixels;
    for (unsigned y = top; y < top + height; ++y)
        for (unsigned x = left; x < left + width; ++x)
            pixels.push_back(png.At(x + 32, y + 32));
    return pixels;
}

std::vector<unsigned> MenuRow(const Png& png) {
    return Part(png, 0, 0, 720, 105);
}
std::vector<unsigned> Page(const Png& png) {
    return Part(png, 0, 120, 720, 600);
}
bool IsFlat(const std::vector<unsigned>& pixels) {
    return std::all_of(pixels.begin(), pixels.end(), [&](unsigned pixel) { return pixel == pixels.front(); });
}

TEST_F(RealDisplay, ASwitchGoesOnAndOffAndShowsIt) {
    Passes("one-switch",
           "shot off\ntap 360 360\nexpect {\"U\":101,\"E\":0,\"T\":2,\"V\":1.0}\nsettle\nshot on\n"
           "tap 360 360\nexpect {\"U\":101,\"E\":1,\"T\":2,\"V\":1.0}\nsettle\nshot off-again\n");
    EXPECT_NE(Shot("off").rgb, Shot("on").rgb);
    EXPECT_EQ(Shot("off").rgb, Shot("off-again").rgb);
}

TEST_F(RealDisplay, APushButtonSendsAtTheTouchAndStaysPressedUntilItsEnd) {
    Passes(
        "switches-1-to-4",
        "tap 240 50\nsettle\nshot idle\ndown 360 415\n"
        "expect {\"U\":102,\"E\":0,\"T\":2,\"V\":1.0}\nsettle\nshot held\nup 360 415\nsettle\nshot after\n");
    EXPECT_NE(Shot("idle").rgb, Shot("held").rgb);
    EXPECT_EQ(Shot("idle").rgb, Shot("after").rgb);
    const RunResult run = Run("switches-1-to-4", "tap 240 50\ntap 360 415\nsettle\n");
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1) << "nothing at the release: " << run.out;
}

TEST_F(RealDisplay, AMenuButtonChangesThePageAndSendsNothing) {
    const RunResult run = Run(
        "six-pages", "settle\nshot first\ntap 210 50\nsettle\nshot second\ntap 70 50\nsettle\nshot back\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_NE(MenuRow(Shot("first")), MenuRow(Shot("second")));
    EXPECT_NE(Page(Shot("first")), Page(Shot("second"))) << "the names differ";
    EXPECT_EQ(Shot("first").rgb, Shot("back").rgb);
}

TEST_F(RealDisplay, ADragBringsTheHiddenMenuButtons) {
    Passes("twelve-pages", "settle\nshot first\ndrag 600 50 60 50 400\nsettle\nshot dragged\n");
    EXPECT_NE(MenuRow(Shot("first")), MenuRow(Shot("dragged")));
    EXPECT_EQ(Page(Shot("first")), Page(Shot("dragged"))) << "a drag is no tap";
}

TEST_F(RealDisplay, AHouseWithOnePageNeedsNoMenuRow) {
    Passes("one-switch", "settle\nshot one\n");
    Passes("six-pages", "settle\nshot six\n");
    // the page begins above where the menu row of the other house ends
    EXPECT_NE(Shot("one").At(32 + 360, 32 + 60), Shot("six").At(32 + 360, 32 + 105));
    EXPECT_EQ(Shot("one").At(32 + 360, 32 + 60), Shot("six").At(32 + 360, 32 + 130));
}

TEST_F(RealDisplay, AnEmptyHouseSaysSo) {
    const RunResult run = Run("empty", "settle\nshot empty\ntap 360 360\nsettle\nshot tapped\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_FALSE(IsFlat(Part(Shot("empty"), 100, 250, 520, 220))) << "there are words in the middle";
    EXPECT_EQ(Shot("empty").rgb, Shot("tapped").rgb);
}

// In each broken house the first entry (101) and the last one (199) are sound, so what lies between them
// decides how many menu buttons there are.
TEST_F(RealDisplay, WhatIsSoundInABrokenHouseStillWorks) {
    const std::string first = "tap 360 415\nexpect {\"U\":101,\"E\":0,\"T\":2,\"V\":1.0}\n";
    const std::string last = "tap 360 415\nexpect {\"U\":199,\"E\":0,\"T\":2,\"V\":1.0}\n";
    for (const char* house : {"unknown-type", "type-is-string", "no-uuid", "uuid-is-list", "name-is-number",
                              "room-is-string", "sub-is-object", "moods-are-object", "member-is-no-object"})
        Passes(std::string("broken/") + house, first + "tap 540 50\nsettle\n" + last); // two buttons
    for (const char* house :
         {"uuid-zero", "uuid-zz", "nothing-but-type", "group-sub-is-string", "deeper-member-fails",
          "categories-unparsable", "unknown-numbers", "small-slips"}) {
        const RunResult run =
            Run(std::string("broken/") + house, first + "tap 600 50\nsettle\n" + last); // three
        const bool refused = std::string(house) == "categories-unparsable";
        EXPECT_EQ(run.exitCode, refused ? 1 : 0) << house << ": " << run.err;
    }
}

TEST_F(RealDisplay, ASecondDefaultScreenIsNamedInTheLog) {
    const RunResult run = Run("broken/two-default-screens", "settle\n", "--log-level 2");
    EXPECT_NE(run.out.find("Ignoring duplicate default screen marker U=67"), std::string::npos) << run.out;
}

TEST_F(RealDisplay, ASecondLoadChangesNothing) {
    const RunResult run = Run("one-switch", "raw 3 5b5d005b5d005b5d005b00\nsettle\ntap 360 360\n"
                                            "expect {\"U\":101,\"E\":0,\"T\":2,\"V\":1.0}\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
}

TEST_F(RealDisplay, TheDemonstrationHouseLoadsWithoutAnErrorInTheLog) {
    const RunResult run = RunShell(BinaryPath("wallslate-host").string() + " --log-level 1 --shot " +
                                   (folder.Path() / "demo.png").string());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out.find("LoadButtonFile"), std::string::npos)
        << "every symbol is in the archive: " << run.out;
    EXPECT_FALSE(IsFlat(MenuRow(Shot("demo"))));
}

} // namespace
