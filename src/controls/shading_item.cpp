#include "controls/shading_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemAutoJalousie2)

bool CVrStructureItemAutoJalousie2::ReadOwnKeys(const CVrJsonValue& object) {
    item_json::ReadNumberKey(item_json::Details(object), "type", kind);
    return true;
}
