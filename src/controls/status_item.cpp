#include "controls/status_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemStatus)

namespace {

constexpr double kIoTypes = 3; // numbers below are known

} // namespace

bool CVrStructureItemStatus::ReadOwnKeys(const CVrJsonValue& object) {
    const CVrJsonValue* details = item_json::Details(object);
    const CVrJsonValue* ioNode = details ? details->Find("T") : nullptr;
    if (ioNode && ioNode->IsNumber() && ioNode->number >= 0 && ioNode->number < kIoTypes) {
        ioType = static_cast<uint8_t>(ioNode->ToInt32());
        hasIoType = true;
    }
    item_json::ReadTextKey(details, "DU", format);
    // These stand in `details` or, where it lacks them, in the object itself.
    const CVrJsonValue none;
    const CVrJsonValue& inner = details ? *details : none;
    if (!ReadBool(inner.Find("WA"), writable))
        ReadBool(object.Find("WA"), writable);
    hasStep = ReadNumber(inner.Find("ST"), step) || ReadNumber(object.Find("ST"), step);
    hasMin = ReadNumber(inner.Find("MIN"), min) || ReadNumber(object.Find("MIN"), min);
    hasMax = ReadNumber(inner.Find("MAX"), max) || ReadNumber(object.Find("MAX"), max);
    return true;
}

CVrxStringU CVrStructureItemStatus::GetPageClass() const {
    return IsWritable() ? CVrxStringU("CVrGuiGenericIoWritable") : CVrStructureItem::GetPageClass();
}
