// The one kind of text by which the display commands the installation.
#pragma once

#include <cstdint>

class CVrStructureItem;

// The value of a command: a whole part and tenths, printed as "%d.%d".
struct CommandValue {
    int32_t whole = 0;
    int32_t tenths = 0; // 0..9
};

constexpr CommandValue kCommandOne{1, 0};
constexpr CommandValue kCommandZero{0, 0};
constexpr CommandValue kCommandHalf{0, 5};

// Sends {"U":uuid,"E":event,"T":2,"V":value} through the command slot. The uuid is printed as a signed number.
// Without a command slot (before command 1) nothing leaves and nothing is reported.
void SendTextCommand(const CVrStructureItem& item, int32_t event, CommandValue value = kCommandOne);
