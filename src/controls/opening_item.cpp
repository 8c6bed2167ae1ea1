#include "controls/opening_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemRoofWindow)
VR_REGISTER_CLASS(CVrStructureItemGateController)

bool CVrStructureItemOpening::ReadOwnKeys(const CVrJsonValue& object) {
    const CVrJsonValue* details = item_json::Details(object);
    if (!item_json::ReadNumberKey(details, "type", detailType))
        item_json::ReadNumberKey(details, "T", detailType);
    return true;
}
