#include "controls/windows_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemWindowsMonitor)

CVrStructureItemWindowsMonitor::~CVrStructureItemWindowsMonitor() {
    ClearWindows();
}

void CVrStructureItemWindowsMonitor::ClearWindows() {
    for (CVrWindowRecord* window : windows)
        delete window;
    windows.Clear();
}

bool CVrStructureItemWindowsMonitor::ReadOwnKeys(const CVrJsonValue& object) {
    const CVrJsonValue* list = object.Find("windows");
    if (!list || !list->IsArray())
        return true;
    ClearWindows();
    for (const CVrJsonValue* entry : list->Children()) {
        const CVrJsonValue* number = entry->Find("id");
        if (!number || !number->IsNumber())
            continue;
        auto* window = new CVrWindowRecord;
        window->id = number->ToInt32();
        window->room = room;
        item_json::ReadNumberKey(entry, entry->Find("R") ? "R" : "room", window->room);
        item_json::ReadTextKey(entry, "name", window->name);
        windows.Add(window);
    }
    return true;
}
