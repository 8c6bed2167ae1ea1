#include "controls/intercom.h"

VR_REGISTER_ELEMENT(CVrGuiIntercom)

CVrGuiIntercom::CVrGuiIntercom() {
    className = "CVrGuiIntercom";
}

void CVrGuiIntercom::CreateContent(CVrStructureItem* newItem) {
    CVrGuiFrame::CreateContent(newItem);
    comingSoon = true;
}
