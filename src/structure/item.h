// One control or group of the house. The item is the one store of a control's state: a page can be destroyed and
// rebuilt from it at any time. Each kind of control derives from it in its own file (src/controls/NAME_item.h), adds
// its state and reads its own keys of the structure JSON in the two hooks below.
#pragma once

#include <cstdint>

#include "foundation/json.h"
#include "foundation/object.h"
#include "foundation/ptr_array.h"
#include "foundation/string.h"
#include "structure/object_types.h"

class CVrGuiElement;

class CVrStructureItem : public CVrObject {
public:
    CVrStructureItem() = default;
    // Destroys the children.
    ~CVrStructureItem() override;
    CVrStructureItem(const CVrStructureItem&) = delete;
    CVrStructureItem& operator=(const CVrStructureItem&) = delete;

    // ---- What the kinds of control answer ----

    // Reads what belongs to the kind from its JSON object, behind the common keys. False drops the item.
    virtual bool ReadOwnKeys(const CVrJsonValue&) { return true; }
    // The item gets no page, no tile and no menu button, and does not count in a group.
    virtual bool IsHidden() const { return false; }
    // The item belongs to the list of audio zones that music pages can group.
    virtual bool IsAudioZone() const { return false; }
    // Whether what the item controls is running, which postpones the rest of the display.
    virtual bool IsActive() const;
    // Class of the item's page; empty for a type without one.
    virtual CVrxStringU GetPageClass() const;

    bool IsGroup() const { return type == ObjectType::Group; }

    uint32_t uuid = 0;             // in state messages and commands
    int32_t type = 0;              // see ObjectType
    CVrxStringU name;
    int32_t room = 0;              // 0: none
    int32_t category = 0;          // 0: none
    int32_t icon = 0;              // symbol number; 0: none
    int32_t kind = 0;              // sub-type of the shading types
    bool defaultScreen = false;    // shown first; at most one in the tree
    bool activeController = false; // while it runs, its page stays on screen
    VrPtrs<CVrStructureItem> children; // owned, in document order
    CVrStructureItem* parent = nullptr;
    CVrGuiElement* element = nullptr;  // page or tile that shows the item; not owned
    CVrJsonParser stateJson;           // last state object of the item, one key "V"
};

// Keys that several kinds read.
namespace item_json {
// The object's `details`, null if it has none.
const CVrJsonValue* Details(const CVrJsonValue& object);
// Each leaves `out` alone if the key is missing, or has another JSON type than wanted.
void ReadNumberKey(const CVrJsonValue* object, const char* key, int32_t& out);
void ReadTextKey(const CVrJsonValue* object, const char* key, CVrxStringU& out);
void ReadBoolKey(const CVrJsonValue* object, const char* key, bool& out);
} // namespace item_json
