// Turns the outline of a line into the outline of its stroke: two borders, one at each side of the line in
// half the stroke's width, with joins at the corners and caps at open ends. To be filled by the non-zero
// rule.
//
// The stroke is thought of as the union of simple pieces, each wound in the same direction: one for each
// straight or slightly bent part of the line, from border to border; a wedge at the outer side of each
// corner; a cap at each end. Where a border would run back into itself, at the inner side of a corner or of a
// bend that is tighter than the stroke, it is led through the line itself, so that no piece is wound the
// other way and cuts a hole.
#pragma once

#include <cstdint>

#include "gui/vector/fixed_math.h"
#include "gui/vector/outline.h"

namespace vec {

enum class Cap : uint8_t { Butt = 0, Square = 1, Round = 2 };
enum class Join : uint8_t { Miter = 0, Bevel = 1, Round = 2 };

// One side of the stroke: points with tags, the contours one behind the other. The arrays only grow.
class Border {
public:
    Border() = default;
    ~Border();
    Border(const Border&) = delete;
    Border& operator=(const Border&) = delete;

    void clear();
    bool hasFailed() const { return m_failed; } // memory ran out; what is missing is not known

    void moveTo(FixedPoint to); // begins a contour
    // Nothing is added within 1 unit of the last point.
    void lineTo(FixedPoint to);
    void cubicTo(FixedPoint control1, FixedPoint control2, FixedPoint to);
    // An arc around centre in pieces of at most 90 degrees, from its angle over sweep (-360..360 degrees).
    void arcTo(FixedPoint centre, int32_t radius, Angle from, Angle sweep);
    void moveLast(FixedPoint to); // the last point goes elsewhere

    // Ends the contour: its last point, which lies at its first, takes that one's place. reversed: turned
    // around.
    void close(bool reversed);
    // Goes back along the other side's current contour, which is gone there afterwards.
    void appendReversed(Border& other);

    // Copies all contours to the outline, which has room for them.
    void copyTo(Outline& outline) const;
    uint32_t pointCount() const { return m_count; }
    uint32_t contourCount() const { return m_contours; }

private:
    bool reserve(uint32_t more);
    void add(FixedPoint point, uint8_t tag);
    bool isAtLast(FixedPoint point) const;

    FixedPoint* m_points = nullptr;
    uint8_t* m_tags = nullptr;
    uint32_t m_count = 0;
    uint32_t m_max = 0;
    uint32_t m_start = 0; // first point of the current contour
    uint32_t m_contours = 0;
    bool m_failed = false;
};

class Stroker final : public OutlineSink {
public:
    struct Style {
        int32_t radius = kFixedOne / 2;    // half the width, 26.6
        Fixed miterLimit = 4 * kFixedUnit; // longest miter over width
        Cap cap = Cap::Butt;
        Join join = Join::Miter;
    };

    static constexpr int32_t kMaxRadius = 1 << 22; // 26.6

    // Replaces the outline by that of its stroke. On an error the outline is empty.
    OutlineError stroke(Outline& outline, const Style& style);

    OutlineError moveTo(FixedPoint to, bool closed) override;
    OutlineError lineTo(FixedPoint to) override;
    OutlineError conicTo(FixedPoint control, FixedPoint to) override;
    OutlineError cubicTo(FixedPoint control1, FixedPoint control2, FixedPoint to) override;
    OutlineError endContour(FixedPoint first, bool closed) override;

private:
    // A part of a curve, and the directions of its three legs.
    struct Arc {
        FixedPoint p[4];
        int level = 0;
    };
    struct Legs {
        Angle in = 0;
        Angle middle = 0;
        Angle out = 0;
        Angle turn() const; // sum of both turns, without sign
    };

    FixedPoint offset(FixedPoint point, Angle direction, Angle side) const;
    Angle sideAngle(int side) const { return side == 0 ? kAngle90 : -kAngle90; }
    OutlineError status() const;

    void begin(Angle direction, int32_t length);
    void corner(Angle direction, int32_t length, Join join);
    void innerCorner(int side, Angle direction, int32_t length, Angle turn);
    void outerCorner(int side, Angle direction, Angle turn, Join join);
    void endAt(FixedPoint to, Angle direction, int32_t length);
    void addCap(FixedPoint centre, Angle direction);
    void endOpen();
    void endClosed(FixedPoint first);

    OutlineError curve(const Arc& whole, Angle maxTurn);
    void piece(const Arc& arc, const Legs& legs, bool isFirst);
    void offsetPiece(int side, const Arc& arc, const Legs& legs);
    Legs legsOf(const Arc& arc) const;

    Style m_style;
    Border m_borders[2]; // at +90 and at -90 degrees of the line's direction

    FixedPoint m_pen;
    FixedPoint m_start;        // of the contour
    Angle m_startAngle = 0;    // its first direction
    int32_t m_startLength = 0; // of its first line; 0: it begins with a curve
    Angle m_angle = 0;         // direction at the pen
    int32_t m_length = 0;      // of the line that ends at the pen; 0: a curve ends there
    bool m_empty = true;       // nothing was drawn of the contour yet
    bool m_dot = false;        // there was a line or curve without length
};

} // namespace vec
