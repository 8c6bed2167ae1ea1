// Both stores of symbols, on archives made here, and the system's own symbols as the program carries them.
#include "foundation/archive.h"

#include <gtest/gtest.h>

#include <cstring>

#include "foundation/stream_text.h"
#include "support/log_capture.h"

using stream_text::Stream;

namespace {

struct Entry {
    std::string name;
    std::vector<uint8_t> block;
    uint32_t originalSize;
};

Entry Plain(const std::string& name, const std::string& text) {
    return {name, {text.begin(), text.end()}, static_cast<uint32_t>(text.size())};
}

Entry Packed(const std::string& name, const Stream& stream, uint32_t originalSize) {
    return {name, stream.Bytes(), originalSize};
}

const Entry kDash = Packed("dash.svg", Stream().Literals("<svg>").Match(0, 5).Match(0, 10), 20);
const std::string kDashText = "<svg><svg><svg><svg>";

// The blocks stand behind the directory with one byte between them, which is a NUL unless told otherwise.
std::vector<uint8_t> MakeArchive(const std::vector<Entry>& entries, uint8_t between = 0) {
    std::vector<uint8_t> directory(8);
    std::vector<uint8_t> data;
    uint32_t header[2] = {kArchiveMagic, static_cast<uint32_t>(entries.size())};
    memcpy(directory.data(), header, 8);
    for (const Entry& entry : entries) {
        CVrArchiveRecord record = {};
        memcpy(record.name, entry.name.data(), std::min<size_t>(entry.name.size(), kArchiveNameSize));
        record.offset = static_cast<uint32_t>(8 + entries.size() * sizeof(record) + data.size());
        record.storedSize = static_cast<uint32_t>(entry.block.size());
        record.originalSize = entry.originalSize;
        size_t at = directory.size();
        directory.resize(at + sizeof(record));
        memcpy(directory.data() + at, &record, sizeof(record));
        data.insert(data.end(), entry.block.begin(), entry.block.end());
        data.push_back(between);
    }
    directory.insert(directory.end(), data.begin(), data.end());
    return directory;
}

bool Open(CVrArchive& archive, const std::vector<uint8_t>& bytes) {
    return archive.Open(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

// The text of a file; also checks that its size and terminator fit together.
std::string TextOf(const CVrArchiveFile& file) {
    if (!file.data)
        return "(absent)";
    EXPECT_EQ(strlen(reinterpret_cast<const char*>(file.data)), file.size);
    return reinterpret_cast<const char*>(file.data);
}

std::string Take(CVrArchive& archive, const char* name) {
    CVrArchiveFile file = archive.GetFile(name);
    std::string text = TextOf(file);
    archive.ReleaseFile(file);
    EXPECT_EQ(file.data, nullptr);
    return text;
}

// A static archive on given bytes; the program's own symbols are back afterwards.
class StaticArchiveTest : public testing::Test {
protected:
    void Load(std::vector<uint8_t> bytes) {
        m_bytes = std::move(bytes);
        EXPECT_TRUE(SetStaticRepository(m_bytes.data(), static_cast<uint32_t>(m_bytes.size())));
    }
    void SetUp() override { m_archive.isStatic = true; }
    void TearDown() override { SetStaticRepository(nullptr, 0); }

    std::vector<uint8_t> m_bytes;
    CVrArchive m_archive;
};

} // namespace

TEST(ArchiveTest, FilesAreFoundByTheirWholeName) {
    CVrArchive archive;
    ASSERT_TRUE(Open(archive, MakeArchive({Plain("a.svg", "plain"), kDash, Plain("z.svg", "")})));
    EXPECT_EQ(Take(archive, "a.svg"), "plain");
    EXPECT_EQ(Take(archive, "dash.svg"), kDashText);
    EXPECT_EQ(Take(archive, "z.svg"), "");
    for (const char* name : {"a.sv", "a.svg2", "A.svg", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(archive.GetFile(name).data, nullptr);
}

TEST(ArchiveTest, ANameOf64BytesIsNeverFound) {
    std::string longest(63, 'n');
    CVrArchive archive;
    ASSERT_TRUE(Open(archive, MakeArchive({Plain(longest, "found"), Plain(longest + "nn", "unterminated")})));
    EXPECT_EQ(Take(archive, longest.c_str()), "found");
    EXPECT_EQ(archive.GetFile((longest + "n").c_str()).data, nullptr);
    EXPECT_EQ(archive.GetFile((longest + "nn").c_str()).data, nullptr);
}

TEST(ArchiveTest, WhatIsNoArchiveOpensToNothing) {
    std::vector<uint8_t> good = MakeArchive({kDash});
    std::vector<uint8_t> wrongMagic = good;
    wrongMagic[0]++;
    std::vector<uint8_t> noRecords = good;
    noRecords[4] = 0;
    std::vector<uint8_t> tooMany = good;
    tooMany[7] = 0x80;
    std::vector<uint8_t> shortDirectory(good.begin(), good.begin() + 83);
    for (const auto& bytes : {wrongMagic, noRecords, tooMany, shortDirectory, std::vector<uint8_t>(7), {}}) {
        CVrArchive archive;
        EXPECT_FALSE(Open(archive, bytes));
        EXPECT_EQ(archive.GetFile("dash.svg").data, nullptr);
    }
    CVrArchive reopened;
    EXPECT_TRUE(Open(reopened, good));
    EXPECT_FALSE(Open(reopened, wrongMagic));
    EXPECT_EQ(reopened.GetFile("dash.svg").data, nullptr);
}

TEST(ArchiveTest, DefectiveBlocksAreAbsentWithOneLineEach) {
    CVrArchive archive;
    ASSERT_TRUE(Open(archive, MakeArchive({
                                  Packed("header.svg", Stream(0x5A).Literals("12345678"), 3),
                                  Packed("match.svg", Stream().Match(1020, 15), 15),
                                  Packed("short.svg", Stream().Literals("abcd"), 40),
                                  Packed("long.svg", Stream().Literals("abcd"), 3),
                                  Packed("longer.svg", Stream().Literals("abcd"), 2),
                                  Packed("fine.svg", Stream().Literals("fine").Match(0, 4).Match(0, 4), 12),
                              })));
    LogCapture log(LogError);
    const std::string tag = "RK CVrArchive::GetFileFromDynamicArchive: Error ";
    const std::pair<const char*, const char*> expected[] = {
        {"header.svg", "253 decompressing header.svg"},
        {"match.svg", "255 decompressing match.svg"},
        {"short.svg",
         "decompressing short.svg: The size of the decompressed data (4) does not match the expected "
         "size (40)."},
        {"long.svg",
         "decompressing long.svg: The size of the decompressed data (4) does not match the expected size "
         "(3)."},
        {"longer.svg",
         "decompressing longer.svg: The size of the decompressed data (3) does not match the expected "
         "size (2)."},
    };
    for (auto [name, text] : expected) {
        log.Clear();
        EXPECT_EQ(TextOf(archive.GetFile(name)), "(absent)");
        ASSERT_EQ(log.All().size(), 1u) << name;
        EXPECT_TRUE(log.Has(tag + text)) << log.All()[0];
    }
    EXPECT_EQ(Take(archive, "fine.svg"), "finefinefine");
}

TEST(ArchiveTest, RecordsThatPointOutsideOrPromiseTooMuchAreAbsent) {
    std::vector<uint8_t> good = MakeArchive({kDash});
    CVrArchiveRecord record;
    auto openWith = [&](uint32_t offset, uint32_t original, uint32_t stored) {
        std::vector<uint8_t> bytes = good;
        memcpy(&record, bytes.data() + 8, sizeof(record));
        record.offset = offset;
        record.originalSize = original;
        record.storedSize = stored;
        memcpy(bytes.data() + 8, &record, sizeof(record));
        CVrArchive archive;
        EXPECT_TRUE(Open(archive, bytes));
        LogCapture log(LogError);
        bool isFound = archive.GetFile("dash.svg").data != nullptr;
        EXPECT_EQ(log.Count("damaged"), isFound ? 0u : 1u);
        return isFound;
    };
    uint32_t size = static_cast<uint32_t>(good.size());
    EXPECT_FALSE(openWith(size, 5, 1));
    EXPECT_FALSE(openWith(size + 1, 0, 0));
    EXPECT_FALSE(openWith(84, 8, size - 83));
    EXPECT_FALSE(openWith(UINT32_MAX, 4, 4));
    EXPECT_FALSE(openWith(84, UINT32_MAX, 13));
}

TEST_F(StaticArchiveTest, DecompressesOnceUntilReleased) {
    Load(MakeArchive({kDash}));
    CVrArchiveFile first = m_archive.GetFile("dash.svg");
    EXPECT_EQ(TextOf(first), kDashText);
    EXPECT_EQ(m_archive.GetFile("dash.svg").data, first.data);

    // A second decompression would now fail.
    m_bytes[8 + 76] = 0x5A;
    EXPECT_EQ(TextOf(m_archive.GetFile("dash.svg")), kDashText);
    m_archive.ReleaseFile(first);
    LogCapture log(LogError);
    EXPECT_EQ(m_archive.GetFile("dash.svg").data, nullptr);
    EXPECT_TRUE(log.Has("CVrArchive::GetFileFromStaticRepository: Error 253 decompressing dash.svg"));

    // A failure is not remembered.
    m_bytes[8 + 76] = 0x58;
    EXPECT_EQ(Take(m_archive, "dash.svg"), kDashText);
}

TEST_F(StaticArchiveTest, PlainTextIsUsedInPlaceIfItIsTerminated) {
    Load(MakeArchive({Plain("plain.svg", "<svg/>")}));
    CVrArchiveFile file = m_archive.GetFile("plain.svg");
    EXPECT_GE(file.data, m_bytes.data());
    EXPECT_LT(file.data, m_bytes.data() + m_bytes.size());
    m_archive.ReleaseFile(file);
    EXPECT_EQ(Take(m_archive, "plain.svg"), "<svg/>");

    Load(MakeArchive({Plain("plain.svg", "<svg/>")}, '!'));
    EXPECT_EQ(Take(m_archive, "plain.svg"), "<svg/>");
}

TEST_F(StaticArchiveTest, ADamagedRepositoryKeepsItsSoundSymbols) {
    std::vector<uint8_t> bytes = MakeArchive({kDash, Plain("plain.svg", "<svg/>")});
    bytes[8 + 64 + 3] = 0xFF; // the first record's offset
    LogCapture log(LogError);
    Load(bytes);
    EXPECT_TRUE(log.Has("damaged"));
    EXPECT_EQ(GetStaticIconCount(), 1u);
    EXPECT_EQ(m_archive.GetFile("dash.svg").data, nullptr);
    EXPECT_EQ(Take(m_archive, "plain.svg"), "<svg/>");
}

TEST_F(StaticArchiveTest, TheProgramCarriesAllItsSymbols) {
    EXPECT_EQ(GetStaticIconCount(), 78u);
    for (const char* name : {"arrow-down-2.svg", "unknown.svg", "vrlogo.svg", "window-tilted.svg"})
        EXPECT_NE(Take(m_archive, name).find("<svg"), std::string::npos) << name;
}
