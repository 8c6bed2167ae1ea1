#include "controls/push_button_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemPushButton)
