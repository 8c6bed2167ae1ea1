// Deblocking. Sections: tables, boundary strengths (8.7.2.1), the filters of one macroblock.
#include "media/h264/deblocking.h"

#include <algorithm>
#include <cstring>

#include "media/h264/scaling.h"

namespace h264 {

namespace {

// ---- Tables ----

// Table 8-16, [indexA] and [indexB]
constexpr u8 Alpha[MaxQp + 1] = {0,  0,  0,  0,   0,   0,   0,   0,   0,   0,   0,   0,   0,
                                 0,  0,  0,  4,   4,   5,   6,   7,   8,   9,   10,  12,  13,
                                 15, 17, 20, 22,  25,  28,  32,  36,  40,  45,  50,  56,  63,
                                 71, 80, 90, 101, 113, 127, 144, 162, 182, 203, 226, 255, 255};
constexpr u8 Beta[MaxQp + 1] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0, 2,  2,
                                2,  3,  3,  3,  3,  4,  4,  4,  6,  6,  7,  7,  8,  8,  9,  9, 10, 10,
                                11, 11, 12, 12, 13, 13, 14, 14, 15, 15, 16, 16, 17, 17, 18, 18};
// Table 8-17: t'C0 [indexA][bS]; -1 where bS is 0 and nothing is filtered.
constexpr i8 TC0[MaxQp + 1][4] = {
    {-1, 0, 0, 0},   {-1, 0, 0, 0},    {-1, 0, 0, 0},    {-1, 0, 0, 0},   {-1, 0, 0, 0},   {-1, 0, 0, 0},
    {-1, 0, 0, 0},   {-1, 0, 0, 0},    {-1, 0, 0, 0},    {-1, 0, 0, 0},   {-1, 0, 0, 0},   {-1, 0, 0, 0},
    {-1, 0, 0, 0},   {-1, 0, 0, 0},    {-1, 0, 0, 0},    {-1, 0, 0, 0},   {-1, 0, 0, 0},   {-1, 0, 0, 1},
    {-1, 0, 0, 1},   {-1, 0, 0, 1},    {-1, 0, 0, 1},    {-1, 0, 1, 1},   {-1, 0, 1, 1},   {-1, 1, 1, 1},
    {-1, 1, 1, 1},   {-1, 1, 1, 1},    {-1, 1, 1, 1},    {-1, 1, 1, 2},   {-1, 1, 1, 2},   {-1, 1, 1, 2},
    {-1, 1, 1, 2},   {-1, 1, 2, 3},    {-1, 1, 2, 3},    {-1, 2, 2, 3},   {-1, 2, 2, 4},   {-1, 2, 3, 4},
    {-1, 2, 3, 4},   {-1, 3, 3, 5},    {-1, 3, 4, 6},    {-1, 3, 4, 6},   {-1, 4, 5, 7},   {-1, 4, 5, 8},
    {-1, 4, 6, 9},   {-1, 5, 7, 10},   {-1, 6, 8, 11},   {-1, 6, 8, 13},  {-1, 7, 10, 14}, {-1, 8, 11, 16},
    {-1, 9, 12, 18}, {-1, 10, 13, 20}, {-1, 11, 15, 23}, {-1, 13, 17, 25}};

// ---- 8.7.2.1 Boundary strengths ----

constexpr u8 BsIntraMbEdge = 4;
constexpr u8 BsIntraInside = 3;
constexpr u8 BsCoefficients = 2;
constexpr u8 BsMotion = 1;

// One edge of the macroblock, four segments.
struct EdgeStrength {
    u8 bS[4] = {};

    static EdgeStrength Uniform(u8 bS) { return {{bS, bS, bS, bS}}; }
    bool Any() const {
        u32 all;
        std::memcpy(&all, bS, sizeof all);
        return all != 0;
    }
};

// Edge 0 is the macroblock's own.
struct Strengths {
    EdgeStrength vertical[4];
    EdgeStrength horizontal[4];

