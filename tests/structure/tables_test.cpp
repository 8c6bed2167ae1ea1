// Categories, rooms and symbols.
#include <gtest/gtest.h>

#include "structure/structure.h"
#include "support/log_capture.h"

namespace {

CVrxStringU SymbolName(const CVrStructure& structure, int32_t number) {
    CVrxStringU name("former");
    structure.GetSymbolName(name, number);
    return name;
}

TEST(StructureTables, CategoriesAndRoomsAreFoundByNumber) {
    CVrStructure structure;
    EXPECT_TRUE(structure.LoadJsonCats(
        R"([{"U":7,"N":"Light","I":12},{"I":3},{"U":"x","N":"odd"},{"U":7.9,"N":"later"}])"));
    EXPECT_TRUE(structure.LoadJsonRooms(R"([{"N":"Küche","U":1}])"));
    EXPECT_EQ("later", structure.categories.Lookup(7)->name);
    EXPECT_EQ(0, structure.categories.Lookup(7)->icon);
    EXPECT_EQ("odd", structure.categories.Lookup(0)->name); // a text as number reads as 0
    EXPECT_EQ(2, structure.categories.GetCount());
    EXPECT_EQ("Küche", structure.rooms.Lookup(1)->name);
}

TEST(StructureTables, SymbolsSkipWhatHasNoNumber) {
    LogCapture log(LogWarning);
    CVrStructure structure;
    EXPECT_TRUE(structure.LoadJsonSymbols(
        R"([{"I":-1,"N":"a.svg"},{"N":"b.svg"},{"I":0,"N":"c.svg"},"text",{"I":5}])"));
    EXPECT_EQ(2, structure.symbols.GetCount());
    EXPECT_EQ("c.svg", SymbolName(structure, 0));
    EXPECT_EQ("", SymbolName(structure, 5));
    EXPECT_EQ(1u, log.Count("entry 'text' is no object"));
}

TEST(StructureTables, UnknownNumberGivesTheUnknownSymbol) {
    CVrStructure structure;
    EXPECT_EQ("", SymbolName(structure, 4));
    structure.staticSymbols.SetAt(CVrStructure::kUnknownSymbol, new CVrxStringU("unknown.svg"));
    EXPECT_EQ("unknown.svg", SymbolName(structure, 4));
    CVrxStringU name;
    structure.GetStaticSymbolName(name, -3);
    EXPECT_EQ("unknown.svg", name);
}

TEST(StructureTables, EachBrokenTextLeavesItsTableEmptyAndTheRestLoads) {
    LogCapture log(LogError);
    CVrStructure structure;
    EXPECT_TRUE(structure.LoadJsonConfig("[]", R"([{"U":1}])", R"([{"U":2}])", R"([{"I":3}])"));
    EXPECT_TRUE(structure.LoadJsonConfig("[]", "[", "", R"([{"I":4}])"));
    EXPECT_TRUE(log.Has("CVrStructure::LoadJsonCats: Parse error cats 1"));
    EXPECT_TRUE(log.Has("CVrStructure::LoadJsonRooms: Parse error rooms 0"));
    EXPECT_EQ(0, structure.categories.GetCount());
    EXPECT_EQ(0, structure.rooms.GetCount());
    EXPECT_EQ(nullptr, structure.symbols.Lookup(3)); // nothing of the first house is left
    EXPECT_NE(nullptr, structure.symbols.Lookup(4));
    EXPECT_FALSE(structure.LoadJsonSymbols("{"));
    EXPECT_TRUE(log.Has("CVrStructure::LoadJsonSymbols: Parse error symbols 1"));
}

} // namespace
