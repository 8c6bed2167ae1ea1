#include "controls/status_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemStatus)

namespace {

constexpr double kIoTypes = 3; // numbers below are known

// A key of `details`, or else of the object itself.
const CVrJsonValue* FindEither(const CVrJsonValue* details, const CVrJsonValue& object, const char* key) {
    const CVrJsonValue* value = details ? details->Find(key) : nullptr;
    return value ? value : object.Find(key);
}

} // namespace

bool CVrStructureItemStatus::ReadOwnKeys(const CVrJsonValue& object) {
    const CVrJsonValue* details = item_json::Details(object);
    const CVrJsonValue* ioNode = details ? details->Find("T") : nullptr;
    if (ioNode && ioNode->IsNumber() && ioNode->number >= 0 && ioNode->number < kIoTypes) {
        ioType = static_cast<uint8_t>(ioNode->ToInt32());
        hasIoType = true;
    }
    item_json::ReadTextKey(details, "DU", format);
    ReadBool(FindEither(details, object, "WA"), writable);
    hasStep = ReadNumber(FindEither(details, object, "ST"), step);
    hasMin = ReadNumber(FindEither(details, object, "MIN"), min);
    hasMax = ReadNumber(FindEither(details, object, "MAX"), max);
    return true;
}

CVrxStringU CVrStructureItemStatus::GetPageClass() const {
    return writable && ioType == IoAnalog ? CVrxStringU("CVrGuiGenericIoWritable") : CVrStructureItem::GetPageClass();
}
