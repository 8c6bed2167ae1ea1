// The code tables of CAVLC (clause 9.2), unfolded at compile time from the standard's lists into tables that
// are indexed by the next bits.
#pragma once

#include "media/h264/types.h"

namespace h264::cavlc {

struct alignas(4) CoeffToken { // one load
    u8 length = 0;             // bits; 0: no such code
    u8 totalCoeff = 0;
    u8 trailingOnes = 0;
};

// All codes of Table 9-5 have at most three bits behind the leading one, so that leading zeros and these
// three bits tell them apart. [nC class][leading zeros][next three bits]
enum CoeffTokenClass : u32 { Nc0To1 = 0, Nc2To3 = 1, Nc4To7 = 2, NcChromaDc = 3, Nc8Up = 4 };
constexpr u32 CoeffTokenClasses = 4; // but for Nc8Up
constexpr u32 MaxLeadingZeros = 15;
struct CoeffTokenTable {
    CoeffToken entries[CoeffTokenClasses][MaxLeadingZeros + 1][8];
};
extern const CoeffTokenTable coeffTokens;
// Nc8Up: codes of one length. [next six bits]
constexpr u32 FixedTokenBits = 6;
struct FixedLengthTokenTable {
    CoeffToken entries[1u << FixedTokenBits];
};
extern const FixedLengthTokenTable fixedLengthTokens;

// A decoded number with the length of its code; length 0: no such code.
struct Code {
    u8 length = 0;
    u8 value = 0;
};

// Tables 9-7 and 9-8: total_zeros. [tzVlcIndex - 1][next nine bits]
constexpr u32 TotalZerosBits = 9;
struct TotalZerosTable {
    Code entries[15][1u << TotalZerosBits];
};
extern const TotalZerosTable totalZeros;

// Table 9-9 (a): total_zeros of chroma DC. [tzVlcIndex - 1][next three bits]
struct ChromaDcTotalZerosTable {
    Code entries[3][8];
};
extern const ChromaDcTotalZerosTable chromaDcTotalZeros;

// Table 9-10 up to three bits. [min(zerosLeft, 7) - 1][next three bits]; the longer codes of the last row are
// a run of zeros that CAVLC counts itself.
struct RunBeforeTable {
    Code entries[7][8];
};
extern const RunBeforeTable runBefore;

// Table 9-4: coded_block_pattern by codeNum. [intra, inter][codeNum]
constexpr u32 CodedBlockPatterns = 48;
extern const u8 codedBlockPattern[2][CodedBlockPatterns];

} // namespace h264::cavlc
