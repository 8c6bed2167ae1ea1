// Model of a switch: an on/off output.
#pragma once

#include "structure/item.h"

class CVrStructureItemSwitch : public CVrStructureItem {
public:
    bool IsActive() const override { return active; }

    bool active = false; // on
};
