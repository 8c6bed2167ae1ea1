#include "structure/item.h"

#include "foundation/class_factory.h"

// A group without a kind of its own.
VR_REGISTER_CLASS(CVrStructureItem)

CVrStructureItem::~CVrStructureItem() {
    DeleteChildren();
}

void CVrStructureItem::AddChild(CVrStructureItem* child) {
    child->parent = this;
    child->m_place = children.GetSize();
    children.Add(child);
}

void CVrStructureItem::DeleteLastChild() {
    const uint32_t last = children.GetSize() - 1;
    CVrStructureItem* child = children[last];
    children.SetSize(last);
    delete child;
}

// Each child hands its own children up before it goes, so that no destructor finds any.
void CVrStructureItem::DeleteChildren() {
    while (!children.IsEmpty()) {
        const uint32_t last = children.GetSize() - 1;
        CVrStructureItem* child = children[last];
        children.SetSize(last);
        for (CVrStructureItem* grandchild : child->children)
            children.Add(grandchild);
        child->children.Clear();
        delete child;
    }
}

CVrStructureItem* CVrStructureItem::NextBelow(const CVrStructureItem& top) const {
    if (!children.IsEmpty())
        return children[0];
    for (const CVrStructureItem* item = this; item != &top; item = item->parent) {
        const uint32_t next = item->m_place + 1;
        if (next < item->parent->children.GetSize())
            return item->parent->children[next];
    }
    return nullptr;
}

CVrxStringU CVrStructureItem::GetPageClass() const {
    return CClassFactory::GetGuiClassName(static_cast<uint32_t>(type));
}

const CVrJsonValue* CVrStructureItem::GetStateValue() const {
    const CVrJsonValue* state = stateJson.GetRoot();
    return state && state->IsObject() ? state->Find("V") : nullptr;
}

bool CVrStructureItem::IsActive() const {
    const CVrJsonValue* value = GetStateValue();
    if (!value)
        return false;
    if (value->IsBoolean())
        return value->IsTrue();
    if (value->IsNumber())
        return value->number != 0;
    if (!value->IsString())
        return false;
    for (const char* off : {"", "0", "false", "FALSE", "off", "OFF"})
        if (value->value == off)
            return false;
    return true;
}

namespace item_json {

const CVrJsonValue* Details(const CVrJsonValue& object) {
    const CVrJsonValue* details = object.Find("details");
    return details && details->IsObject() ? details : nullptr;
}

bool ReadNumberKey(const CVrJsonValue* object, const char* key, int32_t& out) {
    const CVrJsonValue* value = object ? object->Find(key) : nullptr;
    if (!value || !value->IsNumber())
        return false;
    out = value->ToInt32();
    return true;
}

bool ReadTextKey(const CVrJsonValue* object, const char* key, CVrxStringU& out) {
    const CVrJsonValue* value = object ? object->Find(key) : nullptr;
    if (!value || !value->IsString())
        return false;
    out = value->value;
    return true;
}

bool ReadBoolKey(const CVrJsonValue* object, const char* key, bool& out) {
    return ReadBool(object ? object->Find(key) : nullptr, out);
}

} // namespace item_json
