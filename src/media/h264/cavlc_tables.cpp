// The lists of the standard, as lengths and values of the codes, and what unfolds them. The unfolding runs in
// the compiler and refuses lists in which one code is the beginning of another.
#include "media/h264/cavlc_tables.h"

#include <bit>

namespace h264::cavlc {

namespace {

constexpr u32 MaxTotalCoeff = 16;

// ---- Table 9-5: coeff_token ----

// [nC class][TrailingOnes][TotalCoeff]; length 0 where the table has no entry.
constexpr u8 TokenLength[3][4][MaxTotalCoeff + 1] = {
    {
        {1, 6, 8, 9, 10, 11, 13, 13, 13, 14, 14, 15, 15, 16, 16, 16, 16},
        {0, 2, 6, 8, 9, 10, 11, 13, 13, 14, 14, 15, 15, 15, 16, 16, 16},
        {0, 0, 3, 7, 8, 9, 10, 11, 13, 13, 14, 14, 15, 15, 16, 16, 16},
        {0, 0, 0, 5, 6, 7, 8, 9, 10, 11, 13, 14, 14, 15, 15, 16, 16},
    },
    {
        {2, 6, 6, 7, 8, 8, 9, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14},
        {0, 2, 5, 6, 6, 7, 8, 9, 11, 11, 12, 12, 13, 13, 14, 14, 14},
        {0, 0, 3, 6, 6, 7, 8, 9, 11, 11, 12, 12, 13, 13, 13, 14, 14},
        {0, 0, 0, 4, 4, 5, 6, 6, 7, 9, 11, 11, 12, 13, 13, 13, 14},
    },
    {
        {4, 6, 6, 6, 7, 7, 7, 7, 8, 8, 9, 9, 9, 10, 10, 10, 10},
        {0, 4, 5, 5, 5, 5, 6, 6, 7, 8, 8, 9, 9, 9, 10, 10, 10},
        {0, 0, 4, 5, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9, 10, 10, 10},
        {0, 0, 0, 4, 4, 4, 4, 4, 5, 6, 7, 8, 8, 9, 10, 10, 10},
    },
};
constexpr u8 TokenCode[3][4][MaxTotalCoeff + 1] = {
    {
        {1, 5, 7, 7, 7, 7, 15, 11, 8, 15, 11, 15, 11, 15, 11, 7, 4},
        {0, 1, 4, 6, 6, 6, 6, 14, 10, 14, 10, 14, 10, 1, 14, 10, 6},
        {0, 0, 1, 5, 5, 5, 5, 5, 13, 9, 13, 9, 13, 9, 13, 9, 5},
        {0, 0, 0, 3, 3, 4, 4, 4, 4, 4, 12, 12, 8, 12, 8, 12, 8},
    },
    {
        {3, 11, 7, 7, 7, 4, 7, 15, 11, 15, 11, 8, 15, 11, 7, 9, 7},
        {0, 2, 7, 10, 6, 6, 6, 6, 14, 10, 14, 10, 14, 10, 11, 8, 6},
        {0, 0, 3, 9, 5, 5, 5, 5, 13, 9, 13, 9, 13, 9, 6, 10, 5},
        {0, 0, 0, 5, 4, 6, 8, 4, 4, 4, 12, 8, 12, 12, 8, 1, 4},
    },
    {
        {15, 15, 11, 8, 15, 11, 9, 8, 15, 11, 15, 11, 8, 13, 9, 5, 1},
        {0, 14, 15, 12, 10, 8, 14, 10, 14, 14, 10, 14, 10, 7, 12, 8, 4},
        {0, 0, 13, 14, 11, 9, 13, 9, 13, 10, 13, 9, 13, 9, 11, 7, 3},
        {0, 0, 0, 12, 11, 10, 9, 8, 13, 12, 12, 12, 8, 12, 10, 6, 2},
    },
};

// nC == -1 [TrailingOnes][TotalCoeff]
constexpr u32 MaxChromaDcCoeff = 4;
constexpr u8 ChromaDcTokenLength[4][MaxChromaDcCoeff + 1] = {
    {2, 6, 6, 6, 6}, {0, 1, 6, 7, 8}, {0, 0, 3, 7, 8}, {0, 0, 0, 6, 7}};
constexpr u8 ChromaDcTokenCode[4][MaxChromaDcCoeff + 1] = {
    {1, 7, 4, 3, 2}, {0, 1, 6, 3, 3}, {0, 0, 1, 2, 2}, {0, 0, 0, 5, 0}};

struct TokenUnfolder {
    CoeffTokenTable table{};

