// Parsing of macroblocks. Sections: prediction syntax (mb_pred, sub_mb_pred), residual, the layer itself.
#include "media/h264/macroblock_layer.h"

#include <cstring>

#include "media/h264/cavlc.h"
#include "media/h264/scaling.h"

namespace h264 {

namespace {

constexpr u32 LastMbType = static_cast<u32>(MbType::I_PCM);
constexpr u32 MaxIntraChromaPredMode = 3;
constexpr u32 MaxSubMbType = 3;
constexpr i32 MinQpDelta = -26;
constexpr i32 MaxQpDelta = 25;
constexpr i32 QpRange = MaxQp + 1;
// Far beyond every vector that reconstruction accepts, and small enough to add to one.
constexpr i32 MaxMvd = 1 << 15;

// ---- Prediction syntax ----

// 7.3.5.1: prev_intra4x4_pred_mode_flag and rem_intra4x4_pred_mode of all blocks.
void ReadIntra4x4PredModes(BitReader& reader, MacroblockSyntax* syntax) {
    for (i8& mode : syntax->remIntra4x4PredMode) {
        const u32 bits = reader.Peek32() >> 28; // flag and rem_intra4x4_pred_mode
        const bool prev_intra4x4_pred_mode_flag = bits >= 8;
        mode = prev_intra4x4_pred_mode_flag ? UsePredictedMode : static_cast<i8>(bits);
        reader.Skip(prev_intra4x4_pred_mode_flag ? 1 : 4);
    }
}

bool ReadIntraChromaPredMode(BitReader& reader, MacroblockSyntax* syntax) {
    const u32 mode = reader.ReadUe();
    syntax->intra_chroma_pred_mode = static_cast<u8>(mode);
    return mode <= MaxIntraChromaPredMode;
}

// ref_idx_l0, 7.3.5.1 and 7.3.5.2; not written where there is no choice.
bool ReadRefIdx(BitReader& reader, u32 numActive, u32 count, u8* refIdx) {
    for (u32 i = 0; i < count; ++i) {
        const u32 index = numActive > 1 ? reader.ReadTe(numActive - 1) : 0;
        if (index >= numActive)
            return false;
        refIdx[i] = static_cast<u8>(index);
    }
    return true;
}

// mvd_l0, 7.3.5.1 and 7.3.5.2
bool ReadMvds(BitReader& reader, u32 count, i32 (*mvd)[2]) {
    for (u32 i = 0; i < count; ++i) {
        mvd[i][0] = reader.ReadSe();
        mvd[i][1] = reader.ReadSe();
        if (mvd[i][0] < -MaxMvd || mvd[i][0] > MaxMvd || mvd[i][1] < -MaxMvd || mvd[i][1] > MaxMvd)
            return false;
    }
    return true;
}

constexpr u8 SubPartitions[] = {1, 2, 2, 4}; // [SubMbType]

// 7.3.5.2 sub_mb_pred()
bool ReadSubMbPred(BitReader& reader, u32 numActive, MacroblockSyntax* syntax) {
    for (SubMbType& type : syntax->subMbType) {
        const u32 sub_mb_type = reader.ReadUe();
        if (sub_mb_type > MaxSubMbType)
            return false;
        type = static_cast<SubMbType>(sub_mb_type);
    }
    const u32 choices = syntax->mbType == MbType::P_8x8ref0 ? 1 : numActive;
    if (!ReadRefIdx(reader, choices, 4, syntax->refIdx))
        return false;
    u32 count = 0;
    for (SubMbType type : syntax->subMbType)
        count += SubPartitions[static_cast<u32>(type)];
    return ReadMvds(reader, count, syntax->mvd);
}

// 7.3.5.1 mb_pred()
bool ReadMbPred(BitReader& reader, u32 numActive, MacroblockSyntax* syntax) {
    switch (syntax->mbType) {
    case MbType::P_L0_16x16:
        return ReadRefIdx(reader, numActive, 1, syntax->refIdx) && ReadMvds(reader, 1, syntax->mvd);
    case MbType::P_L0_L0_16x8:
    case MbType::P_L0_L0_8x16:
        return ReadRefIdx(reader, numActive, 2, syntax->refIdx) && ReadMvds(reader, 2, syntax->mvd);
    case MbType::P_8x8:
    case MbType::P_8x8ref0:
        return ReadSubMbPred(reader, numActive, syntax);
    case MbType::I_NxN:
        ReadIntra4x4PredModes(reader, syntax);
        return ReadIntraChromaPredMode(reader, syntax);
    default:
        return ReadIntraChromaPredMode(reader, syntax);
    }
}

// ---- Residual ----

// Zig-zag scan of 8.5.6 onto blocks that are stored column by column.
constexpr u8 ZigzagScan[CoefficientsPerBlock] = {0, 4, 1, 2, 5, 8, 12, 9, 6, 3, 7, 10, 13, 14, 11, 15};
// The same scan onto a 4x4 matrix of DC coefficients in raster order, 8.5.2.
constexpr u8 LumaDcScan[LumaBlocks] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};
constexpr u8 ChromaDcScan[4] = {0, 1, 2, 3};

// The counts of coefficients around and within one component of the macroblock, for the nC rule of 9.2.1. Row
// 0 and column 0 are the neighbours.
template <u32 Side>
struct CoeffCounts {
    static constexpr u8 Unavailable = 0x80;

