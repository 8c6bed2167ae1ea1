// Model of a music zone.
#pragma once

#include "structure/item.h"

class CVrStructureItemMusicPlayer : public CVrStructureItem {
public:
    bool ReadOwnKeys(const CVrJsonValue& object) override;
    bool IsHidden() const override { return hidden; }
    bool IsAudioZone() const override { return fixGroup || hidden; }

    int32_t playerId = 0;
    bool fixGroup = false; // a fixed group of players
    bool hidden = false;   // only a member of groups: no page, no tile
    CVrxStringU server;
    CVrxStringU groupId;
};
