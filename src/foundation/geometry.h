// Points, sizes and rectangles in whole pixels. Rectangles are half-open: a rectangle covers x .. x + width -
// 1, neighbours share an edge, and one without positive width and height is empty. What is named as a
// participle (Shrunken, Moved) hands out another value; the plain verb changes this one. Sums saturate at the
// ends of the 32-bit range instead of overflowing.
#pragma once

#include <algorithm>
#include <cstdint>

namespace foundation {

constexpr int32_t SaturateToInt32(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

constexpr int32_t SaturatedAdd(int64_t a, int64_t b) {
    return SaturateToInt32(a + b);
}

} // namespace foundation

class CVrSize {
public:
    constexpr CVrSize() = default;
    constexpr CVrSize(int32_t newWidth, int32_t newHeight) : width(newWidth), height(newHeight) {}
    constexpr CVrSize(const CVrSize&) = default;
    constexpr virtual ~CVrSize() = default;

    constexpr virtual CVrSize& operator=(const CVrSize& size) {
        width = size.width;
        height = size.height;
        return *this;
    }
    constexpr virtual void Assign(const CVrSize& size) { *this = size; }

    constexpr bool IsEmpty() const { return width <= 0 || height <= 0; }
    constexpr bool operator==(const CVrSize& other) const {
        return width == other.width && height == other.height;
    }

    int32_t width = 0;
    int32_t height = 0;
};

class CVrPoint {
public:
    constexpr CVrPoint() = default;
    constexpr CVrPoint(int32_t newX, int32_t newY) : x(newX), y(newY) {}

    constexpr void Offset(int32_t dx, int32_t dy) {
        x = foundation::SaturatedAdd(x, dx);
        y = foundation::SaturatedAdd(y, dy);
    }
    constexpr CVrPoint Moved(int32_t dx, int32_t dy) const {
        CVrPoint moved = *this;
        moved.Offset(dx, dy);
        return moved;
    }
    constexpr CVrPoint operator+(CVrPoint other) const { return Moved(other.x, other.y); }
    constexpr CVrPoint operator-(CVrPoint other) const {
        return {foundation::SaturatedAdd(x, -int64_t{other.x}),
                foundation::SaturatedAdd(y, -int64_t{other.y})};
    }
    constexpr bool operator==(const CVrPoint&) const = default;

    int32_t x = 0;
    int32_t y = 0;
};

class CVrRect {
public:
    constexpr CVrRect() = default;
    constexpr CVrRect(int32_t newX, int32_t newY, int32_t newWidth, int32_t newHeight)
        : x(newX), y(newY), width(newWidth), height(newHeight) {}
    constexpr CVrRect(CVrPoint origin, const CVrSize& size)
        : CVrRect(origin.x, origin.y, size.width, size.height) {}

    // right and bottom are the first column and row outside.
    static constexpr CVrRect FromEdges(int32_t left, int32_t top, int32_t right, int32_t bottom) {
        return {left, top, foundation::SaturatedAdd(right, -int64_t{left}),
                foundation::SaturatedAdd(bottom, -int64_t{top})};
    }

    constexpr int32_t Left() const { return x; }
    constexpr int32_t Top() const { return y; }
    constexpr int32_t Right() const { return foundation::SaturatedAdd(x, width); }
    constexpr int32_t Bottom() const { return foundation::SaturatedAdd(y, height); }
    constexpr CVrPoint Origin() const { return {x, y}; }
    constexpr CVrPoint Center() const {
        return {foundation::SaturatedAdd(x, width / 2), foundation::SaturatedAdd(y, height / 2)};
    }
    constexpr CVrSize Size() const { return {width, height}; }
    constexpr bool IsEmpty() const { return width <= 0 || height <= 0; }

    constexpr bool Contains(CVrPoint point) const {
        return point.x >= x && point.x < int64_t{x} + width && point.y >= y && point.y < int64_t{y} + height;
    }
    // True for an empty rectangle too.
    constexpr bool Contains(const CVrRect& other) const {
        return other.IsEmpty() || (other.x >= x && int64_t{other.x} + other.width <= int64_t{x} + width &&
                                   other.y >= y && int64_t{other.y} + other.height <= int64_t{y} + height);
    }
    constexpr bool Intersects(const CVrRect& other) const { return !Intersected(other).IsEmpty(); }

    // The common part, all zero if there is none.
    constexpr CVrRect Intersected(const CVrRect& other) const {
        const CVrRect common =
            FromEdges(std::max(x, other.x), std::max(y, other.y), std::min(Right(), other.Right()),
                      std::min(Bottom(), other.Bottom()));
        return common.IsEmpty() ? CVrRect() : common;
    }

    // The smallest rectangle that holds both; an empty one counts as nothing.
    constexpr CVrRect United(const CVrRect& other) const {
        if (IsEmpty())
            return other;
        if (other.IsEmpty())
            return *this;
        return FromEdges(std::min(x, other.x), std::min(y, other.y), std::max(Right(), other.Right()),
                         std::max(Bottom(), other.Bottom()));
    }

    constexpr void Offset(int32_t dx, int32_t dy) {
        x = foundation::SaturatedAdd(x, dx);
        y = foundation::SaturatedAdd(y, dy);
    }
    constexpr CVrRect Moved(int32_t dx, int32_t dy) const {
        CVrRect moved = *this;
        moved.Offset(dx, dy);
        return moved;
    }
    constexpr CVrRect Moved(CVrPoint by) const { return Moved(by.x, by.y); }
    constexpr CVrRect MovedTo(int32_t newX, int32_t newY) const { return {newX, newY, width, height}; }
    constexpr CVrRect MovedTo(CVrPoint origin) const { return MovedTo(origin.x, origin.y); }

    // Takes pixels off the edges (adds them if negative); width and height may become negative, which is
    // empty.
    constexpr void Shrink(int32_t left, int32_t top, int32_t right, int32_t bottom) {
        Offset(left, top);
        width = foundation::SaturatedAdd(width, -(int64_t{left} + right));
        height = foundation::SaturatedAdd(height, -(int64_t{top} + bottom));
    }
    constexpr void Shrink(int32_t amount) { Shrink(amount, amount, amount, amount); }
    constexpr CVrRect Shrunken(int32_t left, int32_t top, int32_t right, int32_t bottom) const {
        CVrRect shrunken = *this;
        shrunken.Shrink(left, top, right, bottom);
        return shrunken;
    }
    constexpr CVrRect Shrunken(int32_t horizontal, int32_t vertical) const {
        return Shrunken(horizontal, vertical, horizontal, vertical);
    }
    constexpr CVrRect Shrunken(int32_t amount) const { return Shrunken(amount, amount); }
    constexpr CVrRect Grown(int32_t amount) const {
        return Shrunken(foundation::SaturateToInt32(-int64_t{amount}));
    }

    // This rectangle moved so that the outer one leaves equal space on both sides; an odd rest goes to the
    // right and to the bottom.
    constexpr CVrRect CenteredWithin(const CVrRect& outer) const {
        return MovedTo(foundation::SaturateToInt32(outer.x + FloorHalf(int64_t{outer.width} - width)),
                       foundation::SaturateToInt32(outer.y + FloorHalf(int64_t{outer.height} - height)));
    }

    constexpr bool operator==(const CVrRect&) const = default;

    int32_t x = 0;
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;

private:
    static constexpr int64_t FloorHalf(int64_t value) { return value >> 1; }
};
