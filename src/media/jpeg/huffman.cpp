#include "media/jpeg/huffman.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace jpeg {

uint32_t HuffmanTable::Parse(const uint8_t* bytes, uint32_t available, TableClass tableClass) {
    if (available < kMaxCodeLength)
        return kMalformed;
    uint32_t total = 0;
    for (uint32_t length = 1; length <= kMaxCodeLength; ++length) {
        counts[length] = bytes[length - 1];
        total += counts[length];
    }
    if (total > kMaxSymbols || total > available - kMaxCodeLength)
        return kMalformed;
    std::memcpy(symbols, bytes + kMaxCodeLength, total);
    for (uint32_t i = 0; tableClass == TableClass::Dc && i < total; ++i)
        if (symbols[i] > kMaxDcSize)
            return kMalformed;
    if (!AssignCodes())
        return kMalformed;
    BuildLookup(tableClass);
    return kMaxCodeLength + total;
}

// C.2: codes of one length count upward, and the next length goes on with twice the number reached.
// False if a length holds more codes than its prefixes leave room for.
bool HuffmanTable::AssignCodes() {
    uint32_t code = 0;
    uint32_t symbol = 0;
    for (uint32_t length = 1; length <= kMaxCodeLength; ++length) {
        code <<= 1;
        firstCode[length] = static_cast<uint16_t>(code);
        firstSymbol[length] = static_cast<uint16_t>(symbol);
        code += counts[length];
        symbol += counts[length];
        if (code > (1u << length))
            return false;
        limit[length] = code << (kMaxCodeLength - length);
    }
    return true;
}

void HuffmanTable::BuildLookup(TableClass tableClass) {
    std::fill(std::begin(lookup), std::end(lookup), LookupEntry());
    for (uint32_t length = 1; length <= kLookupBits; ++length)
        for (uint32_t i = 0; i < counts[length]; ++i)
            FillLookup(firstCode[length] + i, length, symbols[firstSymbol[length] + i], tableClass);
}

// Writes the entries of all bit patterns that begin with the code.
void HuffmanTable::FillLookup(uint32_t code, uint32_t length, uint8_t symbol, TableClass tableClass) {
    const uint32_t freeBits = kLookupBits - length;
    const uint32_t first = code << freeBits;
    const uint32_t size = symbol & 15u;
    const bool whole = tableClass == TableClass::Ac && size != 0 && size <= freeBits;
    for (uint32_t rest = 0; rest < (1u << freeBits); ++rest) {
        LookupEntry& entry = lookup[first + rest];
        entry.symbolOrRun = whole ? symbol >> 4 : symbol;
        entry.length = static_cast<uint8_t>(whole ? length + size : length);
        entry.value = static_cast<int16_t>(whole ? Extend(rest >> (freeBits - size), size) : 0);
    }
}

uint32_t HuffmanTable::FindLong(uint32_t next16, uint8_t& symbol) const {
    for (uint32_t length = kLookupBits + 1; length <= kMaxCodeLength; ++length) {
        if (next16 >= limit[length])
            continue;
        const uint32_t code = next16 >> (kMaxCodeLength - length);
        symbol = symbols[firstSymbol[length] + code - firstCode[length]];
        return length;
    }
    return 0;
}

} // namespace jpeg
