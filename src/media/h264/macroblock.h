// What is known of a macroblock: the record that lives as long as the picture, and the work area that holds
// the syntax of the one macroblock being decoded.
//
// 4x4 blocks are numbered in raster order here (block = y * 4 + x), not in the order of 6.4.3, which only the
// parsing follows:
//
//      0  1  2  3        D B C      neighbouring macroblocks
//      4  5  6  7        A .
//      8  9 10 11
//     12 13 14 15
#pragma once

#include "media/h264/image.h"

namespace h264 {

// One numbering for I and P slices: a P slice's mb_type + 1, an I slice's mb_type + 6.
enum class MbType : u8 {
    P_Skip = 0,
    P_L0_16x16 = 1,
    P_L0_L0_16x8 = 2,
    P_L0_L0_8x16 = 3,
    P_8x8 = 4,
    P_8x8ref0 = 5,
    I_NxN = 6,
    I_16x16_0_0_0 = 7, // the first of 24, Table 7-11
    I_16x16_3_2_1 = 30,
    I_PCM = 31
};

constexpr bool IsIntra(MbType type) {
    return type >= MbType::I_NxN;
}
constexpr bool IsIntra16x16(MbType type) {
    return type >= MbType::I_16x16_0_0_0 && type <= MbType::I_16x16_3_2_1;
}

constexpr u32 LumaBlocks = 16;
constexpr u32 ResidualBlocks = 24; // 16 luma, 4 Cb, 4 Cr
constexpr u32 FirstCbBlock = 16;
constexpr u32 FirstCrBlock = 20;
constexpr u32 CoefficientsPerBlock = 16;

constexpr i8 NoReference = -1; // refIdx of an intra macroblock

// In quarter luma samples.
struct MotionVector {
    i16 x = 0;
    i16 y = 0;

    bool operator==(const MotionVector&) const = default;
};

struct Macroblock {
    MbType mbType{};
    u8 disable_deblocking_filter_idc = 0;
    i8 filterOffsetA = 0; // -12..12
    i8 filterOffsetB = 0; // -12..12
    u8 qpY = 0;           // 0..51
    i8 chroma_qp_index_offset = 0;
    u16 codedLumaBlocks = 0;              // bit = block: has coefficients, for the deblocking
    u32 sliceId = 0;                      // 1 and up; 0: no slice has touched it
    u32 decoded = 0;                      // how often it was decoded in this picture
    u8 totalCoeff[ResidualBlocks] = {};   // [block], non-zero coefficients; Cb and Cr in rasters of 2x2
    u8 intra4x4PredMode[LumaBlocks] = {}; // [block]
    i8 refIdx[4] = {};                    // [8x8 partition]
    u8 refPicture[4] = {};                // [8x8 partition], number of the reference's buffer
    MotionVector mv[LumaBlocks];          // [block]
    Macroblock* mbA = nullptr;            // left; null outside the picture, as the next three
    Macroblock* mbB = nullptr;            // above
    Macroblock* mbC = nullptr;            // above right
    Macroblock* mbD = nullptr;            // above left
};

// Clears the records of a picture and links the neighbours.
void InitMacroblocks(Macroblock* mbs, const PictureSize& size);

// Table 7-11: how the residual of an Intra_16x16 macroblock and its prediction are folded into its type.
struct Intra16x16Type {
    u8 predMode;          // 0..3
    u8 codedBlockPattern; // bits 0..3 luma, 4..5 chroma
};
constexpr Intra16x16Type DecodeIntra16x16Type(MbType type) {
    const u32 n = static_cast<u32>(type) - static_cast<u32>(MbType::I_16x16_0_0_0);
    return {static_cast<u8>(n % 4), static_cast<u8>((n / 4 % 3) << 4 | (n >= 12 ? 15u : 0u))};
}

// Table 7-17; P_8x8 macroblocks have one for each quarter.
enum class SubMbType : u8 { P_L0_8x8 = 0, P_L0_8x4 = 1, P_L0_4x8 = 2, P_L0_4x4 = 3 };

// macroblock_layer() as it was read (7.3.5).
struct MacroblockSyntax {
    MbType mbType{};
    u8 intra_chroma_pred_mode = 0;           // 0..3
    u8 codedBlockPattern = 0;                // bits 0..3 luma 8x8 blocks, bits 4..5 chroma
    i8 mb_qp_delta = 0;                      // -26..25
    i8 remIntra4x4PredMode[LumaBlocks] = {}; // in the order of 6.4.3; -1: prev_intra4x4_pred_mode_flag
    u8 refIdx[4] = {};                       // [partition or quarter]
    SubMbType subMbType[4] = {};
    i32 mvd[LumaBlocks][2] = {};    // in parsing order: x, y
    const u8* pcmSamples = nullptr; // 384 bytes in the RBSP, I_PCM only
    u8 totalCoeff[ResidualBlocks] = {};
    u32 codedBlocks = 0; // bit = block: `coefficients` of the block are not all zero
    // Scaled (8.5.12.1), each block stored column by column. All zero between macroblocks.
    alignas(16) i32 coefficients[ResidualBlocks][CoefficientsPerBlock] = {};
    i32 lumaDc[LumaBlocks] = {}; // Intra16x16DCLevel by block, unscaled
    i32 chromaDc[2][4] = {};     // [Cb, Cr][block], unscaled
    bool hasLumaDc = false;
};

constexpr i8 UsePredictedMode = -1; // remIntra4x4PredMode: prev_intra4x4_pred_mode_flag is 1

// 6.4.3: position of the 4x4 block that is coded as number `blkIdx`, in raster order.
constexpr u8 BlockOfIndex[LumaBlocks] = {0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15};

} // namespace h264
