// Sections: one border; lines, corners and caps; curves.
#include "gui/vector/stroker.h"

#include <algorithm>
#include <cstdlib>

namespace vec {

namespace {

// A piece of a curve turns by less than this.
constexpr Angle kMaxConicTurn = kAngle90 / 3;
constexpr Angle kMaxCubicTurn = kAngle90 / 4;
// Pieces of one curve that meet at a larger angle than this have a cusp between them.
constexpr Angle kCuspTurn = kMaxCubicTurn / 4;

constexpr int kMaxSplits = 32;

FixedPoint operator+(FixedPoint a, FixedPoint b) {
    return {a.x + b.x, a.y + b.y};
}
FixedPoint operator-(FixedPoint a, FixedPoint b) {
    return {a.x - b.x, a.y - b.y};
}
FixedPoint Middle(FixedPoint a, FixedPoint b) {
    return {(a.x + b.x) >> 1, (a.y + b.y) >> 1};
}

bool IsShort(FixedPoint vector) {
    return std::abs(vector.x) <= 1 && std::abs(vector.y) <= 1;
}

FixedPoint Limited(FixedPoint point) {
    return {std::clamp(point.x, -kMaxFixed, kMaxFixed), std::clamp(point.y, -kMaxFixed, kMaxFixed)};
}

// The direction in the middle of two.
Angle Mean(Angle a, Angle b) {
    return a + Difference(a, b) / 2;
}

} // namespace

// --- One border ---

Border::~Border() {
    free(m_points);
    free(m_tags);
}

void Border::clear() {
    m_count = 0;
    m_start = 0;
    m_contours = 0;
    m_failed = false;
}

bool Border::reserve(uint32_t more) {
    uint32_t max = m_max;
    while (max < m_count + more)
        max += 16 + max / 2;
    if (max == m_max)
        return true;
    void* points = realloc(m_points, size_t{max} * sizeof(FixedPoint));
    if (points)
        m_points = static_cast<FixedPoint*>(points);
    void* tags = realloc(m_tags, max);
    if (tags)
        m_tags = static_cast<uint8_t*>(tags);
    m_failed = m_failed || !points || !tags;
    if (!m_failed)
        m_max = max;
    return !m_failed;
}

void Border::add(FixedPoint point, uint8_t tag) {
    if (!reserve(1))
        return;
    m_points[m_count] = Limited(point);
    m_tags[m_count] = tag;
    ++m_count;
}

bool Border::isAtLast(FixedPoint point) const {
    return m_count > m_start && IsShort(Limited(point) - m_points[m_count - 1]);
}

void Border::moveTo(FixedPoint to) {
    m_start = m_count;
    add(to, TagOn | TagBegin);
}

void Border::lineTo(FixedPoint to) {
    if (!isAtLast(to))
        add(to, TagOn);
}

void Border::cubicTo(FixedPoint control1, FixedPoint control2, FixedPoint to) {
    if (isAtLast(control1) && isAtLast(control2) && isAtLast(to))
        return;
    add(control1, TagCubic);
    add(control2, TagCubic);
    add(to, TagOn);
}

void Border::arcTo(FixedPoint centre, int32_t radius, Angle from, Angle sweep) {
    const int pieces = std::max(1, (std::abs(sweep) + kAngle90 - 1) / kAngle90);
    const Angle step = sweep / pieces;
    // Distance of the control points: 4/3 tan(step / 4) radii.
    const int32_t control = MulDiv(MulDiv(radius, Tan(step / 4), kFixedUnit), 4, 3);
    for (int i = 0; i < pieces; ++i) {
        const Angle begin = from + i * step;
        const Angle end = i == pieces - 1 ? from + sweep : begin + step;
        const FixedPoint first = centre + FromPolar(radius, begin);
        const FixedPoint last = centre + FromPolar(radius, end);
        cubicTo(first + FromPolar(control, begin + kAngle90), last - FromPolar(control, end + kAngle90),
                last);
    }
}

void Border::moveLast(FixedPoint to) {
    if (m_count > m_start)
        m_points[m_count - 1] = Limited(to);
}

void Border::close(bool reversed) {
    if (m_count > m_start + 1) {
        m_points[m_start] = m_points[m_count - 1];
        --m_count;
    }
    if (m_count <= m_start + 1) { // a point is no contour
        m_count = m_start;
        return;
    }
    if (reversed) {
        std::reverse(m_points + m_start + 1, m_points + m_count);
        std::reverse(m_tags + m_start + 1, m_tags + m_count);
    }
    m_tags[m_start] |= TagBegin;
    m_tags[m_count - 1] |= TagEnd;
    m_start = m_count;
    ++m_contours;
}

void Border::appendReversed(Border& other) {
    if (reserve(other.m_count - other.m_start))
        for (uint32_t i = other.m_count; i-- > other.m_start;)
            add(other.m_points[i], other.m_tags[i] & TagKindMask);
    other.m_count = other.m_start;
}

void Border::copyTo(Outline& outline) const {
    for (uint32_t i = 0; i < m_count; ++i) {
        outline.addPoint(m_points[i], m_tags[i] & TagKindMask);
        if (m_tags[i] & TagEnd)
            outline.endContour(true);
    }
}

// --- Lines, corners and caps ---

OutlineError Stroker::stroke(Outline& outline, const Style& style) {
    m_style = style;
    for (Border& border : m_borders)
        border.clear();
    OutlineError error = Decompose(outline, *this);
    outline.clear();
    const uint32_t points = m_borders[0].pointCount() + m_borders[1].pointCount();
    const uint32_t contours = m_borders[0].contourCount() + m_borders[1].contourCount();
    if (error == OutlineOk && !outline.reserve(points, contours))
        error = OutlineNoMemory;
    if (error == OutlineOk)
        for (const Border& border : m_borders)
            border.copyTo(outline);
    return error;
}

OutlineError Stroker::status() const {
    return m_borders[0].hasFailed() || m_borders[1].hasFailed() ? OutlineNoMemory : OutlineOk;
}

FixedPoint Stroker::offset(FixedPoint point, Angle direction, Angle side) const {
    return point + FromPolar(m_style.radius, direction + side);
}

OutlineError Stroker::moveTo(FixedPoint to, bool) {
    m_pen = to;
    m_start = to;
    m_empty = true;
    m_dot = false;
    return OutlineOk;
}

OutlineError Stroker::lineTo(FixedPoint to) {
    const FixedPoint vector = to - m_pen;
    if (vector == FixedPoint()) {
        m_dot = true;
        return OutlineOk;
    }
    const Angle direction = AngleOf(vector);
    const int32_t length = LengthOf(vector);
    if (m_empty)
        begin(direction, length);
    else
        corner(direction, length, m_style.join);
    for (int side = 0; side < 2; ++side)
        m_borders[side].lineTo(offset(to, direction, sideAngle(side)));
    endAt(to, direction, length);
    return status();
}

void Stroker::begin(Angle direction, int32_t length) {
    for (int side = 0; side < 2; ++side)
        m_borders[side].moveTo(offset(m_pen, direction, sideAngle(side)));
    m_startAngle = direction;
    m_startLength = length;
    m_empty = false;
}

void Stroker::endAt(FixedPoint to, Angle direction, int32_t length) {
    m_pen = to;
    m_angle = direction;
    m_length = length;
}

// The line goes on at the pen in another direction. length: of the line that follows; 0 for a curve.
void Stroker::corner(Angle direction, int32_t length, Join join) {
    const Angle turn = Difference(m_angle, direction);
    if (turn == 0)
        return;
    const int inner = turn > 0 ? 0 : 1;
    innerCorner(inner, direction, length, turn);
    outerCorner(1 - inner, direction, turn, join);
}

// The borders of two lines cross; if both lines are long enough for that the border turns at the crossing,
// otherwise it goes through the corner of the line itself. "Long enough" leaves the other half of each line
// to its other end.
void Stroker::innerCorner(int side, Angle direction, int32_t length, Angle turn) {
    Border& border = m_borders[side];
    const Angle half = turn / 2;
    const int64_t back = std::abs(int64_t{MulDiv(m_style.radius, Tan(half), kFixedUnit)}); // may be INT32_MIN
    const int32_t shorter = std::min(m_length, length);
    if (std::abs(turn) < kAngle180 && back <= shorter / 2) {
        const int32_t reach = MulDiv(m_style.radius, kFixedUnit, Cos(half));
        border.moveLast(m_pen + FromPolar(reach, m_angle + half + sideAngle(side)));
        return;
    }
    border.lineTo(m_pen);
    border.lineTo(offset(m_pen, direction, sideAngle(side)));
}

void Stroker::outerCorner(int side, Angle direction, Angle turn, Join join) {
    Border& border = m_borders[side];
    if (join == Join::Round) {
        border.arcTo(m_pen, m_style.radius, m_angle + sideAngle(side), turn);
        return;
    }
    // Miter over width is 1 / cos(turn / 2).
    const Fixed cosine = Cos(turn / 2);
    const bool isWithinLimit = int64_t{cosine} * m_style.miterLimit >= int64_t{kFixedUnit} * kFixedUnit;
    if (join == Join::Miter && isWithinLimit) {
        const int32_t reach = MulDiv(m_style.radius, kFixedUnit, cosine);
        border.lineTo(m_pen + FromPolar(reach, m_angle + turn / 2 + sideAngle(side)));
    }
    border.lineTo(offset(m_pen, direction, sideAngle(side)));
}

// From the side at +90 degrees of the direction in which the line ends to the other.
void Stroker::addCap(FixedPoint centre, Angle direction) {
    Border& border = m_borders[0];
    if (m_style.cap == Cap::Round) {
        border.arcTo(centre, m_style.radius, direction + kAngle90, -kAngle180);
        return;
    }
    if (m_style.cap == Cap::Square) {
        const FixedPoint ahead = FromPolar(m_style.radius, direction);
        border.lineTo(offset(centre, direction, kAngle90) + ahead);
        border.lineTo(offset(centre, direction, -kAngle90) + ahead);
    }
    border.lineTo(offset(centre, direction, -kAngle90));
}

OutlineError Stroker::endContour(FixedPoint first, bool closed) {
    if (m_empty) {
        // Of a line without length only its caps are seen, lying to the right.
        if (!m_dot || m_style.cap == Cap::Butt)
            return OutlineOk;
        begin(0, 0);
        endAt(m_pen, 0, 0);
        endOpen();
    } else if (closed) {
        endClosed(first);
    } else {
        endOpen();
    }
    return status();
}

// There along one side and back along the other.
void Stroker::endOpen() {
    addCap(m_pen, m_angle);
    m_borders[0].appendReversed(m_borders[1]);
    addCap(m_start, m_startAngle + kAngle180);
    m_borders[0].close(false);
}

void Stroker::endClosed(FixedPoint first) {
    lineTo(first);
    corner(m_startAngle, m_startLength, m_style.join);
    m_borders[0].close(false);
    m_borders[1].close(true);
}

// --- Curves ---

OutlineError Stroker::conicTo(FixedPoint control, FixedPoint to) {
    // The same curve as a cubic.
    const auto third = [control](FixedPoint end) {
        return FixedPoint{end.x + (control.x - end.x) * 2 / 3, end.y + (control.y - end.y) * 2 / 3};
    };
    return curve({{m_pen, third(m_pen), third(to), to}}, kMaxConicTurn);
}

OutlineError Stroker::cubicTo(FixedPoint control1, FixedPoint control2, FixedPoint to) {
    return curve({{m_pen, control1, control2, to}}, kMaxCubicTurn);
}

Angle Stroker::Legs::turn() const {
    return std::abs(Difference(in, middle)) + std::abs(Difference(middle, out));
}

// A leg that is too short for a direction takes that of its neighbour; without any, the line goes on as it
// did.
Stroker::Legs Stroker::legsOf(const Arc& arc) const {
    const FixedPoint legs[3] = {arc.p[1] - arc.p[0], arc.p[2] - arc.p[1], arc.p[3] - arc.p[2]};
    const bool has[3] = {!IsShort(legs[0]), !IsShort(legs[1]), !IsShort(legs[2])};
    if (!has[0] && !has[1] && !has[2]) {
        const FixedPoint chord = arc.p[3] - arc.p[0];
        const Angle only = IsShort(chord) ? m_angle : AngleOf(chord);
        return {only, only, only};
    }
    Legs result;
    result.in = AngleOf(legs[has[0] ? 0 : has[1] ? 1 : 2]);
    result.out = AngleOf(legs[has[2] ? 2 : has[1] ? 1 : 0]);
    result.middle = has[1] ? AngleOf(legs[1]) : Mean(result.in, result.out);
    return result;
}

OutlineError Stroker::curve(const Arc& whole, Angle maxTurn) {
    if (std::all_of(whole.p + 1, whole.p + 4, [&](FixedPoint point) { return point == whole.p[0]; })) {
        m_dot = true;
        return OutlineOk;
    }
    // Each entry is one level deeper than the one before.
    Arc stack[kMaxSplits + 2];
    int top = 0;
    stack[0] = whole;
    for (bool isFirst = true; top >= 0;) {
        const Arc arc = stack[top--];
        const Legs legs = legsOf(arc);
        if (legs.turn() < maxTurn || arc.level == kMaxSplits) {
            piece(arc, legs, isFirst);
            isFirst = false;
            continue;
        }
        const FixedPoint ab = Middle(arc.p[0], arc.p[1]);
        const FixedPoint bc = Middle(arc.p[1], arc.p[2]);
        const FixedPoint cd = Middle(arc.p[2], arc.p[3]);
        const FixedPoint abc = Middle(ab, bc);
        const FixedPoint bcd = Middle(bc, cd);
        const FixedPoint middle = Middle(abc, bcd);
        stack[++top] = {{middle, bcd, cd, arc.p[3]}, arc.level + 1};
        stack[++top] = {{arc.p[0], ab, abc, middle}, arc.level + 1};
    }
    m_length = 0;
    return status();
}

void Stroker::piece(const Arc& arc, const Legs& legs, bool isFirst) {
    if (m_empty)
        begin(legs.in, 0);
    else if (isFirst)
        corner(legs.in, 0, m_style.join);
    else if (std::abs(Difference(m_angle, legs.in)) > kCuspTurn)
        corner(legs.in, 0, Join::Round);
    for (int side = 0; side < 2; ++side)
        offsetPiece(side, arc, legs);
    endAt(arc.p[3], legs.out, 0);
}

// After Tiller and Hanson (1984): the legs of the control polygon are moved outward by the radius, and their
// crossings are the control points of the border.
void Stroker::offsetPiece(int side, const Arc& arc, const Legs& legs) {
    const Angle rotation = sideAngle(side);
    const auto crossing = [&](FixedPoint point, Angle before, Angle after) {
        const Angle half = Difference(before, after) / 2;
        return point + FromPolar(MulDiv(m_style.radius, kFixedUnit, Cos(half)), before + half + rotation);
    };
    const FixedPoint first = offset(arc.p[0], legs.in, rotation);
    const FixedPoint control1 = crossing(arc.p[1], legs.in, legs.middle);
    const FixedPoint control2 = crossing(arc.p[2], legs.middle, legs.out);
    const FixedPoint last = offset(arc.p[3], legs.out, rotation);

    Border& border = m_borders[side];
    border.lineTo(first);
    const FixedPoint ahead = arc.p[3] - arc.p[0];
    const FixedPoint moved = last - first;
    if (int64_t{ahead.x} * moved.x + int64_t{ahead.y} * moved.y >= 0) {
        border.cubicTo(control1, control2, last);
        return;
    }
    // The bend is tighter than the stroke: the border runs backward, on the far side of the bend's centre. To
    // keep the winding, what lies between line and border is gone around from its other end.
    border.lineTo(arc.p[0]);
    border.lineTo(last);
    border.cubicTo(control2, control1, first);
    border.lineTo(arc.p[3]);
    border.lineTo(last);
}

} // namespace vec
