// Model of a page that lists unlike controls. Groups themselves are plain items of type 0.
#pragma once

#include "structure/item.h"

class CVrStructureItemTreeLayout : public CVrStructureItem {};
