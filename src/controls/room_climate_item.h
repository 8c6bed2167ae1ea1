// Model of a room climate controller. Temperatures are tenths of a degree.
#pragma once

#include "structure/item.h"

class CVrStructureItemHeatIRoomController2 : public CVrStructureItem {
public:
    // Values of `operatingMode`; any other means that the room is neither heated nor cooled.
    enum OperatingMode : int32_t { Heating = 1, Cooling = 2, HeatingToo = 4, CoolingToo = 5 };
    // Values of `activeMode`.
    enum ActiveMode : int32_t { Eco = 0, Comfort = 1, BuildingProtection = 2, FixedSetpoint = 3, Off = 255 };
    static constexpr int32_t kFixedSetpointBit = 16; // any value with it is a fixed setpoint too

    bool IsActive() const override { return (activeMode & 0xFF) != Off; }

    int32_t currentTemp = 0;
    int32_t targetTemp = 210;
    int32_t operatingMode = 0;
    int32_t activeMode = Eco;
};
