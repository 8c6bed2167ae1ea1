// Models of what opens: the roof window and the gate. They share their fields and their keys.
#pragma once

#include "structure/item.h"

class CVrStructureItemOpening : public CVrStructureItem {
public:
    bool ReadOwnKeys(const CVrJsonValue& object) override;

    double position = 0;    // how far it is open: up to 1.001 a fraction of 1, above that a percentage
    int32_t direction = 0;  // 0: stands still, 1: opens, other: closes
    int32_t detailType = 0; // kind of window or gate
    bool lock1 = false;     // either one locks it
    bool lock2 = false;
};

class CVrStructureItemRoofWindow : public CVrStructureItemOpening {
public:
    bool IsActive() const override { return direction != 0; }
};

class CVrStructureItemGateController : public CVrStructureItemOpening {};