    bool Any() const {
        u64 all[4];
        static_assert(sizeof all == sizeof *this);
        std::memcpy(all, this, sizeof all);
        return (all[0] | all[1] | all[2] | all[3]) != 0;
    }
};

// Four quarter samples or more apart, in either component: the same as |p - q| >= 4, without a branch.
u8 FarApart(i32 p, i32 q) {
    return static_cast<u32>(p - q + 3) > 6u;
}
u8 FarApart(MotionVector p, MotionVector q) {
    return FarApart(p.x, q.x) | FarApart(p.y, q.y);
}

u32 QuarterOf(u32 block) {
    return block / 8 * 2 + block % 4 / 2;
}

// Two inter blocks p and q that touch.
u8 InterStrength(const Macroblock& mbP, u32 p, const Macroblock& mbQ, u32 q) {
    if (((mbP.codedLumaBlocks >> p | mbQ.codedLumaBlocks >> q) & 1) != 0)
        return BsCoefficients;
    const bool otherPicture = mbP.refPicture[QuarterOf(p)] != mbQ.refPicture[QuarterOf(q)];
    return otherPicture || FarApart(mbP.mv[p], mbQ.mv[q]) != 0 ? BsMotion : 0;
}

// Does the same vector and reference hold for the whole macroblock?
bool HasOneMotion(const Macroblock& mb) {
    return mb.mbType == MbType::P_Skip || mb.mbType == MbType::P_L0_16x16;
}

// Between inter macroblocks. Blocks of a line lie `along` apart; `p` and `q` are the first on either side.
EdgeStrength OuterInterEdge(const Macroblock& mbP, u32 p, const Macroblock& mbQ, u32 q, u32 along) {
    EdgeStrength edge;
    const bool oneMotion = HasOneMotion(mbP) && HasOneMotion(mbQ);
    if (oneMotion && (mbP.codedLumaBlocks | mbQ.codedLumaBlocks) == 0)
        return EdgeStrength::Uniform(InterStrength(mbP, p, mbQ, q));
    for (u32 i = 0; i < 4; ++i)
        edge.bS[i] = InterStrength(mbP, p + i * along, mbQ, q + i * along);
    return edge;
}

// Strengths between each block and the one `Step` before it (1: left, 4: above), in loops without branches so
// that the compiler makes vectors of them. Blocks without such a neighbour inside get a meaningless value.
template <u32 Step>
void InnerInterStrengths(const Macroblock& mb, u8 (&bS)[LumaBlocks]) {
    u8 coded[LumaBlocks];
    for (u32 block = 0; block < LumaBlocks; ++block)
        coded[block] = static_cast<u8>(mb.codedLumaBlocks >> block & 1);
    for (u32 block = Step; block < LumaBlocks; ++block) {
        const u8 coefficients = static_cast<u8>((coded[block] | coded[block - Step]) * BsCoefficients);
        const u8 motion = FarApart(mb.mv[block], mb.mv[block - Step]);
        bS[block] = std::max(coefficients, motion);
    }
    // References differ by quarters, that is, across the two middle edges.
    constexpr u32 Middle = 2 * Step;
    constexpr u32 Along = 5 - Step;
    for (u32 i = 0; i < 4; ++i) {
        const u32 block = Middle + i * Along;
        if (mb.refPicture[QuarterOf(block)] != mb.refPicture[QuarterOf(block - Step)])
            bS[block] = std::max(bS[block], BsMotion);
    }
}

void InnerStrengths(const Macroblock& mb, Strengths* strengths) {
    if (IsIntra(mb.mbType)) {
        for (u32 edge = 1; edge < 4; ++edge)
            strengths->vertical[edge] = strengths->horizontal[edge] = EdgeStrength::Uniform(BsIntraInside);
        return;
    }
    if (mb.codedLumaBlocks == 0 && HasOneMotion(mb))
        return;
    u8 left[LumaBlocks] = {};
    u8 above[LumaBlocks] = {};
    InnerInterStrengths<1>(mb, left);
    InnerInterStrengths<4>(mb, above);
    for (u32 edge = 1; edge < 4; ++edge) {
        for (u32 i = 0; i < 4; ++i) {
            strengths->vertical[edge].bS[i] = left[i * 4 + edge];
            strengths->horizontal[edge].bS[i] = above[edge * 4 + i];
        }
    }
}

// The neighbour across a macroblock edge, or null if that edge stays as it is.
const Macroblock* FilterNeighbour(const Macroblock& mb, const Macroblock* neighbour) {
    constexpr u8 WithinSliceOnly = 2; // disable_deblocking_filter_idc
    if (neighbour == nullptr ||
        (mb.disable_deblocking_filter_idc == WithinSliceOnly && neighbour->sliceId != mb.sliceId))
        return nullptr;
    return neighbour;
}

EdgeStrength OuterStrength(const Macroblock& mb, const Macroblock* neighbour, u32 p, u32 along) {
    if (neighbour == nullptr)
        return {};
    if (IsIntra(mb.mbType) || IsIntra(neighbour->mbType))
        return EdgeStrength::Uniform(BsIntraMbEdge);
    return OuterInterEdge(*neighbour, p, mb, 0, along);
}

// ---- Filters ----

// 8.7.2.2: thresholds for the edge between macroblocks of QP `qpP` and `qpQ`.
struct Thresholds {
    i32 alpha, beta;
    const i8* tc0; // [bS]

    Thresholds(i32 qpP, i32 qpQ, const Macroblock& mb) {
        const i32 qPav = (qpP + qpQ + 1) >> 1;
        const i32 indexA = std::clamp(qPav + mb.filterOffsetA, 0, MaxQp);
        const i32 indexB = std::clamp(qPav + mb.filterOffsetB, 0, MaxQp);
        alpha = Alpha[indexA];
        beta = Beta[indexB];
        tc0 = TC0[indexA];
    }

