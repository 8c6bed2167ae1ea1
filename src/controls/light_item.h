// Model of a light controller: its moods in the order of the structure, and what is on.
#pragma once

#include "foundation/ptr_array.h"
#include "structure/item.h"

struct CVrLightMood {
    CVrxStringU name;
    int32_t id = 0;          // what commands name it by
    int32_t defaultIcon = 0; // symbol number of the installation; 0: none
    int32_t index = 0;       // position in the structure's list, skipped entries counted
    bool active = false;
};

class CVrStructureItemLightController2 : public CVrStructureItem {
public:
    static constexpr int32_t kBrightnessUnknown = -1;

    ~CVrStructureItemLightController2() override;

    bool ReadOwnKeys(const CVrJsonValue& object) override;
    bool IsActive() const override { return lightOn; }

    VrPtrs<CVrLightMood> moods;              // owned
    bool lightOn = false;                    // a mood is active or the brightness is above 0
    int32_t brightness = kBrightnessUnknown; // 0..100

private:
    void ClearMoods();
};
