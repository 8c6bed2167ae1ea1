#include "controls/opening_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemRoofWindow)
VR_REGISTER_CLASS(CVrStructureItemGateController)

bool CVrStructureItemOpening::ReadOwnKeys(const CVrJsonValue& object) {
    const CVrJsonValue* details = item_json::Details(object);
    const bool hasType = details && details->Find("type");
    item_json::ReadNumberKey(details, hasType ? "type" : "T", detailType);
    return true;
}
