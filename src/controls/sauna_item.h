// Model of a sauna, with or without vaporiser. Temperatures are tenths of a degree.
#pragma once

#include "structure/item.h"

class CVrStructureItemSaunaController : public CVrStructureItem {
public:
    bool IsActive() const override { return stateValue != 0; }

    int32_t currentTemp = 0;
    int32_t targetTemp = 900;
    int32_t stateValue =
        0; // as the installation reports it; 0 or below: off, 2 and 3: drying, other: running
};
