// Huffman tables of ITU-T T.81 (Annex C, F.2.2): built once from a DHT segment, then read by one look-up a
// symbol.
//
// The look-up takes the next kLookupBits bits of the stream. If a whole coefficient (code and its additional
// bits) lies in them, the entry holds the finished value; otherwise it holds the symbol, or nothing for a
// longer code, which the canonical limits then resolve.
#pragma once

#include <cstdint>

namespace jpeg {

inline constexpr uint32_t kMaxCodeLength = 16;
inline constexpr uint32_t kMaxSymbols = 256;
inline constexpr uint32_t kMaxDcSize = 11; // size category of a DC difference, 8-bit samples

enum class TableClass : uint8_t { Dc = 0, Ac = 1 };

// One entry of the look-up. value != 0: the finished AC coefficient, run zeros before it, length bits in all.
// value == 0: a symbol whose code has length bits; length 0: no code this short fits.
struct LookupEntry {
    int16_t value = 0;
    uint8_t symbolOrRun = 0;
    uint8_t length = 0;
};

struct HuffmanTable {
    static constexpr uint32_t kLookupBits = 10; // measured: 9 is 4 % slower, 11 no faster
    static constexpr uint32_t kLookupSize = 1u << kLookupBits;

    // Result of Parse for bytes that define no table.
    static constexpr uint32_t kMalformed = 0;

    // Builds the table from the segment's bytes behind the class-and-id byte: 16 counts, then the symbols.
    // Returns the number of bytes used, or kMalformed: truncated, more codes than a length can hold, more
    // symbols than bytes have values, a DC symbol above 11. The table's former content is lost either way.
    uint32_t Parse(const uint8_t* bytes, uint32_t available, TableClass tableClass);

    // Finds the symbol of the code that begins next16, the next 16 bits of the stream. Returns the code's
    // length, or 0 if no code matches. For an AC table, entries that hold a whole coefficient are not for
    // this routine.
    uint32_t FindSymbol(uint32_t next16, uint8_t& symbol) const {
        const LookupEntry& entry = lookup[next16 >> (kMaxCodeLength - kLookupBits)];
        symbol = entry.symbolOrRun;
        return entry.length != 0 ? entry.length : FindLong(next16, symbol);
    }

    uint8_t counts[kMaxCodeLength + 1] = {};       // [length], number of codes
    uint16_t firstCode[kMaxCodeLength + 1] = {};   // [length], first canonical code
    uint16_t firstSymbol[kMaxCodeLength + 1] = {}; // [length], index of its symbol
    uint32_t limit[kMaxCodeLength + 1] = {};       // [length], end of the codes up to here, as 16-bit prefix
    uint8_t symbols[kMaxSymbols] = {};             // in the order of their codes
    LookupEntry lookup[kLookupSize];               // [next kLookupBits bits]

private:
    uint32_t FindLong(uint32_t next16, uint8_t& symbol) const;
    bool AssignCodes();
    void BuildLookup(TableClass tableClass);
    void FillLookup(uint32_t code, uint32_t length, uint8_t symbol, TableClass tableClass);
};

// F.2.2.1 EXTEND: the signed value of size additional bits (size 1..15).
inline int32_t Extend(uint32_t bits, uint32_t size) {
    const bool negative = bits < (1u << (size - 1));
    return static_cast<int32_t>(bits) - (negative ? (1 << size) - 1 : 0);
}

} // namespace jpeg
