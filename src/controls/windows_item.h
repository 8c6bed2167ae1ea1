// Model of a window monitor: the windows that it watches.
#pragma once

#include "foundation/ptr_array.h"
#include "structure/item.h"

struct CVrWindowRecord {
    int32_t id = 0;
    int32_t room = 0;
    CVrxStringU name;
};

class CVrStructureItemWindowsMonitor : public CVrStructureItem {
public:
    ~CVrStructureItemWindowsMonitor() override;

    bool ReadOwnKeys(const CVrJsonValue& object) override;

    VrPtrs<CVrWindowRecord> windows; // owned

private:
    void ClearWindows();
};
