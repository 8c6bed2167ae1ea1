// The checker against the houses of tests/houses, and against what no small house can hold.
#include "desktop/house_check.h"

#include "host_run.h"

#include <chrono>

namespace {

using namespace desktop;
using namespace desktop_test;

std::filesystem::path HousesFolder() {
    return std::filesystem::path(WALLSLATE_SOURCE_DIR) / "tests/houses";
}

std::string Findings(const House& house) {
    std::string text;
    for (const Finding& finding : CheckHouse(house).findings)
        text += FormatFinding(finding, "") + "\n";
    return text;
}

House HouseOf(const std::string& structure) {
    House house;
    house.texts = {"[]", "[]", "[]", structure};
    return house;
}

TEST(HouseCheck, EveryTestHouseIsJudgedAsItsCheckFileSays) {
    int houses = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(HousesFolder())) {
        if (entry.path().filename() != "structure.json")
            continue;
        const auto folder = entry.path().parent_path();
        EXPECT_EQ(Findings(ReadHouse(folder)), ReadText(folder / "check.txt")) << folder;
        ++houses;
    }
    EXPECT_GT(houses, 25);
}

TEST(HouseCheck, TheDemonstrationHouseIsWithoutFault) {
    EXPECT_EQ(Findings(ReadHouse(std::filesystem::path(WALLSLATE_SOURCE_DIR) / "demo")), "");
}

TEST(HouseCheck, TheProgramTellsErrorsFromWarnings) {
    const auto run = [](const char* house) {
        return RunShell(BinaryPath("wallslate-host").string() + " --check " +
                        (HousesFolder() / house).string());
    };
    EXPECT_EQ(run("one-switch").exitCode, 0);
    EXPECT_EQ(run("broken/uuid-twice").exitCode, 0) << "warnings alone are no failure";
    const RunResult broken = run("broken/type-is-string");
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_NE(broken.out.find("type-is-string/structure.json:3:9: error: [1].T: is a string"),
              std::string::npos);
    EXPECT_NE(broken.out.find(": 1 error, 0 warnings\n"), std::string::npos);
    EXPECT_EQ(run("no-such-house").exitCode, 1);
}

TEST(HouseCheck, UuidsAreComparedAsTheDisplayReadsThem) {
    const std::string same =
        Findings(HouseOf("[{\"T\":342,\"U\":4779,\"N\":\"a\"},{\"T\":342,\"U\":\"0012ab\",\"N\":\"b\"}]"));
    EXPECT_NE(same.find("[1].U: the item [0] has the same"), std::string::npos) << same;
    EXPECT_EQ(Findings(HouseOf(
                  "[{\"T\":342,\"U\":\"FFFFFFFF\",\"N\":\"a\"},{\"T\":342,\"U\":4294967294,\"N\":\"b\"}]")),
              "");
    EXPECT_NE(
        Findings(HouseOf("[{\"T\":342,\"U\":4294967296,\"N\":\"a\"}]")).find("does not fit into 32 bits"),
        std::string::npos);
}

TEST(HouseCheck, AbsurdHousesAreJudgedQuicklyAndWithBoundedOutput) {
    const auto start = std::chrono::steady_clock::now();
    std::string deep, closing;
    for (int i = 0; i < 20'000; ++i)
        deep += "{\"U\":7,\"N\":\"g\",\"sub\":[", closing += "]}";
    CheckResult result = CheckHouse(HouseOf("[" + deep + closing + "]"));
    EXPECT_EQ(result.warnings, 20'001u); // 19,999 times the same number, too deep once, one empty group
    EXPECT_EQ(result.findings.size(), 1000u);
    EXPECT_NE(Summary(result).find("the first 1000 are shown"), std::string::npos);

    std::string wide = "[{\"N\":\"g\",\"sub\":[";
    for (int i = 1; i < 20'000; ++i)
        wide += (i > 1 ? "," : "") + std::string("{\"T\":342,\"N\":\"s\",\"U\":") + std::to_string(i) + "}";
    result = CheckHouse(HouseOf(wide + "]}]"));
    EXPECT_EQ(result.warnings, 1u) << "more members than tiles can be told apart";
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

} // namespace
