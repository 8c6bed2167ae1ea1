// The symbols as they are built: complete, well packed, and free of what the drawing code does not know.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "foundation/archive.h"
#include "icon_set.h"

using namespace iconpack;

namespace {

const std::string kBinaries = WALLSLATE_BINARY_DIR;
const std::string kSources = WALLSLATE_SOURCE_DIR;

class Symbols {
public:
    explicit Symbols(const std::string& file) {
        std::string bytes = ReadFile(kBinaries + "/resources/" + file);
        size = bytes.size();
        EXPECT_TRUE(
            archive.Open(reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<uint32_t>(size)));
        for (uint32_t i = 0; i < archive.GetCount(); i++) {
            const CVrArchiveRecord& record = archive.GetRecord(i);
            CVrArchiveFile text = archive.GetFile(record.name);
            EXPECT_NE(text.data, nullptr) << record.name;
            texts[record.name] = text.data ? reinterpret_cast<const char*>(text.data) : "";
            archive.ReleaseFile(text);
            original += record.originalSize;
            stored += record.storedSize;
        }
    }

    CVrArchive archive;
    Texts texts;
    size_t size = 0; // bytes of the file
    size_t original = 0;
    size_t stored = 0;
};

// Elements and attributes that the SVG parser draws without a style sheet, a mask or a font.
void ExpectDrawable(const std::string& name, const std::string& text) {
    static const std::set<std::string> kElements = {"svg",  "path", "circle",  "ellipse",
                                                    "rect", "line", "polygon", "polyline"};
    for (size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at + 1)) {
        size_t begin = at + (text[at + 1] == '/' ? 2 : 1);
        std::string element = text.substr(begin, text.find_first_of(" \n>", begin) - begin);
        EXPECT_TRUE(kElements.contains(element)) << name << ": " << element;
    }
    for (const char* foreign : {"class=", "style=", "currentColor", "url(", "transform="})
        EXPECT_EQ(text.find(foreign), std::string::npos) << name << ": " << foreign;
    EXPECT_NE(text.find("stroke-width=\"1.5\""), std::string::npos) << name;
}

} // namespace

TEST(SymbolsTest, TheStaticSetHoldsExactlyWhatItsListNames) {
    Symbols symbols("icons_static.bin");
    std::set<std::string> listed;
    for (const auto& entry : nlohmann::json::parse(ReadFile(kSources + "/resources/static-symbols.json")))
        listed.insert(entry.at("N"));
    EXPECT_EQ(listed.size(), 78u);
    EXPECT_EQ(symbols.texts.size(), 78u);
    for (const std::string& name : listed)
        EXPECT_TRUE(symbols.texts.contains(name)) << name;
}

TEST(SymbolsTest, TheDynamicSetIsLargeEnoughAndFitsItsPlace) {
    Symbols symbols("icons_dynamic.bin");
    EXPECT_GE(symbols.texts.size(), 599u);
    EXPECT_LE(symbols.size, 262855u);
    for (const char* name : {"8-ball.svg", "3d-printer.svg", "door-closed.svg", "house.svg", "lightbulb.svg"})
        EXPECT_TRUE(symbols.texts.contains(name)) << name;
    EXPECT_FALSE(symbols.texts.contains("unknown.svg")) << "the static set answers for that one";
    for (const auto& entry : nlohmann::json::parse(ReadFile(kSources + "/demo/symbols.json")))
        EXPECT_TRUE(symbols.texts.contains(entry.at("N"))) << entry.at("N");
}

TEST(SymbolsTest, BothSetsAreOfOneFamilyAndPackToThreeFifths) {
    for (const char* file : {"icons_static.bin", "icons_dynamic.bin"}) {
        Symbols symbols(file);
        EXPECT_LE(static_cast<double>(symbols.stored), 0.6 * static_cast<double>(symbols.original)) << file;
        for (const auto& [name, text] : symbols.texts)
            ExpectDrawable(name, text);
    }
}
