// Model of a blind, curtain, awning or roof shade. Its `kind` comes from the structure.
#pragma once

#include "structure/item.h"

class CVrStructureItemAutoJalousie2 : public CVrStructureItem {
public:
    bool ReadOwnKeys(const CVrJsonValue& object) override;
    bool IsActive() const override { return direction != 0; }

    double position = 0;    // how far it is closed: up to 1.001 a fraction of 1, above that a percentage
    int32_t direction = 0;  // 0: stands still, 1: moves up or opens, other: moves down or closes
    bool automatic = false; // runs on its automatic
    bool lock1 = false;     // either one locks it
    bool lock2 = false;
};
