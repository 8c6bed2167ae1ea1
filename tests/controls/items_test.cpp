// What the models of the controls read from the structure.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "controls/light_item.h"
#include "controls/music_item.h"
#include "controls/opening_item.h"
#include "controls/room_climate_item.h"
#include "controls/sauna_item.h"
#include "controls/shading_item.h"
#include "controls/status_item.h"
#include "controls/switch_item.h"
#include "controls/windows_item.h"
#include "foundation/class_factory.h"
#include "foundation/files.h"
#include "structure/structure.h"
#include "support/log_capture.h"
#include "support/text_pieces.h"

namespace {

// A house with one control: the keys beside T and U.
template <typename Item>
class House {
public:
    House(int type, const char* keys) {
        m_structure.LoadJsonConfig(Joined({R"([{"U":1,"T":)", std::to_string(type), keys, "}]"}).c_str(),
                                   "[]", "[]", "[]");
    }
    Item* operator->() const { return dynamic_cast<Item*>(m_structure.items.Lookup(1)); }
    explicit operator bool() const { return operator->() != nullptr; }

private:
    mutable CVrStructure m_structure;
};

using StatusHouse = House<CVrStructureItemStatus>;
using LightHouse = House<CVrStructureItemLightController2>;
using WindowsHouse = House<CVrStructureItemWindowsMonitor>;

TEST(Items, EveryTypeOfTheTableHasItsModel) {
    for (const uint32_t type :
         {458u, 352u, 484u, 469u, 441u, 442u, 348u, 476u, 502u, 501u, 482u, 507u, 342u, 493u, 110u}) {
        const CVrxStringU model = CClassFactory::GetStructureClassName(type);
        EXPECT_TRUE(CClassFactory::Instance().IsRegistered(model)) << model.CStr();
        EXPECT_TRUE(House<CVrStructureItem>(static_cast<int>(type), ""));
    }
    EXPECT_TRUE(CClassFactory::Instance().IsRegistered("CVrStructureItemTreeLayout"));
}

TEST(Items, MoodsKeepTheirPlaceInTheList) {
    LogCapture log(LogWarning);
    const LightHouse light(484, R"(,"moodList":[{"name":"Bright","id":1,"defaultIcon":14},{"id":778},"text",
        {"name":5,"id":"x"},{"name":"Night","id":9}])");
    ASSERT_EQ(3u, light->moods.GetSize());
    EXPECT_EQ("Bright", light->moods[0]->name);
    EXPECT_EQ(14, light->moods[0]->defaultIcon);
    EXPECT_EQ("", light->moods[1]->name);
    EXPECT_EQ(0, light->moods[1]->id);
    EXPECT_EQ(9, light->moods[2]->id);
    EXPECT_EQ(4, light->moods[2]->index);
    EXPECT_EQ(CVrStructureItemLightController2::kBrightnessUnknown, light->brightness);
    EXPECT_EQ(1u, log.Count("mood 2 is no object"));
}

TEST(Items, WindowsTakeTheMonitorsRoomUnlessTheyHaveTheirOwn) {
    LogCapture log(LogWarning);
    const WindowsHouse windows(
        482, R"(,"R":7,"windows":[{"id":31,"name":"Kitchen"},{"id":"2"},{"id":3,"R":4,"room":5},
        {"id":4,"R":"x","room":5},{"name":"none"}])");
    ASSERT_EQ(3u, windows->windows.GetSize());
    EXPECT_EQ("Kitchen", windows->windows[0]->name);
    EXPECT_EQ(7, windows->windows[0]->room);
    EXPECT_EQ(4, windows->windows[1]->room);
    EXPECT_EQ(5, windows->windows[2]->room);
    EXPECT_EQ(2u, log.Count("a window without id"));
    EXPECT_EQ(0u, WindowsHouse(482, R"(,"windows":5)")->windows.GetSize());
}

TEST(Items, StatusKeysStandInDetailsOrBesideThem) {
    const StatusHouse beside(110,
                             R"(,"WA":"true","ST":"0,5","MIN":-1,"details":{"T":1,"DU":"%.1f °C","MIN":3})");
    EXPECT_TRUE(beside->writable);
    EXPECT_TRUE(beside->hasIoType);
    EXPECT_TRUE(beside->hasStep);
    EXPECT_EQ(0.5, beside->step);
    EXPECT_EQ(3, beside->min);
    EXPECT_FALSE(beside->hasMax);
    EXPECT_EQ("%.1f °C", beside->format);
    EXPECT_EQ("CVrGuiGenericIoWritable", beside->GetPageClass());

    const StatusHouse without(110, R"(,"WA":1,"MAX":"12.5")");
    EXPECT_TRUE(without->writable);
    EXPECT_EQ(12.5, without->max);
    EXPECT_EQ("CVrGuiStatus", without->GetPageClass()); // digital: shown alone
}

