// Model of a blind, curtain or awning.
#pragma once

#include "structure/item.h"

class CVrStructureItemAutoJalousie2 : public CVrStructureItem {
public:
    bool ReadOwnKeys(const CVrJsonValue& object) override;
};
