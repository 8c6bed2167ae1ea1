// Inter prediction. Sections: vector prediction (8.4.1), fetching and interpolation (8.4.2), the macroblock
// types.
#include "media/h264/motion.h"

#include <algorithm>
#include <cstring>

namespace h264 {

namespace {

constexpr i32 MinMvX = -8192, MaxMvX = 8191; // quarter samples
constexpr i32 MinMvY = -2048, MaxMvY = 2047;

// ---- 8.4.1 Vector prediction ----

// What a neighbouring partition says (8.4.1.3.2).
struct NeighbourMotion {
    bool available = false;
    i32 refIdx = NoReference; // also for intra macroblocks
    MotionVector mv;          // zero without a reference
};

NeighbourMotion MotionOf(const Macroblock* mb, i32 x, i32 y) {
    NeighbourMotion motion;
    if (mb == nullptr)
        return motion;
    motion.available = true;
    motion.refIdx = mb->refIdx[y / 2 * 2 + x / 2];
    if (motion.refIdx >= 0)
        motion.mv = mb->mv[y * 4 + x];
    return motion;
}

// 6.4.11.7: the motion at 4x4 block (x, y) relative to the macroblock, -1 <= x <= 4, -1 <= y <= 3. Inside of
// the macroblock the caller knows that the block is decoded.
NeighbourMotion MotionAt(const MacroblockContext& context, i32 x, i32 y) {
    if (y < 0) {
        if (x < 0)
            return MotionOf(context.d, 3, 3);
        return x < 4 ? MotionOf(context.b, x, 3) : MotionOf(context.c, 0, 3);
    }
    if (x < 0)
        return MotionOf(context.a, 3, y);
    return x < 4 ? MotionOf(context.mb, x, y) : NeighbourMotion{};
}

// A partition in 4x4 blocks relative to the macroblock.
struct Partition {
    i32 x, y, width, height;
};

// The table of 6.4.3 is its own inverse.
constexpr const u8 (&IndexOfBlock)[LumaBlocks] = BlockOfIndex;

// Is the block above right of the partition decoded before it? Outside of the macroblock its owner decides.
bool AboveRightIsDecoded(const Partition& part) {
    const i32 x = part.x + part.width;
    const i32 y = part.y - 1;
    if (y < 0)
        return true;
    return x < 4 && IndexOfBlock[y * 4 + x] < IndexOfBlock[part.y * 4 + part.x];
}

struct Neighbours {
    NeighbourMotion a, b, c;
};

// 8.4.1.3.2: left, above and above right; where the last is missing, above left stands in.
Neighbours NeighboursOf(const MacroblockContext& context, const Partition& part) {
    Neighbours n;
    n.a = MotionAt(context, part.x - 1, part.y);
    n.b = MotionAt(context, part.x, part.y - 1);
    if (AboveRightIsDecoded(part))
        n.c = MotionAt(context, part.x + part.width, part.y - 1);
    if (!n.c.available)
        n.c = MotionAt(context, part.x - 1, part.y - 1);
    return n;
}

i16 Median(i16 a, i16 b, i16 c) {
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

// 8.4.1.3.1
MotionVector MedianPrediction(const Neighbours& n, i32 refIdx) {
    if (!n.b.available && !n.c.available && n.a.available)
        return n.a.mv;
    const bool a = n.a.refIdx == refIdx, b = n.b.refIdx == refIdx, c = n.c.refIdx == refIdx;
    if (a && !b && !c)
        return n.a.mv;
    if (!a && b && !c)
        return n.b.mv;
    if (!a && !b && c)
        return n.c.mv;
    return {Median(n.a.mv.x, n.b.mv.x, n.c.mv.x), Median(n.a.mv.y, n.b.mv.y, n.c.mv.y)};
}

// 8.4.1.3: the halves of a macroblock look first to the neighbour on their own side.
MotionVector PredictVector(const MacroblockContext& context, const Partition& part, i32 refIdx) {
    const Neighbours n = NeighboursOf(context, part);
    const NeighbourMotion* preferred = nullptr;
    if (part.width == 4 && part.height == 2)
        preferred = part.y == 0 ? &n.b : &n.a;
    else if (part.width == 2 && part.height == 4)
        preferred = part.x == 0 ? &n.a : &n.c;
    if (preferred != nullptr && preferred->refIdx == refIdx)
        return preferred->mv;
    return MedianPrediction(n, refIdx);
}

// 8.4.1.1
MotionVector SkipVector(const MacroblockContext& context) {
    const NeighbourMotion a = MotionAt(context, -1, 0);
    const NeighbourMotion b = MotionAt(context, 0, -1);
    const bool still = !a.available || !b.available || (a.refIdx == 0 && a.mv == MotionVector{}) ||
                       (b.refIdx == 0 && b.mv == MotionVector{});
    return still ? MotionVector{} : PredictVector(context, {0, 0, 4, 4}, 0);
}

// ---- 8.4.2 Fetching and interpolation ----

struct SamplePlane {
    const u8* data;
    ptrdiff_t stride;
    i32 width, height;
};

struct SampleBlock {
    i32 x, y; // may lie outside of the plane
    i32 width, height;
};

struct Fetched {
    const u8* samples;
    ptrdiff_t stride;
};

// Room for the largest block with the samples around it that the taps reach.
constexpr i32 FetchStride = 32;
constexpr i32 FetchRows = 16 + 5;
struct FetchBuffer {
    u8 samples[FetchRows * FetchStride];
};

// One row of `block`, positions outside of the plane clamped (8.4.2.2).
void FetchRow(u8* out, const u8* row, const SamplePlane& plane, const SampleBlock& block) {
    const i32 before = std::clamp(-block.x, 0, block.width);
    const i32 behind = std::clamp(block.x + block.width - plane.width, 0, block.width);
    const i32 inside = block.width - before - behind;
    std::memset(out, row[0], static_cast<size_t>(before));
    if (inside > 0)
        std::memcpy(out + before, row + block.x + before, static_cast<size_t>(inside));
    std::memset(out + block.width - behind, row[plane.width - 1], static_cast<size_t>(behind));
}

// The samples of `block`: where they lie, or, if the block reaches over the border, a copy in `buffer` that
// repeats it.
Fetched Fetch(const SamplePlane& plane, const SampleBlock& block, FetchBuffer* buffer) {
    if (block.x >= 0 && block.y >= 0 && block.x + block.width <= plane.width &&
        block.y + block.height <= plane.height)
        return {plane.data + block.y * plane.stride + block.x, plane.stride};
    u8* out = buffer->samples;
    for (i32 y = 0; y < block.height; ++y, out += FetchStride) {
        const i32 row = std::clamp(block.y + y, 0, plane.height - 1);
        FetchRow(out, plane.data + row * plane.stride, plane, block);
    }
    return {buffer->samples, FetchStride};
}

void InterpolateLuma(const u8* reference, const Image& target, const InterBlock& block,
                     const SampleRoutines& routines) {
    constexpr i32 TapsBefore = 2;
    constexpr i32 TapsAround = 5;
    const u32 xFrac = static_cast<u32>(block.mv.x & 3);
    const u32 yFrac = static_cast<u32>(block.mv.y & 3);
    const i32 left = xFrac != 0 ? TapsBefore : 0;
    const i32 above = yFrac != 0 ? TapsBefore : 0;
    const PictureSize& size = target.size;
    const SamplePlane plane{reference, size.LumaWidth(), static_cast<i32>(size.LumaWidth()),
                            static_cast<i32>(size.LumaHeight())};
    const SampleBlock source{static_cast<i32>(block.x) + (block.mv.x >> 2) - left,
                             static_cast<i32>(block.y) + (block.mv.y >> 2) - above,
                             static_cast<i32>(block.width) + (xFrac != 0 ? TapsAround : 0),
                             static_cast<i32>(block.height) + (yFrac != 0 ? TapsAround : 0)};
    FetchBuffer buffer;
    const Fetched fetched = Fetch(plane, source, &buffer);
    u8* dst = target.data + size_t{block.y} * size.LumaWidth() + block.x;
    routines.lumaInter[yFrac * 4 + xFrac](dst, size.LumaWidth(),
                                          fetched.samples + above * fetched.stride + left, fetched.stride,
                                          block.width, block.height);
}

// Chroma vectors have the same numbers in units of an eighth (8.4.1.4).
void InterpolateChroma(Plane plane, const u8* reference, const Image& target, const InterBlock& block,
                       const SampleRoutines& routines) {
    const PictureSize& size = target.size;
    const SamplePlane source{reference + size.PlaneOffset(plane), size.ChromaWidth(),
                             static_cast<i32>(size.ChromaWidth()), static_cast<i32>(size.ChromaHeight())};
    const i32 x = static_cast<i32>(block.x / 2);
    const i32 y = static_cast<i32>(block.y / 2);
    const u32 width = block.width / 2;
    const u32 height = block.height / 2;
    FetchBuffer buffer;
    const Fetched fetched = Fetch(source,
                                  {x + (block.mv.x >> 3), y + (block.mv.y >> 3), static_cast<i32>(width) + 1,
                                   static_cast<i32>(height) + 1},
                                  &buffer);
    u8* dst = target.data + size.PlaneOffset(plane) + static_cast<ptrdiff_t>(y) * source.stride + x;
    routines.chromaInter(dst, source.stride, fetched.samples, fetched.stride, width, height,
                         static_cast<u32>(block.mv.x & 7), static_cast<u32>(block.mv.y & 7));
}

// ---- Macroblock types ----

bool InRange(i32 x, i32 y) {
    return x >= MinMvX && x <= MaxMvX && y >= MinMvY && y <= MaxMvY;
}

class InterPredictor {
public:
    InterPredictor(const SliceContext& s, const MacroblockContext& c, const SampleRoutines& r)
        : slice(s), context(c), routines(r), mb(*c.mb), mvd(s.syntax->mvd) {}

    bool Predict();

private:
    bool PredictSkip();
    bool PredictPartition(const Partition& part);
    bool PredictQuarter(u32 quarter);
    bool Compensate(const Partition& part, MotionVector mv);
    bool SetReferences();

    const SliceContext& slice;
    const MacroblockContext& context;
    const SampleRoutines& routines;
    Macroblock& mb;
    const i32 (*mvd)[2]; // the next difference
};

// Spreads the syntax's indices over the quarters, and looks each reference up.
bool InterPredictor::SetReferences() {
    static constexpr u8 IndexOfQuarter[5][4] = {// [mb type]
                                                {0, 0, 0, 0},
                                                {0, 0, 0, 0},
                                                {0, 0, 1, 1},
                                                {0, 1, 0, 1},
                                                {0, 1, 2, 3}};
    const MacroblockSyntax& syntax = *slice.syntax;
    const u32 type = std::min<u32>(static_cast<u32>(syntax.mbType), static_cast<u32>(MbType::P_8x8));
    for (u32 quarter = 0; quarter < 4; ++quarter) {
        const u8 refIdx = syntax.mbType == MbType::P_Skip ? 0 : syntax.refIdx[IndexOfQuarter[type][quarter]];
        if (slice.references[refIdx].data == nullptr)
            return false;
        mb.refIdx[quarter] = static_cast<i8>(refIdx);
        mb.refPicture[quarter] = slice.references[refIdx].bufferId;
    }
    return true;
}

bool InterPredictor::Compensate(const Partition& part, MotionVector mv) {
    for (i32 y = part.y; y < part.y + part.height; ++y)
        std::fill_n(mb.mv + y * 4 + part.x, part.width, mv);
    const ReferencePicture& reference = slice.references[mb.refIdx[part.y / 2 * 2 + part.x / 2]];
    const InterBlock block{context.mbX * MbSize + static_cast<u32>(part.x) * 4,
                           context.mbY * MbSize + static_cast<u32>(part.y) * 4,
                           static_cast<u32>(part.width) * 4, static_cast<u32>(part.height) * 4, mv};
    InterpolateBlock(reference.data, slice.image, block, routines);
    return true;
}

bool InterPredictor::PredictPartition(const Partition& part) {
    const MotionVector predicted = PredictVector(context, part, mb.refIdx[part.y / 2 * 2 + part.x / 2]);
    const i32 x = predicted.x + mvd[0][0];
    const i32 y = predicted.y + mvd[0][1];
    ++mvd;
    return InRange(x, y) && Compensate(part, {static_cast<i16>(x), static_cast<i16>(y)});
}

bool InterPredictor::PredictQuarter(u32 quarter) {
    const i32 x = static_cast<i32>(quarter % 2) * 2;
    const i32 y = static_cast<i32>(quarter / 2) * 2;
    switch (slice.syntax->subMbType[quarter]) {
    case SubMbType::P_L0_8x8:
        return PredictPartition({x, y, 2, 2});
    case SubMbType::P_L0_8x4:
        return PredictPartition({x, y, 2, 1}) && PredictPartition({x, y + 1, 2, 1});
    case SubMbType::P_L0_4x8:
        return PredictPartition({x, y, 1, 2}) && PredictPartition({x + 1, y, 1, 2});
    default:
        return PredictPartition({x, y, 1, 1}) && PredictPartition({x + 1, y, 1, 1}) &&
               PredictPartition({x, y + 1, 1, 1}) && PredictPartition({x + 1, y + 1, 1, 1});
    }
}

bool InterPredictor::PredictSkip() {
    const MotionVector mv = SkipVector(context);
    return InRange(mv.x, mv.y) && Compensate({0, 0, 4, 4}, mv);
}

bool InterPredictor::Predict() {
    if (!SetReferences())
        return false;
    switch (slice.syntax->mbType) {
    case MbType::P_Skip:
        return PredictSkip();
    case MbType::P_L0_16x16:
        return PredictPartition({0, 0, 4, 4});
    case MbType::P_L0_L0_16x8:
        return PredictPartition({0, 0, 4, 2}) && PredictPartition({0, 2, 4, 2});
    case MbType::P_L0_L0_8x16:
        return PredictPartition({0, 0, 2, 4}) && PredictPartition({2, 0, 2, 4});
    default:
        return PredictQuarter(0) && PredictQuarter(1) && PredictQuarter(2) && PredictQuarter(3);
    }
}

} // namespace

void InterpolateBlock(const u8* reference, const Image& target, const InterBlock& block,
                      const SampleRoutines& routines) {
    InterpolateLuma(reference, target, block, routines);
    InterpolateChroma(Cb, reference, target, block, routines);
    InterpolateChroma(Cr, reference, target, block, routines);
}

bool PredictInter(const SliceContext& slice, const MacroblockContext& context,
                  const SampleRoutines& routines) {
    return InterPredictor(slice, context, routines).Predict();
}

} // namespace h264