    u8 count[Side + 1][Side + 1];

    void Load(const MacroblockContext& context, u32 firstBlock) {
        for (u32 i = 0; i < Side; ++i) {
            count[0][i + 1] =
                context.b ? context.b->totalCoeff[firstBlock + (Side - 1) * Side + i] : Unavailable;
            count[i + 1][0] =
                context.a ? context.a->totalCoeff[firstBlock + i * Side + Side - 1] : Unavailable;
        }
    }

    // nC of the block at (x, y): the mean of left and above, or the one that is available.
    u32 At(u32 x, u32 y) const {
        const u32 sum = u32{count[y + 1][x]} + count[y][x + 1];
        return sum < Unavailable ? (sum + 1) >> 1 : sum & (Unavailable - 1);
    }
};

class ResidualParser {
public:
    ResidualParser(BitReader& bits, const SliceContext& slice, const MacroblockContext& context)
        : reader(bits),
          syntax(*slice.syntax),
          pattern(syntax.codedBlockPattern),
          lumaScale(LevelScale(slice.qpY)),
          chromaScale(LevelScale(ChromaQp(slice.qpY + slice.pps->chroma_qp_index_offset))) {
        luma.Load(context, 0);
        chroma[0].Load(context, FirstCbBlock);
        chroma[1].Load(context, FirstCrBlock);
    }

    // 7.3.5.3 residual()
    bool Parse() { return ParseLuma() && ParseChroma() && !reader.Failed(); }

private:
    bool ParseLuma();
    bool ParseLumaQuarter(u32 quarter, bool coded, bool acOnly);
    bool ParseChroma();
    bool ParseChromaAc(u32 plane);

    // Reads block number `block` and notes its count; `ac`: without the DC coefficient.
    i32 ParseBlock(u32 block, u32 nC, bool ac, const u16* scale) {
        const ResidualTarget target{syntax.coefficients[block], ZigzagScan + (ac ? 1 : 0), scale};
        const i32 total =
            DecodeResidualBlock(reader, CoeffTokenClassOf(nC), CoefficientsPerBlock - (ac ? 1 : 0), target);
        if (total > 0) {
            syntax.totalCoeff[block] = static_cast<u8>(total);
            syntax.codedBlocks |= 1u << block;
        }
        return total;
    }

