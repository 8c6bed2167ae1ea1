// An element without behaviour of its own: a plain CVrGuiElement with a class name.
#pragma once

#include "gui/element.h"

class CVrGuiDummy : public CVrGuiElement {
public:
    CVrGuiDummy();
};
