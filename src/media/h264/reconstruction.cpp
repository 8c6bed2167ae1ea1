// Reconstruction of one macroblock. Sections: DC transforms, intra prediction with its residual, inter
// prediction with its residual, raw samples, the macroblock.
#include "media/h264/reconstruction.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "media/h264/intra_prediction.h"
#include "media/h264/motion.h"
#include "media/h264/scaling.h"

namespace h264 {

namespace {

constexpr u32 BlockSize = 4;
constexpr u32 LumaBlockMask = 0xFFFF; // of codedBlocks

// The three places of a macroblock in the picture.
struct Targets {
    u8* samples[Planes];
    ptrdiff_t stride[Planes];

    Targets(const Image& image, u32 mbX, u32 mbY) {
        for (u32 plane = 0; plane < Planes; ++plane) {
            samples[plane] = image.MbSamples(static_cast<Plane>(plane), mbX, mbY);
            stride[plane] = image.size.Stride(static_cast<Plane>(plane));
        }
    }

    u8* LumaBlock(u32 block) const {
        return samples[Luma] + static_cast<ptrdiff_t>(block / 4 * BlockSize) * stride[Luma] +
               block % 4 * BlockSize;
    }
    u8* ChromaBlock(Plane plane, u32 block) const {
        return samples[plane] + static_cast<ptrdiff_t>(block / 2 * BlockSize) * stride[plane] +
               block % 2 * BlockSize;
    }
};

// ---- 8.5.10, 8.5.11 DC coefficients ----

// One dimension of the 4x4 transform of DC coefficients.
void HadamardLine(i32* v, u32 step) {
    const i32 a = v[0] + v[step], b = v[0] - v[step];
    const i32 c = v[2 * step] + v[3 * step], d = v[2 * step] - v[3 * step];
    v[0] = a + c;
    v[step] = a - c;
    v[2 * step] = b - d;
    v[3 * step] = b + d;
}

// 8.5.10: the DC values of Intra_16x16 take their places in the blocks.
void SpreadLumaDc(MacroblockSyntax& syntax, i32 qpY) {
    if (!syntax.hasLumaDc)
        return;
    i32* const dc = syntax.lumaDc;
    for (u32 row = 0; row < 4; ++row)
        HadamardLine(dc + row * 4, 1);
    for (u32 column = 0; column < 4; ++column)
        HadamardLine(dc + column, 4);
    const i32 scale = LevelScale(qpY)[0];
    for (u32 block = 0; block < LumaBlocks; ++block) {
        syntax.coefficients[block][0] = (dc[block] * scale + 2) >> 2;
        dc[block] = 0;
    }
}

// 8.5.11
void SpreadChromaDc(MacroblockSyntax& syntax, i32 qpC) {
    const i32 scale = LevelScale(qpC)[0];
    for (u32 plane = 0; plane < 2; ++plane) {
        i32* const c = syntax.chromaDc[plane];
        const i32 f[4] = {c[0] + c[1] + c[2] + c[3], c[0] - c[1] + c[2] - c[3], c[0] + c[1] - c[2] - c[3],
                          c[0] - c[1] - c[2] + c[3]};
        for (u32 block = 0; block < 4; ++block) {
            syntax.coefficients[FirstCbBlock + plane * 4 + block][0] = (f[block] * scale) >> 1;
            c[block] = 0;
        }
    }
}

class Reconstructor {
public:
    Reconstructor(SliceContext& s, const MacroblockContext& c, const SampleRoutines& r)
        : slice(s), context(c), routines(r), syntax(*s.syntax), mb(*c.mb), targets(s.image, c.mbX, c.mbY) {}

    bool Run();

private:
    void UpdateRecord();
    bool Intra();
    bool IntraLuma4x4();
    bool IntraLuma16x16();
    bool IntraChroma();
    bool Inter();
    bool LumaResidual();
    bool ChromaResidual();
    bool BlockResidual(u32 block, u8* dst, ptrdiff_t stride);
    void RawSamples();

    IntraNeighbours MacroblockNeighbours() const;
    IntraNeighbours BlockNeighbours(const IntraNeighbours& mbNeighbours, u32 block) const;
    bool UsableForIntra(const Macroblock* neighbour) const;
    Intra4x4PredMode DerivePredMode(u32 index, u32 block) const;
    u8 NeighbourPredMode(const Macroblock* neighbour, u32 block, bool* dcPredModePredictedFlag) const;

