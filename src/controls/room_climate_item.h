// Model of a room climate controller.
#pragma once

#include "structure/item.h"

class CVrStructureItemHeatIRoomController2 : public CVrStructureItem {};
