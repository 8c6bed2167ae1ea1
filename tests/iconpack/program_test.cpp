// The program iconpack as a user calls it: results, exit codes and messages.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "icon_set.h"

using namespace iconpack;
namespace fs = std::filesystem;

namespace {

struct Outcome {
    int exitCode = -1;
    std::string output; // standard output and error
};

class ProgramTest : public testing::Test {
protected:
    void SetUp() override {
        m_folder = fs::path(testing::TempDir()) / ("iconpack_program." + std::to_string(getpid()));
        fs::create_directories(m_folder / "in");
        Write("in/line.svg", kLine);
        Write("in/dot.svg", "<svg stroke-width='2'><circle r='1'/></svg>");
    }
    void TearDown() override { fs::remove_all(m_folder); }

    void Write(const std::string& name, const std::string& text) { std::ofstream(m_folder / name) << text; }

    // Runs iconpack in the folder.
    Outcome Run(const std::string& arguments) const {
        std::string command =
            "cd '" + m_folder.string() + "' && '" WALLSLATE_ICONPACK "' " + arguments + " 2>&1";
        Outcome outcome;
        FILE* pipe = popen(command.c_str(), "r");
        std::array<char, 4096> buffer;
        for (size_t count; (count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
            outcome.output.append(buffer.data(), count);
        int status = pclose(pipe);
        outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return outcome;
    }

    const std::string kLine = "<svg>\n<path d=\"M1 2h3\"/>\n</svg>\n";
    fs::path m_folder;
};

} // namespace

TEST_F(ProgramTest, PacksListsAndExtracts) {
    EXPECT_EQ(Run("pack out.bin in --raw").exitCode, 0);
    Outcome list = Run("list out.bin");
    EXPECT_EQ(list.exitCode, 0);
    EXPECT_NE(list.output.find("names 2 "), std::string::npos) << list.output;
    EXPECT_LT(list.output.find("dot.svg"), list.output.find("line.svg"));
    EXPECT_EQ(Run("get out.bin line.svg").output, kLine);
    EXPECT_EQ(Run("get out.bin --all -o all").exitCode, 0);
    EXPECT_EQ(ReadFile(m_folder / "all/line.svg"), kLine);
    EXPECT_EQ(ReadFile(m_folder / "all/dot.svg"), ReadFile(m_folder / "in/dot.svg"));
}

TEST_F(ProgramTest, FaultsEndWithOneLineAndCode1) {
    ASSERT_EQ(Run("pack out.bin in").exitCode, 0);
    std::string good = ReadFile(m_folder / "out.bin");
    Write("text", "no archive at all");
    Write("in/bad.svg", "<svg><path d=\"M1\"/></svg>");
    const std::pair<const char*, const char*> cases[] = {
        {"get out.bin none.svg", "none.svg"},
        {"get out.bin", "NAME"},
        {"list text", "no icon archive"},
        {"list missing", "missing"},
        {"pack out.bin in", "bad.svg"},
        {"pack out.bin in --raw --limit 100", "larger than 100"},
        {"pack nowhere/out.bin in --raw", "nowhere"},
    };
    for (auto [arguments, text] : cases) {
        Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.exitCode, 1) << arguments;
        EXPECT_NE(outcome.output.find(text), std::string::npos) << outcome.output;
    }
    EXPECT_NE(Run("").exitCode, 0);
    EXPECT_EQ(ReadFile(m_folder / "out.bin"), good) << "a failure leaves the old archive";
}

TEST_F(ProgramTest, ADamagedArchiveGivesWhatIsSound) {
    ASSERT_EQ(Run("pack out.bin in").exitCode, 0);
    std::string bytes = ReadFile(m_folder / "out.bin");
    bytes[8 + 64 + 3] = '\xFF'; // the offset of dot.svg
    Write("out.bin", bytes);
    Outcome damaged = Run("get out.bin dot.svg");
    EXPECT_EQ(damaged.exitCode, 1);
    EXPECT_NE(damaged.output.find("damaged"), std::string::npos);
    EXPECT_EQ(Run("get out.bin line.svg").exitCode, 0);
}