    SliceContext& slice;
    const MacroblockContext& context;
    const SampleRoutines& routines;
    MacroblockSyntax& syntax;
    Macroblock& mb;
    const Targets targets;
};

// ---- Residual ----

// 8.5.12 for one block; the shortcut for a lone DC gives the same samples.
bool Reconstructor::BlockResidual(u32 block, u8* dst, ptrdiff_t stride) {
    i32* const coefficients = syntax.coefficients[block];
    if ((syntax.codedBlocks >> block & 1) != 0)
        return routines.addResidual(dst, stride, coefficients);
    return coefficients[0] == 0 || routines.addDcResidual(dst, stride, coefficients);
}

bool Reconstructor::LumaResidual() {
    bool inRange = true;
    for (u32 block = 0; block < LumaBlocks; ++block)
        inRange &= BlockResidual(block, targets.LumaBlock(block), targets.stride[Luma]);
    return inRange;
}

bool Reconstructor::ChromaResidual() {
    if ((syntax.codedBlockPattern >> 4) == 0)
        return true;
    SpreadChromaDc(syntax, ChromaQp(slice.qpY + slice.pps->chroma_qp_index_offset));
    bool inRange = true;
    for (u32 block = 0; block < 4; ++block) {
        inRange &= BlockResidual(FirstCbBlock + block, targets.ChromaBlock(Cb, block), targets.stride[Cb]);
        inRange &= BlockResidual(FirstCrBlock + block, targets.ChromaBlock(Cr, block), targets.stride[Cr]);
    }
    return inRange;
}

// ---- Intra ----

// 8.3: with constrained_intra_pred_flag inter macroblocks count as missing.
bool Reconstructor::UsableForIntra(const Macroblock* neighbour) const {
    return neighbour != nullptr && (!slice.ConstrainedIntraPred() || IsIntra(neighbour->mbType));
}

IntraNeighbours Reconstructor::MacroblockNeighbours() const {
    return {UsableForIntra(context.a), UsableForIntra(context.b), UsableForIntra(context.d),
            UsableForIntra(context.c)};
}

// Block by block: inside of the macroblock everything left and above exists; above right only what 6.4.3 puts
// before the block, which leaves out the right column and two more.
IntraNeighbours Reconstructor::BlockNeighbours(const IntraNeighbours& mbNeighbours, u32 block) const {
    constexpr u32 WithoutAboveRight = 1u << 5 | 1u << 7 | 1u << 11 | 1u << 13 | 1u << 15;
    const u32 x = block % 4;
    const u32 y = block / 4;
    IntraNeighbours n;
    n.left = x > 0 || mbNeighbours.left;
    n.above = y > 0 || mbNeighbours.above;
    if (x > 0)
        n.aboveLeft = y > 0 || mbNeighbours.above;
    else
        n.aboveLeft = y > 0 ? mbNeighbours.left : mbNeighbours.aboveLeft;
    if (y == 0)
        n.aboveRight = x < 3 ? mbNeighbours.above : mbNeighbours.aboveRight;
    else
        n.aboveRight = (WithoutAboveRight >> block & 1) == 0;
    return n;
}

u8 Reconstructor::NeighbourPredMode(const Macroblock* neighbour, u32 block,
                                    bool* dcPredModePredictedFlag) const {
    constexpr u8 Dc = static_cast<u8>(Intra4x4PredMode::Dc);
    if (!UsableForIntra(neighbour)) {
        *dcPredModePredictedFlag = true;
        return Dc;
    }
    return neighbour->mbType == MbType::I_NxN ? neighbour->intra4x4PredMode[block] : Dc;
}

// 8.3.1.1, for the block with number `index` in the order of 6.4.3.
Intra4x4PredMode Reconstructor::DerivePredMode(u32 index, u32 block) const {
    bool dcPredModePredictedFlag = false;
    const u8 modeA = block % 4 > 0 ? mb.intra4x4PredMode[block - 1]
                                   : NeighbourPredMode(context.a, block + 3, &dcPredModePredictedFlag);
    const u8 modeB = block >= 4 ? mb.intra4x4PredMode[block - 4]
                                : NeighbourPredMode(context.b, block + 12, &dcPredModePredictedFlag);
    const u8 predicted =
        dcPredModePredictedFlag ? static_cast<u8>(Intra4x4PredMode::Dc) : std::min(modeA, modeB);
    const i8 rem_intra4x4_pred_mode = syntax.remIntra4x4PredMode[index];
    if (rem_intra4x4_pred_mode == UsePredictedMode)
        return static_cast<Intra4x4PredMode>(predicted);
    return static_cast<Intra4x4PredMode>(rem_intra4x4_pred_mode +
                                         (rem_intra4x4_pred_mode >= predicted ? 1 : 0));
}

// 8.3.1: each block is predicted from the finished ones before it.
bool Reconstructor::IntraLuma4x4() {
    const IntraNeighbours mbNeighbours = MacroblockNeighbours();
    for (u32 index = 0; index < LumaBlocks; ++index) {
        const u32 block = BlockOfIndex[index];
        const Intra4x4PredMode mode = DerivePredMode(index, block);
        mb.intra4x4PredMode[block] = static_cast<u8>(mode);
        u8* const dst = targets.LumaBlock(block);
        if (!PredictIntra4x4(dst, targets.stride[Luma], mode, BlockNeighbours(mbNeighbours, block)) ||
            !BlockResidual(block, dst, targets.stride[Luma]))
            return false;
    }
    return true;
}

// 8.3.3
bool Reconstructor::IntraLuma16x16() {
    const auto mode = static_cast<Intra16x16PredMode>(DecodeIntra16x16Type(syntax.mbType).predMode);
    SpreadLumaDc(syntax, slice.qpY);
    return PredictIntra16x16(targets.samples[Luma], targets.stride[Luma], mode, MacroblockNeighbours()) &&
           LumaResidual();
}

// 8.3.4
bool Reconstructor::IntraChroma() {
    const auto mode = static_cast<IntraChromaPredMode>(syntax.intra_chroma_pred_mode);
    const IntraNeighbours neighbours = MacroblockNeighbours();
    return PredictIntraChroma(targets.samples[Cb], targets.stride[Cb], mode, neighbours) &&
           PredictIntraChroma(targets.samples[Cr], targets.stride[Cr], mode, neighbours) && ChromaResidual();
}

bool Reconstructor::Intra() {
    std::fill(std::begin(mb.refIdx), std::end(mb.refIdx), NoReference);
    const bool luma = syntax.mbType == MbType::I_NxN ? IntraLuma4x4() : IntraLuma16x16();
    return luma && IntraChroma();
}

// ---- Inter and the rest ----

bool Reconstructor::Inter() {
    return PredictInter(slice, context, routines) &&
           ((syntax.codedBlocks & LumaBlockMask) == 0 || LumaResidual()) && ChromaResidual();
}

// 8.3.5
void Reconstructor::RawSamples() {
    const u8* source = syntax.pcmSamples;
    for (u32 plane = 0; plane < Planes; ++plane) {
        const u32 side = plane == Luma ? MbSize : MbChromaSize;
        u8* row = targets.samples[plane];
        for (u32 y = 0; y < side; ++y, row += targets.stride[plane], source += side)
            std::memcpy(row, source, side);
    }
}

void Reconstructor::UpdateRecord() {
    mb.mbType = syntax.mbType;
    mb.qpY = static_cast<u8>(slice.qpY);
    mb.codedLumaBlocks = static_cast<u16>(syntax.codedBlocks);
    std::memcpy(mb.totalCoeff, syntax.totalCoeff, sizeof mb.totalCoeff);
    if (mb.mbType != MbType::I_PCM)
        return;
    mb.qpY = 0;
    std::fill(std::begin(mb.totalCoeff), std::end(mb.totalCoeff), static_cast<u8>(CoefficientsPerBlock));
    std::fill(std::begin(mb.refIdx), std::end(mb.refIdx), NoReference);
}

bool Reconstructor::Run() {
    UpdateRecord();
    if (mb.mbType == MbType::I_PCM) {
        RawSamples();
        return true;
    }
    return IsIntra(mb.mbType) ? Intra() : Inter();
}

// Keeps the samples of a macroblock and puts them back.
class SampleKeeper {
public:
    SampleKeeper(const Image& image, u32 mbX, u32 mbY) : targets(image, mbX, mbY) {
        u8* out = kept;
        ForEachRow([&](u8* row, u32 side) {
            std::memcpy(out, row, side);
            out += side;
        });
    }
    ~SampleKeeper() {
        const u8* in = kept;
        ForEachRow([&](u8* row, u32 side) {
            std::memcpy(row, in, side);
            in += side;
        });
    }
    SampleKeeper(const SampleKeeper&) = delete;
    SampleKeeper& operator=(const SampleKeeper&) = delete;

private:
    template <class Action>
    void ForEachRow(Action action) {
        for (u32 plane = 0; plane < Planes; ++plane) {
            const u32 side = plane == Luma ? MbSize : MbChromaSize;
            for (u32 y = 0; y < side; ++y)
                action(targets.samples[plane] + static_cast<ptrdiff_t>(y) * targets.stride[plane], side);
        }
    }

    const Targets targets;
    u8 kept[SamplesPerMb];
};

} // namespace

bool ReconstructMacroblock(SliceContext& slice, const MacroblockContext& context,
                           const SampleRoutines& routines) {
    ++context.mb->decoded;
    if (context.mb->decoded == 1)
        return Reconstructor(slice, context, routines).Run();
    const SampleKeeper keeper(slice.image, context.mbX, context.mbY);
    return Reconstructor(slice, context, routines).Run();
}

} // namespace h264
