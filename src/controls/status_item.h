// Model of a generic input or value: shown formatted, and set in steps where it is writable.
#pragma once

#include "structure/item.h"

class CVrStructureItemStatus : public CVrStructureItem {
public:
    // Values of `ioType`.
    enum IoType : uint8_t { IoDigital = 0, IoAnalog = 1, IoText = 2 };

    bool ReadOwnKeys(const CVrJsonValue& object) override;
    CVrxStringU GetPageClass() const override;

    bool hasIoType = false;
    uint8_t ioType = IoDigital;
    bool writable = false;
    bool hasStep = false, hasMin = false, hasMax = false;
    double step = 0, min = 0, max = 0;
    CVrxStringU format; // of the value, with its unit
};