    BitReader& reader;
    MacroblockSyntax& syntax;
    const u32 pattern; // coded_block_pattern
    const u16* const lumaScale;
    const u16* const chromaScale;
    CoeffCounts<4> luma;
    CoeffCounts<2> chroma[2];
};

bool ResidualParser::ParseLumaQuarter(u32 quarter, bool coded, bool acOnly) {
    for (u32 i = 0; i < 4; ++i) {
        const u32 block = BlockOfIndex[quarter * 4 + i];
        const u32 x = block % 4;
        const u32 y = block / 4;
        const i32 total = coded ? ParseBlock(block, luma.At(x, y), acOnly, lumaScale) : 0;
        if (total < 0)
            return false;
        luma.count[y + 1][x + 1] = static_cast<u8>(total);
    }
    return true;
}

bool ResidualParser::ParseLuma() {
    const bool intra16x16 = IsIntra16x16(syntax.mbType);
    if (intra16x16) {
        const ResidualTarget target{syntax.lumaDc, LumaDcScan, nullptr};
        const i32 total =
            DecodeResidualBlock(reader, CoeffTokenClassOf(luma.At(0, 0)), CoefficientsPerBlock, target);
        if (total < 0)
            return false;
        syntax.hasLumaDc = total > 0;
    }
    for (u32 quarter = 0; quarter < 4; ++quarter) {
        if (!ParseLumaQuarter(quarter, (pattern >> quarter & 1) != 0, intra16x16))
            return false;
    }
    return true;
}

bool ResidualParser::ParseChromaAc(u32 plane) {
    for (u32 i = 0; i < 4; ++i) {
        const u32 block = FirstCbBlock + plane * 4 + i;
        const i32 total = ParseBlock(block, chroma[plane].At(i % 2, i / 2), true, chromaScale);
        if (total < 0)
            return false;
        chroma[plane].count[i / 2 + 1][i % 2 + 1] = static_cast<u8>(total);
    }
    return true;
}

bool ResidualParser::ParseChroma() {
    constexpr u32 AnyChroma = 0x30;
    constexpr u32 ChromaAc = 0x20;
    if ((pattern & AnyChroma) == 0)
        return true;
    for (i32(&levels)[4] : syntax.chromaDc) {
        const ResidualTarget target{levels, ChromaDcScan, nullptr};
        if (DecodeResidualBlock(reader, cavlc::NcChromaDc, 4, target) < 0)
            return false;
    }
    return (pattern & ChromaAc) == 0 || (ParseChromaAc(0) && ParseChromaAc(1));
}

// ---- The layer ----

// mb_type, Tables 7-11 and 7-13
bool ReadMbType(BitReader& reader, const SliceHeader& header, MacroblockSyntax* syntax) {
    const u32 firstType =
        header.IsIntra() ? static_cast<u32>(MbType::I_NxN) : static_cast<u32>(MbType::P_L0_16x16);
    const u32 mb_type = reader.ReadUe();
    if (mb_type > LastMbType - firstType)
        return false;
    syntax->mbType = static_cast<MbType>(mb_type + firstType);
    return true;
}

// 7.3.5: pcm_alignment_zero_bit and the samples, which are not copied.
bool ReadPcm(BitReader& reader, MacroblockSyntax* syntax) {
    while (!reader.ByteAligned()) {
        if (reader.ReadFlag())
            return false;
    }
    syntax->pcmSamples = reader.BytePointer();
    if (reader.BitsLeft() < SamplesPerMb * 8)
        return false;
    reader.Skip(SamplesPerMb * 8);
    return true;
}

// coded_block_pattern, 9.1.2; of Intra_16x16 it is part of mb_type.
bool ReadCodedBlockPattern(BitReader& reader, MacroblockSyntax* syntax) {
    if (IsIntra16x16(syntax->mbType)) {
        syntax->codedBlockPattern = DecodeIntra16x16Type(syntax->mbType).codedBlockPattern;
        return true;
    }
    const u32 codeNum = reader.ReadUe(); // me(v)
    if (codeNum >= cavlc::CodedBlockPatterns)
        return false;
    syntax->codedBlockPattern = cavlc::codedBlockPattern[IsIntra(syntax->mbType) ? 0 : 1][codeNum];
    return true;
}

// 7.4.5: QP_Y wraps around within 0..51.
bool ReadQpDelta(BitReader& reader, SliceContext& slice) {
    const i32 mb_qp_delta = reader.ReadSe();
    if (mb_qp_delta < MinQpDelta || mb_qp_delta > MaxQpDelta)
        return false;
    slice.qpY = (slice.qpY + mb_qp_delta + QpRange) % QpRange;
    return true;
}

void ClearResidualState(MacroblockSyntax* syntax) {
    std::memset(syntax->totalCoeff, 0, sizeof syntax->totalCoeff);
    syntax->codedBlocks = 0;
    syntax->codedBlockPattern = 0;
    syntax->hasLumaDc = false;
}

} // namespace

bool DecodeMacroblockLayer(BitReader& reader, SliceContext& slice, const MacroblockContext& context) {
    MacroblockSyntax& syntax = *slice.syntax;
    ClearResidualState(&syntax);
    if (!ReadMbType(reader, *slice.header, &syntax))
        return false;
    if (syntax.mbType == MbType::I_PCM)
        return ReadPcm(reader, &syntax);
    if (!ReadMbPred(reader, slice.header->num_ref_idx_l0_active, &syntax) ||
        !ReadCodedBlockPattern(reader, &syntax) || reader.Failed())
        return false;
    if (syntax.codedBlockPattern == 0 && !IsIntra16x16(syntax.mbType))
        return true;
    return ReadQpDelta(reader, slice) && ResidualParser(reader, slice, context).Parse();
}

void SetSkippedMacroblock(MacroblockSyntax* syntax) {
    ClearResidualState(syntax);
    syntax->mbType = MbType::P_Skip;
}

} // namespace h264
