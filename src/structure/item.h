// One control or group of the house. The item is the one store of a control's state: a page can be destroyed
// and rebuilt from it at any time. Each kind of control derives from it in its own file
// (src/controls/NAME_item.h), adds its state and reads its own keys of the structure JSON in the two hooks
// below.
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
    // Destroys everything below, without recursion: houses may be nested as deep as they like.
    ~CVrStructureItem() override;
    CVrStructureItem(const CVrStructureItem&) = delete;
    CVrStructureItem& operator=(const CVrStructureItem&) = delete;

    // Appends the item, which this one owns from now on.
    void AddChild(CVrStructureItem* child);
    // Takes the last child out and destroys it with everything below.
    void DeleteLastChild();
    void DeleteChildren();

    // A walk through the tree below `top`, parents before their children, in document order and without
    // recursion:
    //
    //     for (CVrStructureItem* item = &top; item; item = item->NextBelow(top))
    //
    // begins with `top` itself.
    CVrStructureItem* NextBelow(const CVrStructureItem& top) const;

    // ---- What the kinds of control answer ----

    // Reads what belongs to the kind from its JSON object, behind the common keys. False drops the item.
    virtual bool ReadOwnKeys(const CVrJsonValue&) { return true; }
    // The item gets no page, no tile and no menu button, and does not count in a group.
    virtual bool IsHidden() const { return false; }
    // The item belongs to the list of audio zones that music pages can group.
    virtual bool IsAudioZone() const { return false; }
    // The item shows a value and takes no commands: its tile is a plain row that no touch reaches.
    virtual bool IsReadOnlyValue() const { return false; }
    // The texts "0" and "1" of the value mean off and on.
    virtual bool IsOnOffValue() const { return false; }
    // Whether what the item controls is running, which postpones the rest of the display.
    virtual bool IsActive() const;
    // Class of the item's page; empty for a type without one.
    virtual CVrxStringU GetPageClass() const;

    bool IsGroup() const { return type == ObjectType::Group; }

    // The member "V" of the last state object; null if there is none.
    const CVrJsonValue* GetStateValue() const;

    uint32_t uuid = 0; // in state messages and commands
    int32_t type = 0;  // see ObjectType
    CVrxStringU name;
    int32_t room = 0;              // 0: none
    int32_t category = 0;          // 0: none
    int32_t icon = 0;              // symbol number; 0: none
    int32_t kind = 0;              // sub-type of the shading types
    bool defaultScreen = false;    // shown first; at most one in the tree
    bool activeController = false; // the room's active controller: while it runs, the display does not rest
    VrPtrs<CVrStructureItem> children;  // owned, in document order
    CVrStructureItem* parent = nullptr; // not owned
    CVrGuiElement* element = nullptr;   // page or tile that shows the item; not owned
    CVrJsonParser stateJson;            // last state object of the item, one key "V"

private:
    friend class CVrStructure;

    uint32_t m_place = 0;     // index in the parent's children
    bool m_isEntered = false; // reading it came to its end, so that the structure's table has it
};

// Keys that several kinds read.
namespace item_json {
// The object's `details`, null if it has none.
const CVrJsonValue* Details(const CVrJsonValue& object);
// Each returns false and leaves `out` alone if the object is null, the key is missing, or its value is of
// another JSON type than wanted.
bool ReadNumberKey(const CVrJsonValue* object, const char* key, int32_t& out);
bool ReadTextKey(const CVrJsonValue* object, const char* key, CVrxStringU& out);
bool ReadBoolKey(const CVrJsonValue* object, const char* key, bool& out);
} // namespace item_json
