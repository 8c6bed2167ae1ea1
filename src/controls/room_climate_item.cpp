#include "controls/room_climate_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemHeatIRoomController2)
