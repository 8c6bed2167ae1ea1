// Concealment. Sections: smooth fill of one macroblock, one macroblock, the order over the picture.
#include "media/h264/concealment.h"

#include <algorithm>
#include <cstring>

#include "foundation/log.h"
#include "media/h264/motion.h"

namespace h264 {

namespace {

constexpr u8 Grey = 128;
constexpr u8 ConcealedQp = 40;
constexpr u8 FilterOff = 1; // disable_deblocking_filter_idc

// ---- Smooth fill ----

enum Side : u32 { Above = 0, Below = 1, Left = 2, Right = 3, Sides = 4 };
constexpr u32 Groups = 4; // of samples along each side, and cells along each direction

// The samples that touch the macroblock from outside, added up in groups.
struct SideSums {
    bool available[Sides] = {};
    i32 group[Sides][Groups] = {};

    void Load(Side side, const u8* first, ptrdiff_t step, u32 samplesPerGroup) {
        available[side] = true;
        for (i32& sum : group[side]) {
            for (u32 i = 0; i < samplesPerGroup; ++i, first += step)
                sum += *first;
        }
    }
    i32 Sum(Side side) const { return group[side][0] + group[side][1] + group[side][2] + group[side][3]; }
    // First half less second half.
    i32 Slope(Side side) const { return group[side][0] + group[side][1] - group[side][2] - group[side][3]; }
    i32 Count(Side a, Side b) const { return available[a] + available[b]; }
};

// How luma (16 samples a side) and chroma (8) scale the sums.
struct FillScale {
    u32 samplesPerGroup;
    i32 slopeShift;      // for one side; one more for two
    i32 differenceShift; // left less right, above less below
    i32 dcShift;         // for one side; one more for two, two more for four
    i32 dcThirdShift;    // behind the multiplication by 21, for three
};
constexpr FillScale LumaFill = {4, 3, 5, 4, 10};
constexpr FillScale ChromaFill = {2, 2, 4, 3, 9};

// The slope in the direction along `a` and `b`, or, when neither is there, across between `c` and `d`.
i32 SlopeOf(const SideSums& sums, const FillScale& scale, Side a, Side b, Side c, Side d) {
    if (const i32 n = sums.Count(a, b))
        return (sums.Slope(a) + sums.Slope(b)) >> (n + scale.slopeShift);
    return sums.Count(c, d) == 2 ? (sums.Sum(c) - sums.Sum(d)) >> scale.differenceShift : 0;
}

i32 DcOf(const SideSums& sums, const FillScale& scale) {
    const i32 dc = sums.Sum(Above) + sums.Sum(Below) + sums.Sum(Left) + sums.Sum(Right);
    switch (sums.Count(Above, Below) + sums.Count(Left, Right)) {
    case 1:
        return dc >> scale.dcShift;
    case 2:
        return dc >> (scale.dcShift + 1);
    case 3:
        return (dc * 21) >> scale.dcThirdShift; // 21/64 is nearly a third
    case 4:
        return dc >> (scale.dcShift + 2);
    default:
        return Grey; // no neighbour at all: only in a picture without a decoded macroblock, which is filled
                     // as one
    }
}

i32 CellOffset(i32 slope, u32 cell) {
    const i32 offsets[Groups] = {slope, slope >> 1, -(slope >> 1), -slope};
    return offsets[cell];
}

void FillCells(u8* dst, ptrdiff_t stride, const SideSums& sums, const FillScale& scale) {
    const i32 h = SlopeOf(sums, scale, Above, Below, Left, Right);
    const i32 v = SlopeOf(sums, scale, Left, Right, Above, Below);
    const i32 dc = DcOf(sums, scale);
    const u32 cellSize = scale.samplesPerGroup;
    for (u32 y = 0; y < Groups * cellSize; ++y, dst += stride) {
        for (u32 c = 0; c < Groups; ++c) {
            const i32 value = dc + CellOffset(h, c) + CellOffset(v, y / cellSize);
            std::memset(dst + c * cellSize, std::clamp(value, 0, 255), cellSize);
        }
    }
}

class Concealer {
public:
    explicit Concealer(const Concealment& c) : work(c), size(c.image.size) {}

