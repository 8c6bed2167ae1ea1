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

// The number of up to 8 leading hexadecimal digits; what follows them does not count.
inline uint32_t ParseHex(const char* text) {
    constexpr uint32_t kMaxDigits = 8;
    uint32_t value = 0;
    for (uint32_t i = 0; i < kMaxDigits && AppendHexDigit(text[i], value); i++) {
    }
    return value;
}
