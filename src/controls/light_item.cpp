#include "controls/light_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemLightController2)

namespace {

constexpr int32_t kOffMoodId = 778; // "off" is a state of the display's own, no button

} // namespace

CVrStructureItemLightController2::~CVrStructureItemLightController2() {
    ClearMoods();
}

void CVrStructureItemLightController2::ClearMoods() {
    for (CVrLightMood* mood : moods)
        delete mood;
    moods.Clear();
}

bool CVrStructureItemLightController2::ReadOwnKeys(const CVrJsonValue& object) {
    const CVrJsonValue* list = object.Find("moodList");
    if (list && !list->IsArray())
        return false;
    ClearMoods();
    if (!list)
        return true;
    int32_t index = 0;
    for (const CVrJsonValue* entry : list->Children()) {
        const int32_t position = index++;
        int32_t id = 0;
        item_json::ReadNumberKey(entry, "id", id);
        if (!entry->IsObject() || id == kOffMoodId)
            continue;
        auto* mood = new CVrLightMood;
        mood->id = id;
        mood->index = position;
        item_json::ReadTextKey(entry, "name", mood->name);
        item_json::ReadNumberKey(entry, "defaultIcon", mood->defaultIcon);
        moods.Add(mood);
    }
    return true;
}
