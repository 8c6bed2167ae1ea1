#include "gui/vector/outline.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "gui/vector/path.h"

namespace vec {

namespace {

// Exactly count elements; the array keeps its old size if memory ran out.
template <typename T>
bool Reallocate(T*& array, uint32_t count) {
    void* grown = realloc(array, size_t{count} * sizeof(T));
    if (grown)
        array = static_cast<T*>(grown);
    return grown != nullptr;
}

bool IsUsable(VPointF point) {
    return std::isfinite(point.x) && std::isfinite(point.y);
}

int32_t ToFixed(float value) {
    constexpr float kReach = static_cast<float>(kMaxFixed);
    return static_cast<int32_t>(std::clamp(value * kFixedOne, -kReach, kReach));
}

FixedPoint ToFixed(VPointF point) {
    return {ToFixed(point.x), ToFixed(point.y)};
}

FixedPoint Middle(FixedPoint a, FixedPoint b) {
    return {(a.x + b.x) / 2, (a.y + b.y) / 2};
}

uint32_t PointsOf(VPath::Element element) {
    constexpr uint32_t kPoints[] = {1, 1, 3, 0};
    return kPoints[static_cast<uint8_t>(element)];
}

// Whether each command has its points, and all of them can be used.
bool IsWellFormed(const VPath& path) {
    uint64_t needed = 0;
    for (const VPath::Element element : path.elements())
        needed += PointsOf(element);
    const auto& points = path.points();
    return needed == points.GetSize() && std::all_of(points.begin(), points.end(), IsUsable);
}

} // namespace

Outline::Outline() {
    reserve(kFirstPoints - 1, kFirstContours - 1);
}

Outline::~Outline() {
    free(m_points);
    free(m_tags);
    free(m_contourEnds);
    free(m_closed);
}

void Outline::clear() {
    m_pointCount = 0;
    m_contourCount = 0;
}

bool Outline::reserve(uint32_t points, uint32_t contours) {
    const uint32_t allPoints = m_pointCount + points + 1; // a capacity that is just reached grows too
    if (allPoints > m_pointCapacity) {
        if (!Reallocate(m_points, allPoints) || !Reallocate(m_tags, allPoints))
            return false;
        m_pointCapacity = allPoints;
    }
    const uint32_t allContours = m_contourCount + contours + 1;
    if (allContours > m_contourCapacity) {
        if (!Reallocate(m_contourEnds, allContours) || !Reallocate(m_closed, allContours))
            return false;
        m_contourCapacity = allContours;
    }
    return true;
}

void Outline::addPoint(FixedPoint point, uint8_t tag) {
    m_points[m_pointCount] = point;
    m_tags[m_pointCount] = tag;
    ++m_pointCount;
}

void Outline::endContour(bool closed) {
    if (m_pointCount == contourStart())
        return;
    m_contourEnds[m_contourCount] = m_pointCount;
    m_closed[m_contourCount] = closed ? 1 : 0;
    ++m_contourCount;
}

// Repeats the first point of the contour and ends it.
void Outline::closeContour() {
    if (m_pointCount == contourStart())
        return;
    addPoint(m_points[contourStart()], TagOn);
    endContour(true);
}

OutlineError Outline::convert(const VPath& path) {
    clear();
    if (!IsWellFormed(path))
        return OutlineInvalid;
    const uint32_t elements =
        path.elements().GetSize(); // each closes at most one contour, with one more point
    if (!reserve(path.points().GetSize() + elements, elements + 1))
        return OutlineNoMemory;
    const VPointF* point = path.points().GetData();
    for (const VPath::Element element : path.elements()) {
        switch (element) {
        case VPath::Element::MoveTo:
            endContour(false);
            [[fallthrough]];
        case VPath::Element::LineTo:
            addPoint(ToFixed(point[0]), TagOn);
            break;
        case VPath::Element::CubicTo:
            addPoint(ToFixed(point[0]), TagCubic);
            addPoint(ToFixed(point[1]), TagCubic);
            addPoint(ToFixed(point[2]), TagOn);
            break;
        case VPath::Element::Close:
            closeContour();
            break;
        }
        point += PointsOf(element);
    }
    endContour(false);
    return OutlineOk;
}

namespace {

// Walks over one contour.
class ContourWalk {
public:
    ContourWalk(const Outline& outline, uint32_t contour, OutlineSink& sink)
        : m_points(outline.points()),
          m_tags(outline.tags()),
          m_at(outline.contourBegin(contour)),
          m_end(outline.contourEnd(contour)),
          m_closed(outline.isClosed(contour)),
          m_sink(sink) {}

    OutlineError run() {
        if (kind(m_at) == TagCubic)
            return OutlineInvalid;
        begin();
        OutlineError error = m_sink.moveTo(m_first, m_closed);
        while (error == OutlineOk && m_at < m_end)
            error = step();
        return error == OutlineOk ? m_sink.endContour(m_first, m_closed) : error;
    }

private:
    uint8_t kind(uint32_t at) const { return m_tags[at] & TagKindMask; }

    // A contour that begins with a control point starts at its last point, or in the middle of the two.
    void begin() {
        if (kind(m_at) == TagOn) {
            m_first = m_points[m_at++];
            return;
        }
        const FixedPoint last = m_points[m_end - 1];
        if (kind(m_end - 1) == TagOn) {
            m_first = last;
            --m_end;
        } else {
            m_first = Middle(m_points[m_at], last);
        }
    }

    OutlineError step() {
        switch (kind(m_at)) {
        case TagOn:
            return m_sink.lineTo(m_points[m_at++]);
        case TagConic:
            return conic();
        default:
            return cubic();
        }
    }

    OutlineError conic() {
        const FixedPoint control = m_points[m_at++];
        if (m_at == m_end)
            return m_sink.conicTo(control, m_first);
        if (kind(m_at) == TagOn)
            return m_sink.conicTo(control, m_points[m_at++]);
        if (kind(m_at) == TagConic)
            return m_sink.conicTo(control, Middle(control, m_points[m_at]));
        return OutlineInvalid;
    }

    OutlineError cubic() {
        if (m_at + 1 >= m_end || kind(m_at + 1) != TagCubic)
            return OutlineInvalid;
        const FixedPoint control1 = m_points[m_at];
        const FixedPoint control2 = m_points[m_at + 1];
        m_at += 2;
        if (m_at == m_end)
            return m_sink.cubicTo(control1, control2, m_first);
        if (kind(m_at) != TagOn)
            return OutlineInvalid;
        return m_sink.cubicTo(control1, control2, m_points[m_at++]);
    }

    const FixedPoint* m_points;
    const uint8_t* m_tags;
    uint32_t m_at;
    uint32_t m_end;
    bool m_closed;
    OutlineSink& m_sink;
    FixedPoint m_first;
};

} // namespace

OutlineError Decompose(const Outline& outline, OutlineSink& sink) {
    for (uint32_t contour = 0; contour < outline.contourCount(); ++contour) {
        const OutlineError error = ContourWalk(outline, contour, sink).run();
        if (error != OutlineOk)
            return error;
    }
    return OutlineOk;
}

} // namespace vec
