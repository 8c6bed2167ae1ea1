// Model of a window monitor: the windows that it watches.
#pragma once

#include "foundation/ptr_array.h"
#include "structure/item.h"

struct CVrWindowRecord {
    int32_t id = 0;
    int32_t room = 0; // of the window itself, else that of the monitor
    CVrxStringU name;
};

class CVrStructureItemWindowsMonitor : public CVrStructureItem {
public:
    ~CVrStructureItemWindowsMonitor() override;

    bool ReadOwnKeys(const CVrJsonValue& object) override;

    // Windows with an id of 32 or more have no bit and count as closed.
    uint32_t openMask = 0;           // bit n: the window with the id n is open
    uint32_t tiltedMask = 0;         // bit n: the window with the id n is tilted
    VrPtrs<CVrWindowRecord> windows; // owned, in document order

private:
    void ClearWindows();
};
