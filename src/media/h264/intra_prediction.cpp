// Intra prediction of 4x4, 16x16 and chroma blocks (8.3.1.2, 8.3.3, 8.3.4).
#include "media/h264/intra_prediction.h"

#include <algorithm>
#include <cstring>

namespace h264 {

namespace {

constexpr u8 MidGrey = 128; // DC without neighbours

u8 Clip1(i32 value) {
    return static_cast<u8>(std::clamp(value, 0, 255));
}

void FillBlock(u8* dst, ptrdiff_t stride, u32 width, u32 height, u8 value) {
    for (u32 y = 0; y < height; ++y, dst += stride)
        std::memset(dst, value, width);
}

u32 SumAbove(const u8* dst, ptrdiff_t stride, u32 count) {
    u32 sum = 0;
    for (u32 x = 0; x < count; ++x)
        sum += dst[static_cast<ptrdiff_t>(x) - stride];
    return sum;
}

u32 SumLeft(const u8* dst, ptrdiff_t stride, u32 count) {
    u32 sum = 0;
    for (u32 y = 0; y < count; ++y)
        sum += dst[static_cast<ptrdiff_t>(y) * stride - 1];
    return sum;
}

// 8.3.1.2.3 and 8.3.3.3: the mean of the sides that are there, each of `count` samples (a power of two).
u8 DcValue(const u8* dst, ptrdiff_t stride, u32 count, bool left, bool above) {
    if (!left && !above)
        return MidGrey;
    const u32 sum = (left ? SumLeft(dst, stride, count) : 0) + (above ? SumAbove(dst, stride, count) : 0);
    const u32 samples = left && above ? 2 * count : count;
    return static_cast<u8>((sum + samples / 2) / samples);
}

// 8.3.1.2.1, 8.3.3.1 and 8.3.4.3
void PredictVertical(u8* dst, ptrdiff_t stride, u32 side) {
    const u8* above = dst - stride;
    for (u32 y = 0; y < side; ++y, dst += stride)
        std::memcpy(dst, above, side);
}

// 8.3.1.2.2, 8.3.3.2 and 8.3.4.2
void PredictHorizontal(u8* dst, ptrdiff_t stride, u32 side) {
    for (u32 y = 0; y < side; ++y, dst += stride)
        std::memset(dst, dst[-1], side);
}

// 8.3.3.4 and 8.3.4.4: a plane through the borders. `factor` and `shift` scale the slope.
void PredictPlane(u8* dst, ptrdiff_t stride, i32 side, i32 factor, i32 shift) {
    const u8* above = dst - stride;
    const u8* left = dst - 1;
    const i32 half = side / 2;
    i32 horizontal = 0;
    i32 vertical = 0;
    for (i32 i = 0; i < half; ++i) {
        horizontal += (i + 1) * (above[half + i] - above[half - 2 - i]);
        vertical += (i + 1) * (left[(half + i) * stride] - left[(half - 2 - i) * stride]);
    }
    const i32 b = (factor * horizontal + (1 << (shift - 1))) >> shift;
    const i32 c = (factor * vertical + (1 << (shift - 1))) >> shift;
    const i32 a = 16 * (left[(side - 1) * stride] + above[side - 1]);
    for (i32 y = 0; y < side; ++y, dst += stride) {
        i32 value = a + c * (y - half + 1) - b * (half - 1) + 16;
        for (i32 x = 0; x < side; ++x, value += b)
            dst[x] = Clip1(value >> 5);
    }
}

// ---- 8.3.1.2 Intra 4x4 ----

// The samples around a 4x4 block as one line, from the lowest on the left over the corner to the last above
// right, with both ends repeated once:
//
//      index  -1  0   1   2   3    4      5 .. 12   13
//      sample  L3 L3  L2  L1  L0  corner  A0 .. A7  A7
class Border {
public:
    Border(const u8* dst, ptrdiff_t stride, const IntraNeighbours& neighbours) {
        const u8* above = dst - stride;
        for (u32 i = 0; neighbours.left && i < 4; ++i)
            At(3 - static_cast<i32>(i)) = dst[static_cast<ptrdiff_t>(i) * stride - 1];
        At(-1) = At(0);
        if (neighbours.aboveLeft)
            At(4) = above[-1];
        if (!neighbours.above)
            return;
        std::memcpy(&At(5), above, neighbours.aboveRight ? 8 : 4);
        if (!neighbours.aboveRight)
            std::memset(&At(9), above[3], 4);
        At(13) = At(12);
    }