TEST(Items, StatusKeysOfTheWrongKindCountAsAbsent) {
    const StatusHouse status(
        110, R"(,"WA":false,"ST":2,"details":{"T":3,"WA":"yes","ST":"1,2,3","MIN":"-","MAX":"","DU":5})");
    EXPECT_FALSE(status->hasIoType);
    EXPECT_FALSE(status->writable);
    EXPECT_EQ(2, status->step); // what stands beside fills in
    EXPECT_FALSE(status->hasMin);
    EXPECT_FALSE(status->hasMax);
    EXPECT_TRUE(status->format.IsEmpty());
    EXPECT_FALSE(StatusHouse(110, R"(,"details":{"T":-1})")->hasIoType);
    EXPECT_FALSE(StatusHouse(110, R"(,"details":{"T":nan})")->hasIoType);
}

TEST(Items, OpeningTakesItsKindFromEitherKey) {
    using Gate = House<CVrStructureItemGateController>;
    EXPECT_EQ(2, Gate(352, R"(,"details":{"T":5,"type":2})")->detailType);
    EXPECT_EQ(5, Gate(352, R"(,"details":{"T":5,"type":"x"})")->detailType);
    EXPECT_EQ(0, Gate(352, R"(,"details":"x")")->detailType);
    EXPECT_EQ(3, (House<CVrStructureItemRoofWindow>(501, R"(,"details":{"T":3})")->detailType));
    EXPECT_EQ(6, (House<CVrStructureItemAutoJalousie2>(502, R"(,"details":{"type":6})")->kind));
    EXPECT_EQ(0, (House<CVrStructureItemSwitch>(342, R"(,"details":{"type":6})")->kind));
}

TEST(Items, HiddenZoneIsAZoneWithoutAPage) {
    const House<CVrStructureItemMusicPlayer> zone(
        507, R"(,"details":{"playerid":12,"fixGroup":"0","hidden":1,"server":"a","groupid":"g"})");
    EXPECT_EQ(12, zone->playerId);
    EXPECT_FALSE(zone->fixGroup);
    EXPECT_TRUE(zone->IsHidden());
    EXPECT_TRUE(zone->IsAudioZone());
    EXPECT_EQ("g", zone->groupId);
    EXPECT_EQ("a", zone->server);
    EXPECT_FALSE(House<CVrStructureItem>(507, "")->IsAudioZone());
}

TEST(Items, NewModelsStandAtRest) {
    EXPECT_EQ(210, (House<CVrStructureItemHeatIRoomController2>(469, "")->targetTemp));
    EXPECT_EQ(900, (House<CVrStructureItemSaunaController>(442, "")->targetTemp));
    for (const int type : {348, 476, 502, 501, 352, 441, 484, 507, 342, 493, 110, 458})
        EXPECT_FALSE(House<CVrStructureItem>(type, "")->IsActive()) << type;
}

TEST(Items, ActivityIsTheKindsOwnBusiness) {
    House<CVrStructureItemHeatIRoomController2> climate(469, "");
    EXPECT_TRUE(climate->IsActive());
    climate->activeMode = CVrStructureItemHeatIRoomController2::Off;
    EXPECT_FALSE(climate->IsActive());
    House<CVrStructureItemAutoJalousie2> blind(476, "");
    blind->direction = 2;
    EXPECT_TRUE(blind->IsActive());
    House<CVrStructureItemGateController> gate(352, "");
    gate->direction = 1;
    EXPECT_FALSE(gate->IsActive()); // only its state object counts
    gate->stateJson.Parse(R"({"V":1})");
    EXPECT_TRUE(gate->IsActive());
}

TEST(Items, DemonstrationHouseLoadsWithoutALineAndHasEveryType) {
    LogCapture log(LogWarning);
    CVrxStringU texts[4];
    const char* const names[] = {"structure", "categories", "rooms", "symbols"};
    for (int i = 0; i < 4; i++)
        ASSERT_TRUE(
            LoadStringFromFile(Joined({WALLSLATE_SOURCE_DIR "/demo/", names[i], ".json"}).c_str(), texts[i]));
    CVrStructure structure;
    ASSERT_TRUE(structure.LoadJsonConfig(texts[0], texts[1], texts[2], texts[3]));
    EXPECT_TRUE(log.All().empty());
    std::set<int32_t> types;
    for (CVrStructureItem* item = &structure.root; item; item = item->NextBelow(structure.root)) {
        types.insert(item->type);
        EXPECT_TRUE(item->category == 0 || structure.categories.Lookup(item->category)) << item->name.CStr();
        EXPECT_TRUE(item->room == 0 || structure.rooms.Lookup(item->room)) << item->name.CStr();
        EXPECT_TRUE(item->icon == 0 || structure.symbols.Lookup(item->icon)) << item->name.CStr();
    }
    const std::set<int32_t> all = {0,   110, 342, 348, 352, 441, 442, 458,
                                   469, 476, 482, 484, 493, 501, 502, 507};
    EXPECT_EQ(all, types);
    EXPECT_NE(nullptr, structure.FindDefaultScreen());
}

} // namespace
