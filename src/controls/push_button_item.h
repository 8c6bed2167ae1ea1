// Model of a push button: a momentary output. Nothing here writes `active`; it comes from outside.
#pragma once

#include "structure/item.h"

class CVrStructureItemPushButton : public CVrStructureItem {
public:
    bool IsActive() const override { return active; }

    bool active = false; // on
};
