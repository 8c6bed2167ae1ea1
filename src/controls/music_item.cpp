#include "controls/music_item.h"

#include "foundation/class_factory.h"

VR_REGISTER_CLASS(CVrStructureItemMusicPlayer)

CVrStructureItemMusicPlayer::~CVrStructureItemMusicPlayer() {
    for (uint32_t i = favourites.GetSize(); i > 0; i--)
        delete favourites[i - 1];
}

bool CVrStructureItemMusicPlayer::ReadOwnKeys(const CVrJsonValue& object) {
    const CVrJsonValue* details = item_json::Details(object);
    item_json::ReadNumberKey(details, "playerid", playerId);
    item_json::ReadBoolKey(details, "fixGroup", fixGroup);
    item_json::ReadBoolKey(details, "hidden", hidden);
    item_json::ReadTextKey(details, "server", server);
    item_json::ReadTextKey(details, "groupid", groupId);
    return true;
}
