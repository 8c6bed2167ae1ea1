#include "controls/light_item.h"

#include "foundation/class_factory.h"
#include "foundation/log.h"

VR_REGISTER_CLASS(CVrStructureItemLightController2)

namespace {

constexpr int32_t kOffMoodId = 778; // "off" is a state of the display's own, no button

} // namespace

CVrStructureItemLightController2::~CVrStructureItemLightController2() {
    ClearMoods();
}

void CVrStructureItemLightController2::ClearMoods() {
    for (uint32_t i = moods.GetSize(); i > 0; i--)
        delete moods[i - 1];
    moods.Clear();
}

bool CVrStructureItemLightController2::ReadOwnKeys(const CVrJsonValue& object) {
    const CVrJsonValue* list = object.Find("moodList");
    if (list && !list->IsArray())
        return false;
    ClearMoods();
    for (uint32_t i = 0; list && i < list->GetChildCount(); i++) {
        const CVrJsonValue* entry = list->GetChild(i);
        if (!entry->IsObject()) {
            Log(LogWarning, "CVrStructureItemLightController2::ReadOwnKeys", "U=%x: mood %u is no object",
                uuid, i);
            continue;
        }
        int32_t id = 0;
        item_json::ReadNumberKey(entry, "id", id);
        if (id == kOffMoodId)
            continue;
        auto* mood = new CVrLightMood;
        mood->id = id;
        mood->index = static_cast<int32_t>(i);
        item_json::ReadTextKey(entry, "name", mood->name);
        item_json::ReadNumberKey(entry, "defaultIcon", mood->defaultIcon);
        moods.Add(mood);
    }
    return true;
}
