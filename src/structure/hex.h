// Hexadecimal digits as they stand in identities and colours.
#pragma once

#include <cstdint>

// Appends the digit to the value, of which the low 32 bits are kept; false, and no change, for another
// character.
inline bool AppendHexDigit(char c, uint32_t& value) {
    const char lower = static_cast<char>(c | 0x20);
    if (c >= '0' && c <= '9')
        value = value << 4 | static_cast<uint32_t>(c - '0');
    else if (lower >= 'a' && lower <= 'f')
        value = value << 4 | static_cast<uint32_t>(lower - 'a' + 10);
    else
        return false;
    return true;
}
