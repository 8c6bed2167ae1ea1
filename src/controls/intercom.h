// The page of a door station: it announces the function and does nothing else yet.
#pragma once

#include "shell/frame.h"

class CVrGuiIntercom : public CVrGuiFrame {
public:
    CVrGuiIntercom();

    CVrxStringU GetClassName() const override { return "Intercom"; }
    void CreateContent(CVrStructureItem* newItem) override;
};
