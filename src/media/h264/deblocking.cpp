// Deblocking. Sections: tables, boundary strengths (8.7.2.1), the filters of one macroblock.
#include "media/h264/deblocking.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "media/h264/scaling.h"

namespace h264 {

namespace {

// ---- Tables
// ----------------------------------------------------------------------------------------------------

// Table 8-16, [indexA] and [indexB]
constexpr u8 Alpha[MaxQp + 1] = {0,  0,  0,  0,   0,   0,   0,   0,   0,   0,   0,   0,   0,
                                 0,  0,  0,  4,   4,   5,   6,   7,   8,   9,   10,  12,  13,
                                 15, 17, 20, 22,  25,  28,  32,  36,  40,  45,  50,  56,  63,
                                 71, 80, 90, 101, 113, 127, 144, 162, 182, 203, 226, 255, 255};
constexpr u8 Beta[MaxQp + 1] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0, 2,  2,
                                2,  3,  3,  3,  3,  4,  4,  4,  6,  6,  7,  7,  8,  8,  9,  9, 10, 10,
                                11, 11, 12, 12, 13, 13, 14, 14, 15, 15, 16, 16, 17, 17, 18, 18};
// Table 8-17: t'C0 [indexA][bS - 1]
constexpr u8 TC0[MaxQp + 1][3] = {
    {0, 0, 0},   {0, 0, 0},    {0, 0, 0},    {0, 0, 0},   {0, 0, 0},  {0, 0, 0},  {0, 0, 0},   {0, 0, 0},
    {0, 0, 0},   {0, 0, 0},    {0, 0, 0},    {0, 0, 0},   {0, 0, 0},  {0, 0, 0},  {0, 0, 0},   {0, 0, 0},
    {0, 0, 0},   {0, 0, 1},    {0, 0, 1},    {0, 0, 1},   {0, 0, 1},  {0, 1, 1},  {0, 1, 1},   {1, 1, 1},
    {1, 1, 1},   {1, 1, 1},    {1, 1, 1},    {1, 1, 2},   {1, 1, 2},  {1, 1, 2},  {1, 1, 2},   {1, 2, 3},
    {1, 2, 3},   {2, 2, 3},    {2, 2, 4},    {2, 3, 4},   {2, 3, 4},  {3, 3, 5},  {3, 4, 6},   {3, 4, 6},
    {4, 5, 7},   {4, 5, 8},    {4, 6, 9},    {5, 7, 10},  {6, 8, 11}, {6, 8, 13}, {7, 10, 14}, {8, 11, 16},
    {9, 12, 18}, {10, 13, 20}, {11, 15, 23}, {13, 17, 25}};

// ---- 8.7.2.1 Boundary strengths
// --------------------------------------------------------------------------------

constexpr u8 BsIntraMbEdge = 4;
constexpr u8 BsIntraInside = 3;
constexpr u8 BsCoefficients = 2;
constexpr u8 BsMotion = 1;

// One edge of the macroblock, four segments.
union EdgeStrength {
    u8 bS[4];
    u32 all;
};

// [vertical, horizontal][edge]; edge 0 is the macroblock's own.
struct Strengths {
    EdgeStrength edges[2][4];

