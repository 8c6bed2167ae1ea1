#include "archive_writer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

#include "foundation/archive.h"
#include "icon_set.h"

using namespace iconpack;
namespace fs = std::filesystem;

namespace {

// A folder for one test.
class TempFolder {
public:
    TempFolder()
        : m_path(fs::path(testing::TempDir()) / ("iconpack." + std::to_string(std::random_device{}()))) {
        fs::create_directories(m_path);
    }
    ~TempFolder() { fs::remove_all(m_path); }
    fs::path Write(const std::string& name, const std::string& text) const {
        std::ofstream(m_path / name) << text;
        return m_path / name;
    }
    const fs::path& Path() const { return m_path; }

private:
    fs::path m_path;
};

} // namespace

TEST(ArchiveWriterTest, EveryTextComesBackSortedByName) {
    std::mt19937 random(3);
    std::string noise;
    for (int i = 0; i < 100; i++)
        noise += static_cast<char>(random());
    Texts texts = {{"b.svg", std::string(300, 'b')}, {"B.svg", noise}, {"a-1.svg", ""}, {"a.svg", noise}};
    PackReport report;
    std::vector<uint8_t> bytes = WriteArchive(texts, report);
    EXPECT_EQ(report.names, 4u);
    EXPECT_EQ(report.blocks, 3u);
    EXPECT_EQ(report.archive, bytes.size());

    CVrArchive archive;
    ASSERT_TRUE(archive.Open(bytes.data(), static_cast<uint32_t>(bytes.size())));
    for (uint32_t i = 1; i < archive.GetCount(); i++)
        EXPECT_LT(strcmp(archive.GetRecord(i - 1).name, archive.GetRecord(i).name), 0);
    for (const auto& [name, text] : texts) {
        CVrArchiveFile file = archive.GetFile(name.c_str());
        ASSERT_NE(file.data, nullptr) << name;
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(file.data), file.size), text);
        EXPECT_EQ(file.data[file.size], 0);
        archive.ReleaseFile(file);
    }
}

TEST(ArchiveWriterTest, WhatDoesNotFitTheFormatIsRefused) {
    PackReport report;
    EXPECT_THROW(WriteArchive({}, report), std::runtime_error);
    EXPECT_THROW(WriteArchive({{std::string(64, 'n'), "text"}}, report), std::runtime_error);
    EXPECT_NO_THROW(WriteArchive({{std::string(63, 'n'), "text"}}, report));
}

TEST(IconSetTest, NamesAliasesAndFoldersInTheirOrder) {
    TempFolder first;
    TempFolder second;
    first.Write("a.svg", "first a");
    second.Write("a.svg", "second a");
    second.Write("b.svg", "b");
    second.Write("c.svg", "c");
    IconSet set{{first.Path(), second.Path()},
                first.Write("names", "# all but c\na.svg\n\nb.svg\n"),
                first.Write("aliases", R"({"8-ball.svg": "b.svg", "other.svg": "c.svg"})"),
                true};
    EXPECT_EQ(GatherTexts(set),
              (Texts{{"8-ball.svg", "b"}, {"a.svg", "first a"}, {"b.svg", "b"}, {"other.svg", "c"}}));
    set.names.clear();
    EXPECT_EQ(GatherTexts(set).size(), 5u);

    for (const char* aliases :
         {R"({"x.svg": "missing.svg"})", R"({"a.svg": "b.svg"})", "{", R"({"x.svg": 1})"}) {
        set.aliases = first.Write("aliases", aliases);
        EXPECT_THROW(GatherTexts(set), std::runtime_error) << aliases;
    }
    set.aliases.clear();
    set.names = first.Write("names", "a.svg\na.svg\n");
    EXPECT_THROW(GatherTexts(set), std::runtime_error);
    set.names = first.Path() / "none";
    EXPECT_THROW(GatherTexts(set), std::runtime_error);
}