    // Writes a code into every cell whose bits begin with it.
    constexpr void Add(u32 tokenClass, u32 length, u32 code, u32 trailingOnes, u32 totalCoeff) {
        const u32 significant = static_cast<u32>(std::bit_width(code));
        const u32 zeros = code == 0 ? length : length - significant;
        const u32 behind = code == 0 ? 0 : significant - 1; // bits behind the leading one
        const u32 tail = code == 0 ? 0 : code & ((1u << behind) - 1);
        const u32 first = tail << (3 - behind);
        for (u32 i = first; i < first + (1u << (3 - behind)); ++i)
            Put(tokenClass, zeros, i, length, trailingOnes, totalCoeff);
    }

    // The one code that consists of zeros alone (chroma DC: 0000000) covers all that begins so.
    constexpr void AddAllZero(u32 tokenClass, u32 length, u32 trailingOnes, u32 totalCoeff) {
        for (u32 zeros = length; zeros <= MaxLeadingZeros; ++zeros) {
            for (u32 i = 0; i < 8; ++i)
                Put(tokenClass, zeros, i, length, trailingOnes, totalCoeff);
        }
    }

    constexpr void Put(u32 tokenClass, u32 zeros, u32 tail, u32 length, u32 trailingOnes, u32 totalCoeff) {
        CoeffToken& entry = table.entries[tokenClass][zeros][tail];
        if (entry.length != 0)
            throw "coeff_token: one code begins with another";
        entry.length = static_cast<u8>(length);
        entry.totalCoeff = static_cast<u8>(totalCoeff);
        entry.trailingOnes = static_cast<u8>(trailingOnes);
    }
};

// 8 <= nC: six bits, xxxxyy with TotalCoeff - 1 and TrailingOnes; 0000 11 is the empty block.
constexpr FixedLengthTokenTable UnfoldFixedLengthTokens() {
    constexpr u32 EmptyBlock = 3;
    FixedLengthTokenTable table{};
    for (u32 code = 0; code < 1u << FixedTokenBits; ++code) {
        const u32 totalCoeff = code == EmptyBlock ? 0 : (code >> 2) + 1;
        const u32 trailingOnes = code == EmptyBlock ? 0 : code & 3;
        if (trailingOnes <= totalCoeff)
            table.entries[code] = {FixedTokenBits, static_cast<u8>(totalCoeff),
                                   static_cast<u8>(trailingOnes)};
    }
    return table;
}

constexpr CoeffTokenTable UnfoldTokens() {
    TokenUnfolder unfolder;
    for (u32 tokenClass = 0; tokenClass < 3; ++tokenClass) {
        for (u32 ones = 0; ones < 4; ++ones) {
            for (u32 total = 0; total <= MaxTotalCoeff; ++total) {
                if (TokenLength[tokenClass][ones][total] != 0)
                    unfolder.Add(tokenClass, TokenLength[tokenClass][ones][total],
                                 TokenCode[tokenClass][ones][total], ones, total);
            }
        }
    }
    for (u32 ones = 0; ones < 4; ++ones) {
        for (u32 total = 0; total <= MaxChromaDcCoeff; ++total) {
            const u32 length = ChromaDcTokenLength[ones][total];
            if (length != 0 && ChromaDcTokenCode[ones][total] != 0)
                unfolder.Add(NcChromaDc, length, ChromaDcTokenCode[ones][total], ones, total);
            else if (length != 0)
                unfolder.AddAllZero(NcChromaDc, length, ones, total);
        }
    }
    return unfolder.table;
}

// ---- Tables 9-7 to 9-10 ----

// A row of codes whose values count up from 0.
struct Row {
    u8 count;
    u8 length[16];
    u8 code[16];
};

// Tables 9-7 and 9-8, rows by tzVlcIndex
constexpr Row TotalZerosRows[15] = {
    {16, {1, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9, 9}, {1, 3, 2, 3, 2, 3, 2, 3, 2, 3, 2, 3, 2, 3, 2, 1}},
    {15, {3, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 6, 6, 6, 6}, {7, 6, 5, 4, 3, 5, 4, 3, 2, 3, 2, 3, 2, 1, 0}},
    {14, {4, 3, 3, 3, 4, 4, 3, 3, 4, 5, 5, 6, 5, 6}, {5, 7, 6, 5, 4, 3, 4, 3, 2, 3, 2, 1, 1, 0}},
    {13, {5, 3, 4, 4, 3, 3, 3, 4, 3, 4, 5, 5, 5}, {3, 7, 5, 4, 6, 5, 4, 3, 3, 2, 2, 1, 0}},
    {12, {4, 4, 4, 3, 3, 3, 3, 3, 4, 5, 4, 5}, {5, 4, 3, 7, 6, 5, 4, 3, 2, 1, 1, 0}},
    {11, {6, 5, 3, 3, 3, 3, 3, 3, 4, 3, 6}, {1, 1, 7, 6, 5, 4, 3, 2, 1, 1, 0}},
    {10, {6, 5, 3, 3, 3, 2, 3, 4, 3, 6}, {1, 1, 5, 4, 3, 3, 2, 1, 1, 0}},
    {9, {6, 4, 5, 3, 2, 2, 3, 3, 6}, {1, 1, 1, 3, 3, 2, 2, 1, 0}},
    {8, {6, 6, 4, 2, 2, 3, 2, 5}, {1, 0, 1, 3, 2, 1, 1, 1}},
    {7, {5, 5, 3, 2, 2, 2, 4}, {1, 0, 1, 3, 2, 1, 1}},
    {6, {4, 4, 3, 3, 1, 3}, {0, 1, 1, 2, 1, 3}},
    {5, {4, 4, 2, 1, 3}, {0, 1, 1, 1, 1}},
    {4, {3, 3, 1, 2}, {0, 1, 1, 1}},
    {3, {2, 2, 1}, {0, 1, 1}},
    {2, {1, 1}, {0, 1}},
};

// Table 9-9 (a)
constexpr Row ChromaDcTotalZerosRows[3] = {
    {4, {1, 2, 3, 3}, {1, 1, 1, 0}}, {3, {1, 2, 2}, {1, 1, 0}}, {2, {1, 1}, {1, 0}}};

// Table 9-10, rows by zerosLeft; of the last row the codes of three bits
constexpr Row RunBeforeRows[7] = {
    {2, {1, 1}, {1, 0}},
    {3, {1, 2, 2}, {1, 1, 0}},
    {4, {2, 2, 2, 2}, {3, 2, 1, 0}},
    {5, {2, 2, 2, 3, 3}, {3, 2, 1, 1, 0}},
    {6, {2, 2, 3, 3, 3, 3}, {3, 2, 3, 2, 1, 0}},
    {7, {2, 3, 3, 3, 3, 3, 3}, {3, 0, 1, 3, 2, 5, 4}},
    {7, {3, 3, 3, 3, 3, 3, 3}, {7, 6, 5, 4, 3, 2, 1}},
};

constexpr void UnfoldRow(const Row& row, u32 bits, Code* out) {
    for (u32 value = 0; value < row.count; ++value) {
        const u32 spare = bits - row.length[value];
        const u32 first = static_cast<u32>(row.code[value]) << spare;
        for (u32 i = first; i < first + (1u << spare); ++i) {
            if (out[i].length != 0)
                throw "one code begins with another";
            out[i].length = row.length[value];
            out[i].value = static_cast<u8>(value);
        }
    }
}

template <class Table, size_t Rows>
constexpr Table UnfoldRows(const Row (&rows)[Rows], u32 bits) {
    Table table{};
    for (size_t i = 0; i < Rows; ++i)
        UnfoldRow(rows[i], bits, table.entries[i]);
    return table;
}

} // namespace

constexpr CoeffTokenTable coeffTokens = UnfoldTokens();
constexpr FixedLengthTokenTable fixedLengthTokens = UnfoldFixedLengthTokens();
constexpr TotalZerosTable totalZeros = UnfoldRows<TotalZerosTable>(TotalZerosRows, TotalZerosBits);
constexpr ChromaDcTotalZerosTable chromaDcTotalZeros =
    UnfoldRows<ChromaDcTotalZerosTable>(ChromaDcTotalZerosRows, 3);
constexpr RunBeforeTable runBefore = UnfoldRows<RunBeforeTable>(RunBeforeRows, 3);

constexpr u8 codedBlockPattern[2][CodedBlockPatterns] = {
    {47, 31, 15, 0,  23, 27, 29, 30, 7, 11, 13, 14, 39, 43, 45, 46, 16, 3,  5,  10, 12, 19, 21, 26,
     28, 35, 37, 42, 44, 1,  2,  4,  8, 17, 18, 20, 24, 6,  9,  22, 25, 32, 33, 34, 36, 40, 38, 41},
    {0,  16, 1,  2,  4,  8,  32, 3,  5,  10, 12, 15, 47, 7,  11, 13, 14, 6,  9,  31, 35, 37, 42, 44,
     33, 34, 36, 40, 39, 43, 45, 46, 17, 18, 20, 24, 19, 21, 26, 28, 23, 27, 29, 30, 22, 25, 38, 41},
};

} // namespace h264::cavlc
