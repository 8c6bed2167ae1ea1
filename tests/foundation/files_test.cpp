#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "foundation/files.h"
#include "support/log_capture.h"

namespace fs = std::filesystem;

namespace {

// A folder of its own for each test, and as the state folder.
class FilesTest : public ::testing::Test {
protected:
    FilesTest() {
        std::string pattern = (fs::temp_directory_path() / "wallslate-files-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        setenv("WALLSLATE_STATE_DIR", (folder / "state/deep").c_str(), 1);
    }
    ~FilesTest() override {
        unsetenv("WALLSLATE_STATE_DIR");
        fs::remove_all(folder);
    }
    std::string Write(const char* name, const std::string& content) {
        std::ofstream(folder / name, std::ios::binary) << content;
        return (folder / name).string();
    }

    fs::path folder;
    LogCapture log;
};

} // namespace

TEST_F(FilesTest, LoadsAllBytesOfAFile) {
    const std::string content("a\0b\n\xFF", 5);
    const std::string path = Write("file", content);
    CVrxStringU text("former");
    EXPECT_TRUE(LoadStringFromFile(path.c_str(), text));
    EXPECT_EQ(text.View(), content);
    CVrxByteArray bytes;
    EXPECT_TRUE(LoadArrayFromFile(path.c_str(), bytes));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), content);
    EXPECT_TRUE(log.All().empty());
}

TEST_F(FilesTest, MissingAndEmptyFilesAreLoggedAndLeaveNothing) {
    CVrxStringU text("former");
    EXPECT_FALSE(LoadStringFromFile("/nowhere/file", text));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(log.Has("RK LoadStringFromFile: Open error /nowhere/file"));

    CVrxByteArray bytes("x", 1);
    const std::string empty = Write("empty", "");
    EXPECT_FALSE(LoadArrayFromFile(empty.c_str(), bytes));
    EXPECT_TRUE(bytes.IsEmpty());
    EXPECT_TRUE(log.Has("RK LoadArrayFromFile: Read error " + empty));
}

TEST_F(FilesTest, FoldersAndPipesAreRefusedWithoutWaiting) {
    CVrxStringU text;
    EXPECT_FALSE(LoadStringFromFile(folder.c_str(), text));
    const std::string fifo = (folder / "fifo").string();
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(LoadStringFromFile(fifo.c_str(), text));
    EXPECT_EQ(log.Count("Read error"), 2u);
}

TEST_F(FilesTest, SettingsAreReplacedAsAWhole) {
    EXPECT_TRUE(SaveSettingsFile(std::string(100000, 'x').c_str())); // makes the missing folders
    EXPECT_TRUE(SaveSettingsFile("{\"a\":1}"));
    CVrxStringU text;
    EXPECT_TRUE(LoadStringFromFile(GetSettingsFilePath().CStr(), text));
    EXPECT_EQ(text, "{\"a\":1}");
    const auto entries = std::distance(fs::directory_iterator(folder / "state/deep"), {});
    EXPECT_EQ(entries, 1); // no temporary file is left
}

TEST_F(FilesTest, SettingsThatCannotBeWrittenLeaveTheOldFile) {
    const std::string blocker = Write("blocker", "x");
    setenv("WALLSLATE_STATE_DIR", blocker.c_str(), 1); // a file where the folder should be
    EXPECT_FALSE(SaveSettingsFile("text"));
    setenv("WALLSLATE_STATE_DIR", (folder / "state").c_str(), 1);
    fs::create_directories(folder / "state/settings.json/full"); // a folder where the file should be
    EXPECT_FALSE(SaveSettingsFile("text"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "state"), {}), 1);
}

TEST(PlacesTest, StateFolderFollowsTheEnvironment) {
    setenv("HOME", "/home/someone", 1);
    unsetenv("WALLSLATE_STATE_DIR");
    unsetenv("XDG_STATE_HOME");
    EXPECT_EQ(GetSettingsFilePath(), "/home/someone/.local/state/wallslate/settings.json");
    setenv("XDG_STATE_HOME", "/state", 1);
    EXPECT_EQ(GetSettingsFilePath(), "/state/wallslate/settings.json");
    setenv("WALLSLATE_STATE_DIR", "/chosen", 1);
    EXPECT_EQ(GetSettingsFilePath(), "/chosen/settings.json");
    setenv("WALLSLATE_DATA_DIR", "/data", 1);
    EXPECT_EQ(GetDataFilePath("translations/lang_ENG.json"), "/data/translations/lang_ENG.json");
    unsetenv("WALLSLATE_DATA_DIR");
    EXPECT_TRUE(fs::path(GetDataFilePath("x").CStr()).is_absolute());
    unsetenv("WALLSLATE_STATE_DIR");
    unsetenv("XDG_STATE_HOME");
}

TEST(ResourcesTest, UnknownNumbersGiveNothing) {
    CVrxByteArray array("x", 1);
    EXPECT_FALSE(LoadResourceData(1, array));
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_FALSE(LoadResourceData(0, array)); // the row that ends the table
}

TEST(ResourcesTest, EmbeddedBytesAreThoseOfTheFile) {
    const fs::path path = fs::path(WALLSLATE_SOURCE_DIR) / "resources/style.json";
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    CVrxByteArray array;
    ASSERT_TRUE(LoadResourceData(ResourceStyleSheet, array));
    EXPECT_EQ(std::string(array.begin(), array.end()), content);
}

// Every resource that the program relies on, by what its first bytes must be.
TEST(ResourcesTest, AllThatTheProgramCarriesIsThere) {
    struct Case {
        uint32_t id;
        std::string start;
    };
    const Case cases[] = {
        {ResourceStyleSheet, "{"},
        {ResourceStaticSymbols, ""},
        {ResourceDefaultCover, "\xFF\xD8\xFF"},
        {ResourceFontRegular, std::string("\0\1\0\0", 4)},
        {ResourceFontBold, std::string("\0\1\0\0", 4)},
        {ResourceDynamicIcons, ""},
        {ResourceStaticIcons, ""},
    };
    for (const Case& c : cases) {
        uint32_t size = 0;
        const uint8_t* bytes = GetResource(c.id, size);
        ASSERT_TRUE(bytes) << c.id;
        ASSERT_GT(size, 1000u) << c.id;
        EXPECT_EQ(std::string(bytes, bytes + c.start.size()), c.start) << c.id;
        EXPECT_EQ(bytes[size], 0) << c.id; // a terminator follows
    }
}
