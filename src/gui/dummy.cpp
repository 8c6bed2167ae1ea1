#include "gui/dummy.h"

VR_REGISTER_ELEMENT(CVrGuiDummy)

CVrGuiDummy::CVrGuiDummy() {
    type = ElementType::Dummy;
    className = "CVrGuiDummy";
}
