// The object types of the structure that have a control on this display.
#pragma once

#include <cstdint>

namespace ObjectType {
enum : int32_t {
    Group = 0,
    Status = 110,
    Switch = 342,
    AutoJalousie = 348,
    GateController = 352,
    SaunaController = 441,
    SaunaVaporController = 442,
    Intercom = 458,
    HeatIRoomController2 = 469,
    AutoJalousie2 = 476,
    WindowsMonitor = 482,
    LightController2 = 484,
    PushButton = 493,
    RoofWindow = 501,
    ShadeRoof = 502,
    MusicPlayer = 507,
};

// The three types that the shading control serves; where a group is examined they count as one.
constexpr bool IsShading(int32_t type) {
    return type == AutoJalousie || type == AutoJalousie2 || type == ShadeRoof;
}
} // namespace ObjectType
