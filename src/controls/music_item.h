// Model of a music zone.
#pragma once

#include "foundation/ptr_array.h"
#include "structure/item.h"

struct CVrMusicFavourite {
    uint32_t id = 0;          // what the start command names it by
    int32_t defaultCover = 0; // key of its default cover, 700 to 709; any other value: none chosen yet
    CVrxStringU name;
    CVrxStringU source; // source type
};

class CVrStructureItemMusicPlayer : public CVrStructureItem {
public:
    ~CVrStructureItemMusicPlayer() override;

    bool ReadOwnKeys(const CVrJsonValue& object) override;
    bool IsHidden() const override { return hidden; }
    bool IsAudioZone() const override { return fixGroup || hidden; }
    bool IsActive() const override { return playing; }

    int32_t playerId = 0;  // number of the zone; upper half of its cover keys
    bool fixGroup = false; // the zone belongs to a fixed group
    bool hidden = false;   // the zone only serves in its group: no page, no tile
    CVrxStringU groupId;   // zones with equal ones form a group
    CVrxStringU server;    // kept, not used
    bool playing = false;
    int32_t activeFavourite = 0;          // `id` of the favourite that plays; below 1: none
    int32_t volume = 0;                   // 0..100
    VrPtrs<CVrMusicFavourite> favourites; // owned
    CVrxStringU sourceType;               // what plays now: kind of source, title, artist
    CVrxStringU title;
    CVrxStringU artist;
    bool coversReset = false; // the cache's flags for this zone's covers have been cleared once
};
