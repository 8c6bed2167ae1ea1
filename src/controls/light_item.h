// Model of a light controller: its moods in the order of the structure.
#pragma once

#include "foundation/ptr_array.h"
#include "structure/item.h"

struct CVrLightMood {
    CVrxStringU name;
    int32_t id = 0;          // what commands name it by
    int32_t defaultIcon = 0; // symbol number
    int32_t index = 0;       // position in the structure's list, skipped entries counted
};

class CVrStructureItemLightController2 : public CVrStructureItem {
public:
    ~CVrStructureItemLightController2() override;

    bool ReadOwnKeys(const CVrJsonValue& object) override;

    VrPtrs<CVrLightMood> moods; // owned

private:
    void ClearMoods();
};
