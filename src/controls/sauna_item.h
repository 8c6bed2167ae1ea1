// Model of a sauna or steam bath controller.
#pragma once

#include "structure/item.h"

class CVrStructureItemSaunaController : public CVrStructureItem {};
