// The tree of items as the configuration text gives it. The models of the real controls have their tests
// beside the controls; two stand-ins for them are enough here.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "foundation/class_factory.h"
#include "structure/structure.h"
#include "support/log_capture.h"
#include "support/text_pieces.h"

namespace {

int g_alive = 0;

class CVrStructureItemSwitch : public CVrStructureItem {
public:
    CVrStructureItemSwitch() { g_alive++; }
    ~CVrStructureItemSwitch() override { g_alive--; }
};

class CVrStructureItemLightController2 : public CVrStructureItemSwitch {
public:
    bool ReadOwnKeys(const CVrJsonValue& object) override { return !object.Find("refuse"); }
};

VR_REGISTER_CLASS(CVrStructureItemSwitch)
VR_REGISTER_CLASS(CVrStructureItemLightController2)

bool Load(CVrStructure& structure, const std::string& config) {
    return structure.LoadJsonConfig(config.c_str(), "[]", "[]", "[]");
}

// "U(child child)" of everything below the item, so that a test can name the whole tree.
std::string Outline(const CVrStructureItem& item) {
    std::string text;
    for (const CVrStructureItem* child : item.children) {
        text += text.empty() ? "" : " ";
        text += std::to_string(child->uuid);
        if (!child->children.IsEmpty())
            text += Joined({"(", Outline(*child), ")"});
    }
    return text;
}

std::string OutlineOf(const std::string& config) {
    CVrStructure structure;
    Load(structure, config);
    return Outline(structure.root);
}

TEST(StructureItems, ControlTakesItsKeys) {
    CVrStructure structure;
    ASSERT_TRUE(Load(structure,
                     R"([{"T":342,"U":"0012ab","N":"Lamp","R":3,"C":4,"I":5,"actCtrl":"true","defScr":1}])"));
    const CVrStructureItem* item = structure.items.Lookup(0x12AB);
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(structure.root.children[0], item);
    EXPECT_EQ(&structure.root, item->parent);
    EXPECT_EQ(342, item->type);
    EXPECT_EQ("Lamp", item->name);
    EXPECT_EQ(3, item->room);
    EXPECT_EQ(4, item->category);
    EXPECT_EQ(5, item->icon);
    EXPECT_TRUE(item->activeController);
    EXPECT_TRUE(item->defaultScreen);
    EXPECT_EQ(item, structure.FindDefaultScreen());
}

TEST(StructureItems, IdentityIsNumberOrHexadecimal) {
    EXPECT_EQ("4294967295", OutlineOf(R"([{"T":342,"U":-1}])"));
    EXPECT_EQ("0", OutlineOf(R"([{"T":342,"U":"zz"}])"));
    EXPECT_EQ("0", OutlineOf(R"([{"T":342,"U":0}])"));
    EXPECT_EQ("10", OutlineOf(R"([{"T":342,"U":"A-7"}])"));
}

TEST(StructureItems, GroupsWithoutIdentityAreNumbered) {
    EXPECT_EQ("4026531841 4026531842", OutlineOf(R"([{"N":"a"},{"N":"b"}])"));
    // A number that is taken is passed over; a group's wrong types are ignored.
    EXPECT_EQ("4026531841 4026531842", OutlineOf(R"([{"U":"F0000001"},{"U":"0","N":5,"I":"x"}])"));
}

TEST(StructureItems, RootMayBeAnObject) {
    EXPECT_EQ("1 2", OutlineOf(R"({"a":{"T":342,"U":1},"b":{"T":342,"U":2}})"));
}

TEST(StructureItems, EveryFaultOfATopLevelMemberCostsOneLineAndItself) {
    for (const char* fault :
         {R"({"T":342})", R"({"T":342,"U":true})", R"({"T":"342","U":9})", R"({"T":999,"U":9})",
          R"({"T":0,"U":9})", R"({"T":342,"U":9,"N":5})", R"({"T":342,"U":9,"R":"3"})",
          R"({"T":342,"U":9,"C":"3"})", R"({"T":342,"U":9,"I":true})", R"({"T":342,"U":9,"sub":{}})",
          R"({"T":342,"U":9,"moodList":5})", R"({"T":484,"U":9,"refuse":1})", R"("text")", "[]"}) {
        LogCapture log(LogWarning);
        EXPECT_EQ("1 2", OutlineOf(Joined({R"([{"T":342,"U":1},)", fault, R"(,{"T":342,"U":2}])"}))) << fault;
        EXPECT_EQ(1u, log.Count("ParseJsonConfig")) << fault;
        EXPECT_EQ(0, g_alive) << fault;
    }
}

TEST(StructureItems, DeeperFaultEndsAllAncestorsButLeavesWhatWasMade) {
    CVrStructure structure;
    Load(structure,
         R"([{"U":1,"sub":[{"T":342,"U":2,"sub":[{"T":342,"U":3},{"T":999,"U":4},{"T":342,"U":5}]},)"
         R"({"T":342,"U":6}]},{"T":342,"U":7}])");
    EXPECT_EQ("1(2(3)) 7", Outline(structure.root));
    EXPECT_EQ(nullptr, structure.items.Lookup(2)); // a control that was left unfinished
    EXPECT_NE(nullptr, structure.items.Lookup(3));
    EXPECT_NE(nullptr, structure.items.Lookup(1));
}

TEST(StructureItems, GroupWithBrokenListStaysEmpty) {
    EXPECT_EQ("1 2", OutlineOf(R"([{"U":1,"sub":5},{"T":342,"U":2}])"));
}

TEST(StructureItems, DroppedControlTakesItsChildrenOutOfTheTable) {
    CVrStructure structure;
    Load(structure,
         R"([{"T":342,"U":3,"N":"first"},{"T":484,"U":1,"refuse":1,"sub":[{"T":342,"U":2,"defScr":true},)"
         R"({"T":342,"U":3}]},{"T":342,"U":4,"defScr":true}])");
    EXPECT_EQ("3 4", Outline(structure.root));
    EXPECT_EQ(nullptr, structure.items.Lookup(2));
    ASSERT_NE(nullptr, structure.items.Lookup(3)); // the earlier item of the same number shows again
    EXPECT_EQ("first", structure.items.Lookup(3)->name);
    EXPECT_EQ(2, structure.items.GetCount());
    EXPECT_EQ(structure.items.Lookup(4), structure.FindDefaultScreen());
}

TEST(StructureItems, LaterOfTwoEqualIdentitiesIsFound) {
    CVrStructure structure;
    Load(structure, R"([{"T":342,"U":1,"N":"a"},{"T":342,"U":1,"N":"b"}])");
    EXPECT_EQ("1 1", Outline(structure.root));
    EXPECT_EQ("b", structure.items.Lookup(1)->name);
}

TEST(StructureItems, FirstDefaultScreenWinsAndTheSecondIsNamed) {
    LogCapture log(LogWarning);
    CVrStructure structure;
    Load(structure,
         R"([{"U":1,"defScr":"0","sub":[{"T":342,"U":2,"defScr":1}]},{"T":342,"U":171,"defScr":"true"}])");
    EXPECT_EQ(structure.items.Lookup(2), structure.FindDefaultScreen());
    EXPECT_FALSE(structure.items.Lookup(171)->defaultScreen);
    EXPECT_EQ(1u, log.Count("Ignoring duplicate default screen marker U=ab"));
}

TEST(StructureItems, UnparsableConfigurationLeavesEverythingEmpty) {
    LogCapture log(LogError);
    CVrStructure structure;
    EXPECT_FALSE(structure.LoadJsonConfig("[{]", R"([{"U":1}])", "[]", "[]"));
    EXPECT_FALSE(structure.LoadJsonConfig("", R"([{"U":1}])", "[]", "[]"));
    EXPECT_TRUE(log.Has("CVrStructure::LoadJsonConfig: Parse error config 3"));
    EXPECT_TRUE(log.Has("Parse error config 0"));
    EXPECT_EQ(0, structure.categories.GetCount());
    EXPECT_TRUE(structure.root.children.IsEmpty());
}

TEST(StructureItems, SecondLoadReplacesTheFirst) {
    CVrStructure structure;
    Load(structure, R"([{"T":342,"U":1,"defScr":1},{"N":"group"}])");
    Load(structure, R"([{"N":"other"}])");
    EXPECT_EQ("4026531841", Outline(structure.root));
    EXPECT_EQ(nullptr, structure.items.Lookup(1));
    EXPECT_EQ(nullptr, structure.FindDefaultScreen());
    EXPECT_EQ(0, g_alive);
}

TEST(StructureItems, WalkVisitsParentsFirstAndStaysBelowItsTop) {
    CVrStructure structure;
    Load(structure, R"([{"U":1,"sub":[{"U":2,"sub":[{"U":3},{"U":4}]},{"U":5}]},{"U":6}])");
    std::string all, below;
    for (CVrStructureItem* item = &structure.root; item; item = item->NextBelow(structure.root))
        all += std::to_string(item->uuid);
    const CVrStructureItem& second = *structure.items.Lookup(2);
    for (const CVrStructureItem* item = &second; item; item = item->NextBelow(second))
        below += std::to_string(item->uuid);
    EXPECT_EQ("0123456", all);
    EXPECT_EQ("234", below);
}

TEST(StructureItems, StateDecidesWhetherAPlainItemIsActive) {
    CVrStructureItem item;
    EXPECT_FALSE(item.IsActive());
    auto activeWith = [&item](const char* state) {
        item.stateJson.Clear();
        item.stateJson.Parse(state);
        return item.IsActive();
    };
    for (const char* on : {R"({"V":true})", R"({"V":0.1})", R"({"V":"on"})"})
        EXPECT_TRUE(activeWith(on)) << on;
    for (const char* off : {R"({"V":false})", R"({"V":0})", R"({"V":""})", R"({"V":"OFF"})", R"({"V":{}})",
                            R"({"W":1})", R"(["V"])", "{"})
        EXPECT_FALSE(activeWith(off)) << off;
}

// Ten thousand of anything, one in another or side by side, faulty or not: no recursion, no quadratic wait.
TEST(StructureItems, AbsurdHousesTakeLinearTime) {
    constexpr int kMany = 100000;
    const std::string houses[] = {
        Joined({"[", Repeated(R"({"sub":[)", kMany), Repeated("]}", kMany), "]"}),
        Joined({"[", Repeated(R"({"T":484,"U":1,"refuse":1,"sub":[)", kMany), Repeated("]}", kMany), "]"}),
        Joined({"[", Repeated(R"({"T":342,"U":1,"defScr":1},)", kMany), "]"}),
        Joined({"[", Repeated(R"({"T":484,"U":1,"refuse":1,"sub":[{"T":342,"U":2}]},)", kMany), "]"}),
        Joined({R"([{"N":")", Repeated("name", kMany), R"("}])"}),
        Joined({"[{", Repeated(R"("k":1,)", kMany), R"("T":342,"U":1}])"}),
    };
    LogCapture quiet(0);
    for (const std::string& house : houses) {
        const auto begin = std::chrono::steady_clock::now();
        {
            CVrStructure structure;
            EXPECT_TRUE(Load(structure, house));
        }
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20)) << house.substr(0, 40);
    }
    EXPECT_EQ(0, g_alive);
}

} // namespace
