#include "controls/tree_layout_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemTreeLayout)