    u32 ConcealPicture();

private:
    Macroblock& At(u32 x, u32 y) const { return work.mbs[y * size.widthInMbs + x]; }
    bool Missing(u32 x, u32 y) const { return At(x, y).decoded == 0; }
    bool Exists(i32 x, i32 y) const;
    u32 ConcealWhole();
    u32 ConcealAround(u32 firstX, u32 firstY);
    u32 ConcealMb(u32 x, u32 y);
    void CopyFromReference(u32 x, u32 y);
    void SmoothFill(Plane plane, u32 x, u32 y);

    const Concealment& work;
    const PictureSize size;
};

// ---- One macroblock ----

bool Concealer::Exists(i32 x, i32 y) const {
    return x >= 0 && y >= 0 && x < static_cast<i32>(size.widthInMbs) &&
           y < static_cast<i32>(size.heightInMbs) && !Missing(static_cast<u32>(x), static_cast<u32>(y));
}

void Concealer::SmoothFill(Plane plane, u32 mbX, u32 mbY) {
    const FillScale& scale = plane == Luma ? LumaFill : ChromaFill;
    const ptrdiff_t side = plane == Luma ? MbSize : MbChromaSize;
    const ptrdiff_t stride = size.Stride(plane);
    u8* const dst = work.image.MbSamples(plane, mbX, mbY);
    const i32 x = static_cast<i32>(mbX), y = static_cast<i32>(mbY);
    SideSums sums;
    if (Exists(x, y - 1))
        sums.Load(Above, dst - stride, 1, scale.samplesPerGroup);
    if (Exists(x, y + 1))
        sums.Load(Below, dst + side * stride, 1, scale.samplesPerGroup);
    if (Exists(x - 1, y))
        sums.Load(Left, dst - 1, stride, scale.samplesPerGroup);
    if (Exists(x + 1, y))
        sums.Load(Right, dst + side, stride, scale.samplesPerGroup);
    FillCells(dst, stride, sums, scale);
}

void Concealer::CopyFromReference(u32 x, u32 y) {
    InterpolateBlock(work.reference, work.image, {x * MbSize, y * MbSize, MbSize, MbSize, MotionVector{}},
                     *work.routines);
}

u32 Concealer::ConcealMb(u32 x, u32 y) {
    Macroblock& mb = At(x, y);
    mb.mbType = MbType::I_NxN;
    mb.qpY = ConcealedQp;
    mb.disable_deblocking_filter_idc = 0;
    mb.filterOffsetA = mb.filterOffsetB = 0;
    mb.chroma_qp_index_offset = 0;
    if (work.reference != nullptr) {
        CopyFromReference(x, y);
    } else {
        for (Plane plane : {Luma, Cb, Cr})
            SmoothFill(plane, x, y);
    }
    mb.decoded = 1;
    return 1;
}

// ---- The picture ----

u32 Concealer::ConcealWhole() {
    if (work.reference != nullptr)
        std::memcpy(work.image.data, work.reference, size.Bytes());
    else
        std::memset(work.image.data, Grey, size.Bytes());
    for (u32 i = 0; i < size.Mbs(); ++i)
        work.mbs[i].disable_deblocking_filter_idc = FilterOff;
    return size.Mbs();
}

// Outwards from the first macroblock that is there: its row, the rows above from the bottom up, the rows
// below.
u32 Concealer::ConcealAround(u32 firstX, u32 firstY) {
    u32 concealed = 0;
    for (u32 x = firstX; x-- > 0;)
        concealed += ConcealMb(x, firstY);
    for (u32 x = firstX + 1; x < size.widthInMbs; ++x)
        concealed += Missing(x, firstY) ? ConcealMb(x, firstY) : 0;
    for (u32 x = 0; x < size.widthInMbs; ++x) {
        for (u32 y = firstY; y-- > 0;)
            concealed += ConcealMb(x, y);
    }
    for (u32 y = firstY + 1; y < size.heightInMbs; ++y) {
        for (u32 x = 0; x < size.widthInMbs; ++x)
            concealed += Missing(x, y) ? ConcealMb(x, y) : 0;
    }
    return concealed;
}

u32 Concealer::ConcealPicture() {
    for (u32 y = 0; y < size.heightInMbs; ++y) {
        for (u32 x = 0; x < size.widthInMbs; ++x) {
            if (!Missing(x, y))
                return ConcealAround(x, y);
        }
    }
    return ConcealWhole();
}

} // namespace

u32 h264Conceal(const Concealment& concealment, bool isIntra) {
    Log(LogEvent, "Ch264VideoDecoder::h264Conceal", "Concealing %s slice", isIntra ? "intra" : "inter");
    return Concealer(concealment).ConcealPicture();
}

} // namespace h264
