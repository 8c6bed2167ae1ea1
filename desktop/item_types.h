// The kinds of item a structure can hold, as far as a host needs to know them.
#pragma once

#include <string_view>

namespace desktop {

enum ItemType : int {
    Group = 0,
    GenericIo = 110,
    Switch = 342,
    Blind348 = 348,
    Gate = 352,
    Sauna = 441,
    SteamSauna = 442,
    Intercom = 458,
    RoomClimate = 469,
    Blind476 = 476,
    WindowsMonitor = 482,
    Light = 484,
    PushButton = 493,
    RoofWindow = 501,
    RoofShade = 502,
    MusicPlayer = 507,
};

// "light", "switch", ...; empty for a number that the display does not know.
constexpr std::string_view ItemTypeName(int type) {
    switch (type) {
    case GenericIo:
        return "value";
    case Switch:
        return "switch";
    case Blind348:
    case Blind476:
        return "blind";
    case Gate:
        return "gate";
    case Sauna:
    case SteamSauna:
        return "sauna";
    case Intercom:
        return "intercom";
    case RoomClimate:
        return "room climate";
    case WindowsMonitor:
        return "windows monitor";
    case Light:
        return "light";
    case PushButton:
        return "push button";
    case RoofWindow:
        return "roof window";
    case RoofShade:
        return "roof shade";
    case MusicPlayer:
        return "music zone";
    default:
        return "";
    }
}

} // namespace desktop
