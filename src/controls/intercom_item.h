// Model of a door station.
#pragma once

#include "structure/item.h"

class CVrStructureItemIntercom : public CVrStructureItem {};
