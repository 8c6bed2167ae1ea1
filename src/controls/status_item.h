// Model of a generic input or value: shown formatted, and set in steps where it is writable.
#pragma once

#include "structure/item.h"

class CVrStructureItemStatus : public CVrStructureItem {
public:
    // Values of `ioType`.
    enum IoType : uint8_t { IoDigital = 0, IoAnalog = 1, IoText = 2 };

    bool ReadOwnKeys(const CVrJsonValue& object) override;
    CVrxStringU GetPageClass() const override;
    bool IsReadOnlyValue() const override { return !IsWritable(); }
    bool IsOnOffValue() const override { return ioType == IoDigital; }

    // Only an analog value can be set here; all others are shown alone, whatever the structure says.
    bool IsWritable() const { return writable && ioType == IoAnalog; }

    uint8_t ioType = IoDigital;
    bool hasIoType = false; // the structure gave it
    bool hasState = false;  // a state has reached the item: the next two count and stateJson does not
    bool boolState = false;
    bool writable = false;
    bool hasStep = false; // which of the next three the structure gave
    bool hasMin = false;
    bool hasMax = false;
    double step = 0;
    double min = 0;
    double max = 0;
    CVrxStringU valueText; // analog or text state
    CVrxStringU format;    // of the value, with its unit
};
