// Models of what opens: the roof window and the gate.
#pragma once

#include "structure/item.h"

class CVrStructureItemOpening : public CVrStructureItem {
public:
    bool ReadOwnKeys(const CVrJsonValue& object) override;

    int32_t detailType = 0; // kind of window or gate
};

class CVrStructureItemRoofWindow : public CVrStructureItemOpening {};

class CVrStructureItemGateController : public CVrStructureItemOpening {};