    u8 One(i32 i) const { return samples[i + 1]; }
    u8 Two(i32 i) const { return static_cast<u8>((One(i) + One(i + 1) + 1) >> 1); }
    u8 Three(i32 i) const { return static_cast<u8>((One(i - 1) + 2 * One(i) + One(i + 1) + 2) >> 2); }

private:
    u8& At(i32 i) { return samples[i + 1]; }

    u8 samples[16] = {};
};

// Calls `value(x, y)` for each sample of the block.
template <class Value>
void Fill4x4(u8* dst, ptrdiff_t stride, Value value) {
    for (i32 y = 0; y < 4; ++y, dst += stride) {
        for (i32 x = 0; x < 4; ++x)
            dst[x] = value(x, y);
    }
}

bool NeighboursSuffice(Intra4x4PredMode mode, const IntraNeighbours& n) {
    switch (mode) {
    case Intra4x4PredMode::Vertical:
    case Intra4x4PredMode::DiagonalDownLeft:
    case Intra4x4PredMode::VerticalLeft:
        return n.above;
    case Intra4x4PredMode::Horizontal:
    case Intra4x4PredMode::HorizontalUp:
        return n.left;
    case Intra4x4PredMode::DiagonalDownRight:
    case Intra4x4PredMode::VerticalRight:
    case Intra4x4PredMode::HorizontalDown:
        return n.above && n.left && n.aboveLeft;
    default:
        return true;
    }
}

// 8.3.1.2.4 to 8.3.1.2.9, along the border: `Two` and `Three` are the means of the standard's formulas.
void PredictDirectional4x4(u8* dst, ptrdiff_t stride, Intra4x4PredMode mode, const Border& border) {
    switch (mode) {
    case Intra4x4PredMode::DiagonalDownLeft:
        return Fill4x4(dst, stride, [&](i32 x, i32 y) { return border.Three(6 + x + y); });
    case Intra4x4PredMode::DiagonalDownRight:
        return Fill4x4(dst, stride, [&](i32 x, i32 y) { return border.Three(4 + x - y); });
    case Intra4x4PredMode::VerticalRight:
        return Fill4x4(dst, stride, [&](i32 x, i32 y) {
            const i32 zVR = 2 * x - y;
            if (zVR < -1)
                return border.Three(5 - y);
            return (zVR & 1) == 0 ? border.Two(4 + x - (y >> 1)) : border.Three(4 + x - (y >> 1));
        });
    case Intra4x4PredMode::HorizontalDown:
        return Fill4x4(dst, stride, [&](i32 x, i32 y) {
            const i32 zHD = 2 * y - x;
            if (zHD < -1)
                return border.Three(3 + x);
            return (zHD & 1) == 0 ? border.Two(3 - y + (x >> 1)) : border.Three(4 - y + (x >> 1));
        });
    case Intra4x4PredMode::VerticalLeft:
        return Fill4x4(dst, stride, [&](i32 x, i32 y) {
            return (y & 1) == 0 ? border.Two(5 + x + (y >> 1)) : border.Three(6 + x + (y >> 1));
        });
    default: // HorizontalUp
        return Fill4x4(dst, stride, [&](i32 x, i32 y) {
            const i32 zHU = x + 2 * y;
            if (zHU > 5)
                return border.One(0);
            return (zHU & 1) == 0 ? border.Two(2 - y - (x >> 1)) : border.Three(2 - y - (x >> 1));
        });
    }
}

// ---- 8.3.4 Chroma ----

// 8.3.4.1: each quarter has a DC of its own. The quarters off the diagonal prefer the side that
// they touch alone.
void PredictChromaDc(u8* dst, ptrdiff_t stride, const IntraNeighbours& n) {
    constexpr u32 Side = 4;
    u8* const below = dst + Side * stride;
    const u8 upperLeft = DcValue(dst, stride, Side, n.left, n.above);
    const u32 sumLeftLow = n.left ? SumLeft(below, stride, Side) : 0;
    const u32 sumAboveRight = n.above ? SumAbove(dst + Side, stride, Side) : 0;
    const u8 leftLow = static_cast<u8>((sumLeftLow + 2) >> 2);
    const u8 aboveRight = static_cast<u8>((sumAboveRight + 2) >> 2);
    u8 upperRight = MidGrey, lowerLeft = MidGrey, lowerRight = MidGrey;
    if (n.left && n.above) {
        upperRight = aboveRight;
        lowerLeft = leftLow;
        lowerRight = static_cast<u8>((sumLeftLow + sumAboveRight + 4) >> 3);
    } else if (n.above) {
        upperRight = lowerRight = aboveRight;
        lowerLeft = DcValue(dst, stride, Side, false, true);
    } else if (n.left) {
        lowerLeft = lowerRight = leftLow;
        upperRight = DcValue(dst, stride, Side, true, false);
    }
    FillBlock(dst, stride, Side, Side, upperLeft);
    FillBlock(dst + Side, stride, Side, Side, upperRight);
    FillBlock(below, stride, Side, Side, lowerLeft);
    FillBlock(below + Side, stride, Side, Side, lowerRight);
}

} // namespace

bool PredictIntra4x4(u8* dst, ptrdiff_t stride, Intra4x4PredMode mode, const IntraNeighbours& neighbours) {
    if (!NeighboursSuffice(mode, neighbours))
        return false;
    if (mode == Intra4x4PredMode::Vertical)
        PredictVertical(dst, stride, 4);
    else if (mode == Intra4x4PredMode::Horizontal)
        PredictHorizontal(dst, stride, 4);
    else if (mode == Intra4x4PredMode::Dc)
        FillBlock(dst, stride, 4, 4, DcValue(dst, stride, 4, neighbours.left, neighbours.above));
    else
        PredictDirectional4x4(dst, stride, mode, Border(dst, stride, neighbours));
    return true;
}

bool PredictIntra16x16(u8* dst, ptrdiff_t stride, Intra16x16PredMode mode, const IntraNeighbours& n) {
    constexpr u32 Side = 16;
    switch (mode) {
    case Intra16x16PredMode::Vertical:
        if (n.above)
            PredictVertical(dst, stride, Side);
        return n.above;
    case Intra16x16PredMode::Horizontal:
        if (n.left)
            PredictHorizontal(dst, stride, Side);
        return n.left;
    case Intra16x16PredMode::Dc:
        FillBlock(dst, stride, Side, Side, DcValue(dst, stride, Side, n.left, n.above));
        return true;
    default:
        if (n.above && n.left && n.aboveLeft)
            PredictPlane(dst, stride, Side, 5, 6);
        return n.above && n.left && n.aboveLeft;
    }
}

bool PredictIntraChroma(u8* dst, ptrdiff_t stride, IntraChromaPredMode mode, const IntraNeighbours& n) {
    constexpr u32 Side = 8;
    switch (mode) {
    case IntraChromaPredMode::Dc:
        PredictChromaDc(dst, stride, n);
        return true;
    case IntraChromaPredMode::Horizontal:
        if (n.left)
            PredictHorizontal(dst, stride, Side);
        return n.left;
    case IntraChromaPredMode::Vertical:
        if (n.above)
            PredictVertical(dst, stride, Side);
        return n.above;
    default:
        if (n.above && n.left && n.aboveLeft)
            PredictPlane(dst, stride, Side, 34, 6);
        return n.above && n.left && n.aboveLeft;
    }
}

} // namespace h264
