#include "structure/item.h"

#include "foundation/class_factory.h"

// A group without a kind of its own.
VR_REGISTER_CLASS(CVrStructureItem)

CVrStructureItem::~CVrStructureItem() {
    for (uint32_t i = children.GetSize(); i > 0; i--)
        delete children[i - 1];
}

CVrxStringU CVrStructureItem::GetPageClass() const {
    return CClassFactory::GetGuiClassName(static_cast<uint32_t>(type));
}

bool CVrStructureItem::IsActive() const {
    const CVrJsonValue* root = stateJson.GetRoot();
    const CVrJsonValue* first = root && root->GetChildCount() > 0 ? root->GetChild(0) : nullptr;
    const CVrJsonValue* value = first && first->IsObject() ? first->Find("V") : nullptr;
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

void ReadNumberKey(const CVrJsonValue* object, const char* key, int32_t& out) {
    const CVrJsonValue* value = object ? object->Find(key) : nullptr;
    if (value && value->IsNumber())
        out = value->ToInt32();
}

void ReadTextKey(const CVrJsonValue* object, const char* key, CVrxStringU& out) {
    const CVrJsonValue* value = object ? object->Find(key) : nullptr;
    if (value && value->IsString())
        out = value->value;
}

void ReadBoolKey(const CVrJsonValue* object, const char* key, bool& out) {
    ReadBool(object ? object->Find(key) : nullptr, out);
}

} // namespace item_json
