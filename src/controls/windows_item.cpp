#include "controls/windows_item.h"

#include "foundation/class_factory.h"
#include "foundation/log.h"

VR_REGISTER_CLASS(CVrStructureItemWindowsMonitor)

CVrStructureItemWindowsMonitor::~CVrStructureItemWindowsMonitor() {
    ClearWindows();
}

void CVrStructureItemWindowsMonitor::ClearWindows() {
    for (uint32_t i = windows.GetSize(); i > 0; i--)
        delete windows[i - 1];
    windows.Clear();
}

bool CVrStructureItemWindowsMonitor::ReadOwnKeys(const CVrJsonValue& object) {
    const CVrJsonValue* list = object.Find("windows");
    if (!list || !list->IsArray())
        return true;
    ClearWindows();
    for (const CVrJsonValue* entry : list->Children()) {
        int32_t id = 0;
        if (!item_json::ReadNumberKey(entry, "id", id)) {
            Log(LogWarning, "CVrStructureItemWindowsMonitor::ReadOwnKeys", "U=%x: a window without id", uuid);
            continue;
        }
        auto* window = new CVrWindowRecord;
        window->id = id;
        window->room = room;
        if (!item_json::ReadNumberKey(entry, "R", window->room))
            item_json::ReadNumberKey(entry, "room", window->room);
        item_json::ReadTextKey(entry, "name", window->name);
        windows.Add(window);
    }
    return true;
}
