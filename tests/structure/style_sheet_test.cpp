// The layout grammar, the reading of the sheet, and the sheet of the product itself.
#include "structure/style_sheet.h"

#include <gtest/gtest.h>

#include "foundation/files.h"
#include "support/log_capture.h"

namespace {

// "x,y,w,h" of a layout string in a parent of that size.
std::string Placed(const char* layout, CVrSize parent = {720, 720}) {
    CStyle style;
    style.Parse(layout);
    const CVrRect rect = style.Evaluate(&parent);
    return std::to_string(rect.x) + "," + std::to_string(rect.y) + "," + std::to_string(rect.width) + "," +
           std::to_string(rect.height);
}

CVrStyleSheet* LoadedSheet() {
    static CVrStyleSheet sheet;
    if (sheet.classRows.IsEmpty()) {
        CVrxStringU text;
        sheet.PrepareClasses();
        EXPECT_TRUE(LoadStringFromFile(WALLSLATE_SOURCE_DIR "/resources/style.json", text));
        EXPECT_TRUE(sheet.Load(text));
    }
    return &sheet;
}

const CVrClassStyle& RowOf(const char* className) {
    CVrStyleSheet& sheet = *LoadedSheet();
    return *sheet.Row(sheet.classNames.Find(className));
}

TEST(Layout, DistancesSizesAndPercentages) {
    EXPECT_EQ("6,110,708,604", Placed("l=6,t=110,r=6,b=6,rad=25"));
    EXPECT_EQ("10,10,700,700", Placed("m=10"));
    EXPECT_EQ("0,0,720,720", Placed("m=0"));
    EXPECT_EQ("400,0,310,480", Placed("l=400,y=0,r=10,h=480"));
    EXPECT_EQ("33,0,67,50", Placed(" x = 33% , w=67%,h=50 ", {101, 9}));
    EXPECT_EQ("-33,0,0,0", Placed("x=-33%", {101, 9}));
    EXPECT_EQ("0,0,0,0", Placed(""));
    EXPECT_EQ("0,0,0,0", Placed("x,=5,y=,zz=7,,"));
}

TEST(Layout, LaterKeyWinsTheSharedNumberAndBothBitsStay) {
    CStyle style;
    style.Parse("h=150,b=10,l=3%");
    EXPECT_EQ(CStyle::AbsoluteH | CStyle::Bottom | CStyle::Left, style.mask);
    EXPECT_EQ(10, style.h);
    EXPECT_EQ(3, style.x);
    EXPECT_EQ(0, style.BottomDistance());
    EXPECT_EQ("h=150,b=10,l=3%", style.spec);
}

TEST(Layout, WithoutParentOnlyPixelsCount) {
    CStyle style;
    style.Parse("l=5,y=6,w=7,h=8,r=9");
    EXPECT_EQ(CVrRect(5, 6, 9, 8), style.Evaluate(nullptr)); // w and r share a number
    style.Parse("x=50%,r=9,h=50%");
    EXPECT_EQ(CVrRect(), style.Evaluate(nullptr));
}

TEST(Layout, AbsurdNumbersSaturate) {
    EXPECT_EQ("2147483647,0,0,0", Placed("x=99999999999999999999"));
    EXPECT_EQ("2147483647,0,0,0", Placed("x=2147483647%"));
    EXPECT_EQ("0,0,2147483647,0", Placed("r=-2147483648"));
}

TEST(StyleSheet, ColoursResolveNamesForwardsAndBackwards) {
    CVrStyleSheet sheet;
    sheet.PrepareClasses();
    ASSERT_TRUE(sheet.Load(
        R"({"colors":[{"none":"0"},{"early":"late"},{"late":"ff112233"},{"copy":"late"},{"short":"ff"},
        {"long":"112233445566"},{"bad":"12xy"},"text",{}],"styles":[{"N":"CVrGuiMenu","colors":["late","unknown"]},
        {"N":"CVrGuiOther"},{"element":"m=1"}]})"));
    const uint32_t expected[] = {0, 0xFF112233, 0xFF112233, 0xFF112233, 0xFF, 0x11223344, 0x12};
    ASSERT_EQ(std::size(expected), sheet.colorList.GetSize());
    for (uint32_t i = 0; i < std::size(expected); i++)
        EXPECT_EQ(expected[i], sheet.Color(i)) << i;
    EXPECT_EQ(2, sheet.Row(1)->colorIndex[0]);
    EXPECT_EQ(0, sheet.Row(1)->colorIndex[1]);
    EXPECT_EQ("unknown", sheet.Row(1)->colorNames.GetAt(1));
}