    // No difference is below 0.
    bool FilterNothing() const { return alpha == 0 || beta == 0; }

    EdgeFilter Filter(const EdgeStrength& edge) const {
        return {alpha, beta, {tc0[edge.bS[0]], tc0[edge.bS[1]], tc0[edge.bS[2]], tc0[edge.bS[3]]}};
    }
};

// The filters of one component in one direction.
struct DirectionFilters {
    SampleRoutines::NormalFilter normal;
    SampleRoutines::StrongFilter strong;
};

void FilterEdge(u8* q0, ptrdiff_t stride, const EdgeStrength& edge, const Thresholds& thresholds,
                const DirectionFilters& filters) {
    if (thresholds.FilterNothing())
        return;
    if (edge.bS[0] == BsIntraMbEdge) // of macroblock edges all segments or none
        filters.strong(q0, stride, thresholds.alpha, thresholds.beta);
    else
        filters.normal(q0, stride, thresholds.Filter(edge));
}

class MacroblockFilter {
public:
    MacroblockFilter(const Image& i, const Macroblock& m, u32 x, u32 y, const SampleRoutines& r)
        : image(i),
          mb(m),
          mbX(x),
          mbY(y),
          routines(r),
          left(FilterNeighbour(m, m.mbA)),
          above(FilterNeighbour(m, m.mbB)) {}

    void Run() {
        InnerStrengths(mb, &strengths);
        strengths.vertical[0] = OuterStrength(mb, left, 3, 4);
        strengths.horizontal[0] = OuterStrength(mb, above, 12, 1);
        if (!strengths.Any())
            return;
        FilterPlane(Luma);
        FilterPlane(Cb);
        FilterPlane(Cr);
    }

private:
    // QP of a macroblock as the filter of a plane takes it.
    i32 Qp(Plane plane, const Macroblock& m) const {
        return plane == Luma ? m.qpY : ChromaQp(m.qpY + mb.chroma_qp_index_offset);
    }
    void FilterPlane(Plane plane) const;
    void FilterDirection(Plane plane, const EdgeStrength* edges, const Macroblock* neighbour,
                         ptrdiff_t edgeStep, const DirectionFilters& filters) const;

    const Image& image;
    const Macroblock& mb;
    const u32 mbX, mbY;
    const SampleRoutines& routines;
    const Macroblock* const left;
    const Macroblock* const above;
    Strengths strengths;
};

// All edges of one direction. Chroma edges lie on every second luma edge and take its strengths; edges are
// `edgeStep` bytes apart.
void MacroblockFilter::FilterDirection(Plane plane, const EdgeStrength* edges, const Macroblock* neighbour,
                                       ptrdiff_t edgeStep, const DirectionFilters& filters) const {
    const u32 edgeIncrement = plane == Luma ? 1 : 2;
    const ptrdiff_t stride = image.size.Stride(plane);
    u8* samples = image.MbSamples(plane, mbX, mbY);
    const i32 qp = Qp(plane, mb);
    if (edges[0].Any())
        FilterEdge(samples, stride, edges[0], Thresholds(Qp(plane, *neighbour), qp, mb), filters);
    const Thresholds inner(qp, qp, mb);
    for (u32 edge = edgeIncrement; edge < 4; edge += edgeIncrement) {
        samples += edgeStep;
        if (edges[edge].Any())
            FilterEdge(samples, stride, edges[edge], inner, filters);
    }
}

void MacroblockFilter::FilterPlane(Plane plane) const {
    constexpr ptrdiff_t EdgeDistance = 4; // samples, of luma and chroma
    const DirectionFilters luma[2] = {{routines.lumaVertical, routines.lumaVerticalStrong},
                                      {routines.lumaHorizontal, routines.lumaHorizontalStrong}};
    const DirectionFilters chroma[2] = {{routines.chromaVertical, routines.chromaVerticalStrong},
                                        {routines.chromaHorizontal, routines.chromaHorizontalStrong}};
    const DirectionFilters* const filters = plane == Luma ? luma : chroma;
    FilterDirection(plane, strengths.vertical, left, EdgeDistance, filters[0]);
    FilterDirection(plane, strengths.horizontal, above, EdgeDistance * image.size.Stride(plane), filters[1]);
}

} // namespace

void DeblockPicture(const Image& image, const Macroblock* mbs, const SampleRoutines& routines) {
    constexpr u8 FilterOff = 1; // disable_deblocking_filter_idc
    const Macroblock* mb = mbs;
    for (u32 y = 0; y < image.size.heightInMbs; ++y) {
        for (u32 x = 0; x < image.size.widthInMbs; ++x, ++mb) {
            if (mb->disable_deblocking_filter_idc != FilterOff)
                MacroblockFilter(image, *mb, x, y, routines).Run();
        }
    }
}

} // namespace h264
