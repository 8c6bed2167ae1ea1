#include "controls/switch_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemSwitch)