TEST(StyleSheet, ElevenColoursInARowDoNotOverflow) {
    CVrStyleSheet sheet;
    sheet.PrepareClasses();
    ASSERT_TRUE(sheet.Load(R"({"colors":[{"a":"0"},{"b":"1"}],"styles":[{"N":"CVrGuiMenu","colors":
        ["b","b","b","b","b","b","b","b","b","b","b","b"]}]})"));
    EXPECT_EQ(10, sheet.Row(1)->colorNames.GetSize());
    EXPECT_EQ(32u, sheet.Row(2)->startFlags);
}

TEST(StyleSheet, MissingSectionsAreEmptyAndBrokenTextsRefused) {
    LogCapture log;
    CVrStyleSheet sheet;
    sheet.PrepareClasses();
    EXPECT_TRUE(sheet.Load("{}"));
    EXPECT_EQ(0, sheet.Value(0));
    EXPECT_TRUE(log.Has("CVrStructure::LoadJsonStyles: styles: 0 0"));
    EXPECT_FALSE(sheet.Load("{"));
    EXPECT_TRUE(log.Has("CVrStructure::LoadJsonStyles: Parse error styles 1"));
    EXPECT_TRUE(log.Has("CVrStructure::PrepareClasses: 27: CVrGuiVideo"));
}

TEST(StyleSheet, TypeBeyondTheTableGetsTheFirstRow) {
    EXPECT_EQ(LoadedSheet()->Row(0), LoadedSheet()->Row(999));
    EXPECT_EQ(LoadedSheet()->Row(0), LoadedSheet()->Row(-1));
    CVrStyleSheet empty;
    EXPECT_EQ(nullptr, empty.Row(0));
}

// The order of the lists is what the code goes by.
TEST(ProductSheet, ListsStandInTheirOrder) {
    const CVrStyleSheet& sheet = *LoadedSheet();
    ASSERT_EQ(27u, sheet.colorList.GetSize());
    ASSERT_EQ(17u, sheet.fonts.GetSize());
    ASSERT_EQ(16u, sheet.values.GetSize());
    ASSERT_EQ(28u, sheet.classRows.GetSize());
    EXPECT_EQ("vermaragreen", sheet.colorList[26]->name);
    EXPECT_EQ(0xFF000000u, sheet.Color(15)); // btnbkgsel, btntext, black
    EXPECT_EQ(0xFF797672u, sheet.Color(22)); // menubtnsymboldis, symboldis, textdis, blackdis
    EXPECT_EQ(5, sheet.Value(StyleValue::MenuMaxVisible));
    EXPECT_EQ(15, sheet.Value(StyleValue::MoveTolerance));
    EXPECT_EQ(275, sheet.Value(StyleValue::CoverButtonHeight));
    EXPECT_EQ(0, sheet.Value(16));
    EXPECT_EQ("huge", sheet.fonts[FontIndex::Huge]->name);
    EXPECT_EQ(230, sheet.fonts[FontIndex::Huge]->size);
    EXPECT_TRUE(sheet.fonts[FontIndex::BigBold]->bold);
    EXPECT_FALSE(sheet.fonts[FontIndex::Big]->bold);
}

TEST(ProductSheet, EveryRowButTheVideoHasALayoutAndTenKnownColours) {
    const CVrStyleSheet& sheet = *LoadedSheet();
    for (const CVrClassStyle* row : sheet.classRows) {
        if (row->className == "CVrGuiVideo") {
            EXPECT_TRUE(row->styleName.IsEmpty());
            continue;
        }
        EXPECT_EQ(row->className, row->styleName);
        EXPECT_FALSE(row->element.spec.IsEmpty());
        EXPECT_EQ(10, row->colorNames.GetSize());
        for (int32_t i = 0; i < 10; i++)
            EXPECT_EQ(row->colorNames.GetAt(i), sheet.colorList[row->colorIndex[i]]->name)
                << row->className.CStr();
    }
}

TEST(ProductSheet, LayoutsOfThreeParts) {
    const CVrClassStyle& row = RowOf("CVrGuiFrameListBtn");
    EXPECT_EQ(16, row.element.gap);
    EXPECT_EQ(15, row.element.rad);
    EXPECT_EQ(120, row.text.gap);
    EXPECT_EQ(60, row.symbol.w);
    EXPECT_EQ(48u, RowOf("CVrGuiFrame").startFlags);
    EXPECT_EQ(25, RowOf("CVrGuiFrame").element.rad);
}

} // namespace