    bool Any() const {
        u32 any = 0;
        for (const auto& direction : edges) {
            for (const EdgeStrength& edge : direction)
                any |= edge.all;
        }
        return any != 0;
    }
};

constexpr u32 Uniform(u8 bS) {
    return bS * 0x01010101u;
}

bool FarApart(MotionVector p, MotionVector q) {
    constexpr i32 OneSample = 4; // quarter samples
    return std::abs(p.x - q.x) >= OneSample || std::abs(p.y - q.y) >= OneSample;
}

u8 QuarterOf(u32 block) {
    return static_cast<u8>(block / 8 * 2 + block % 4 / 2);
}

// Two inter blocks p and q that touch.
u8 InterStrength(const Macroblock& mbP, u32 p, const Macroblock& mbQ, u32 q) {
    if (((mbP.codedLumaBlocks >> p | mbQ.codedLumaBlocks >> q) & 1) != 0)
        return BsCoefficients;
    if (mbP.refPicture[QuarterOf(p)] != mbQ.refPicture[QuarterOf(q)])
        return BsMotion;
    return FarApart(mbP.mv[p], mbQ.mv[q]) ? BsMotion : 0;
}

// Blocks of a line lie `along` apart; `p` and `q` are the first on either side.
u32 InterEdge(const Macroblock& mbP, u32 p, const Macroblock& mbQ, u32 q, u32 along) {
    EdgeStrength edge;
    for (u32 i = 0; i < 4; ++i)
        edge.bS[i] = InterStrength(mbP, p + i * along, mbQ, q + i * along);
    return edge.all;
}

// Does the same vector and reference hold for the whole macroblock?
bool HasOneMotion(const Macroblock& mb) {
    return mb.mbType == MbType::P_Skip || mb.mbType == MbType::P_L0_16x16;
}

void InnerStrengths(const Macroblock& mb, Strengths* strengths) {
    const bool intra = IsIntra(mb.mbType);
    const bool nothing = !intra && HasOneMotion(mb) && mb.codedLumaBlocks == 0;
    for (u32 edge = 1; edge < 4; ++edge) {
        u32& vertical = strengths->edges[0][edge].all;
        u32& horizontal = strengths->edges[1][edge].all;
        if (intra || nothing) {
            vertical = horizontal = intra ? Uniform(BsIntraInside) : 0;
            continue;
        }
        vertical = InterEdge(mb, edge - 1, mb, edge, 4);
        horizontal = InterEdge(mb, edge * 4 - 4, mb, edge * 4, 1);
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

u32 OuterStrength(const Macroblock& mb, const Macroblock* neighbour, u32 p, u32 along) {
    if (neighbour == nullptr)
        return 0;
    if (IsIntra(mb.mbType) || IsIntra(neighbour->mbType))
        return Uniform(BsIntraMbEdge);
    return InterEdge(*neighbour, p, mb, 0, along);
}

// ---- Filters
// ---------------------------------------------------------------------------------------------------

// 8.7.2.2: thresholds for the edge between macroblocks of QP `qpP` and `qpQ`.
struct Thresholds {
    i32 alpha, beta;
    const u8* tc0; // [bS - 1]

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
        EdgeFilter filter{alpha, beta, {}};
        for (u32 i = 0; i < 4; ++i)
            filter.tc0[i] = edge.bS[i] == 0 ? static_cast<i8>(-1) : static_cast<i8>(tc0[edge.bS[i] - 1]);
        return filter;
    }
};

// The filters of one component in one direction.
struct DirectionFilters {
    SampleRoutines::NormalFilter normal;
    SampleRoutines::StrongFilter strong;
};

void FilterEdge(u8* q0, ptrdiff_t stride, const EdgeStrength& edge, const Thresholds& thresholds,
                const DirectionFilters& filters) {
    if (edge.all == 0 || thresholds.FilterNothing())
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
        Strengths strengths;
        InnerStrengths(mb, &strengths);
        strengths.edges[0][0].all = OuterStrength(mb, left, 3, 4);
        strengths.edges[1][0].all = OuterStrength(mb, above, 12, 1);
        if (!strengths.Any())
            return;
        FilterLuma(strengths);
        FilterChroma(Cb, strengths);
        FilterChroma(Cr, strengths);
    }

private:
    void FilterLuma(const Strengths& strengths) const;
    void FilterChroma(Plane plane, const Strengths& strengths) const;
    void FilterDirection(u8* samples, ptrdiff_t stride, ptrdiff_t edgeStep, u32 edgeIncrement,
                         const EdgeStrength* edges, const Thresholds& outer, const Thresholds& inner,
                         const DirectionFilters& filters) const;

    const Image& image;
    const Macroblock& mb;
    const u32 mbX, mbY;
    const SampleRoutines& routines;
    const Macroblock* const left;
    const Macroblock* const above;
};

// Filters edges 0, `edgeIncrement`, ... of one direction, `edgeStep` bytes apart.
void MacroblockFilter::FilterDirection(u8* samples, ptrdiff_t stride, ptrdiff_t edgeStep, u32 edgeIncrement,
                                       const EdgeStrength* edges, const Thresholds& outer,
                                       const Thresholds& inner, const DirectionFilters& filters) const {
    FilterEdge(samples, stride, edges[0], outer, filters);
    for (u32 edge = edgeIncrement; edge < 4; edge += edgeIncrement) {
        samples += edgeStep;
        FilterEdge(samples, stride, edges[edge], inner, filters);
    }
}

void MacroblockFilter::FilterLuma(const Strengths& strengths) const {
    constexpr ptrdiff_t EdgeDistance = 4; // samples
    u8* const samples = image.MbSamples(Luma, mbX, mbY);
    const ptrdiff_t stride = image.size.Stride(Luma);
    const Thresholds inner(mb.qpY, mb.qpY, mb);
    const Thresholds outerLeft(left != nullptr ? left->qpY : mb.qpY, mb.qpY, mb);
    const Thresholds outerAbove(above != nullptr ? above->qpY : mb.qpY, mb.qpY, mb);
    FilterDirection(samples, stride, EdgeDistance, 1, strengths.edges[0], outerLeft, inner,
                    {routines.lumaVertical, routines.lumaVerticalStrong});
    FilterDirection(samples, stride, EdgeDistance * stride, 1, strengths.edges[1], outerAbove, inner,
                    {routines.lumaHorizontal, routines.lumaHorizontalStrong});
}

// Chroma edges lie on every second luma edge and take its strengths.
void MacroblockFilter::FilterChroma(Plane plane, const Strengths& strengths) const {
    constexpr ptrdiff_t EdgeDistance = 4; // samples
    u8* const samples = image.MbSamples(plane, mbX, mbY);
    const ptrdiff_t stride = image.size.Stride(plane);
    const auto chromaQp = [this](const Macroblock* m) {
        return ChromaQp((m != nullptr ? m->qpY : mb.qpY) + mb.chroma_qp_index_offset);
    };
    const Thresholds inner(chromaQp(&mb), chromaQp(&mb), mb);
    const Thresholds outerLeft(chromaQp(left), chromaQp(&mb), mb);
    const Thresholds outerAbove(chromaQp(above), chromaQp(&mb), mb);
    FilterDirection(samples, stride, EdgeDistance, 2, strengths.edges[0], outerLeft, inner,
                    {routines.chromaVertical, routines.chromaVerticalStrong});
    FilterDirection(samples, stride, EdgeDistance * stride, 2, strengths.edges[1], outerAbove, inner,
                    {routines.chromaHorizontal, routines.chromaHorizontalStrong});
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
