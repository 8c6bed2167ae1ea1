// The form in which a path reaches stroker and scan converter: points in 26.6 fixed point with a tag each,
// cut into contours. The arrays only grow, so that one outline serves the whole process.
#pragma once

#include <cstdint>

class VPath;

namespace vec {

struct FixedPoint {
    int32_t x = 0; // 26.6
    int32_t y = 0;

    bool operator==(const FixedPoint& other) const = default;
};

// What a point of an outline is.
enum PointTag : uint8_t {
    TagConic = 0, // control point of a quadratic curve
    TagOn = 1,    // on the curve
    TagCubic = 2, // control point of a cubic curve
    TagKindMask = 3,
    TagBegin = 4, // first point of a sub-path; used by the borders of a stroke
    TagEnd = 8,   // its last point
};

// Errors of a decomposition.
enum OutlineError : int32_t {
    OutlineOk = 0,
    OutlineInvalid = -1,
    OutlineNoMemory = -2,
    OutlinePoolExhausted = -4,
};

// Coordinates are held within this range (+-2,097,152 pixels), so that four times their difference fits 32
// bits.
inline constexpr int32_t kMaxFixed = 1 << 27;
inline constexpr int32_t kFixedOne = 64; // a pixel

class Outline {
public:
    static constexpr uint32_t kFirstPoints = 100;
    static constexpr uint32_t kFirstContours = 10;

    Outline();
    ~Outline();
    Outline(const Outline&) = delete;
    Outline& operator=(const Outline&) = delete;

    // Replaces the outline by the path; each coordinate times 64, truncated. OutlineInvalid, and an empty
    // outline, for coordinates that are no numbers or commands without their points.
    OutlineError convert(const VPath& path);

    void clear();
    bool reserve(uint32_t points, uint32_t contours); // more points and contours than there are
    // Within what was reserved.
    void addPoint(FixedPoint point, uint8_t tag);
    void endContour(bool closed); // nothing for an empty contour

    uint32_t pointCount() const { return m_pointCount; }
    uint32_t contourCount() const { return m_contourCount; }
    const FixedPoint* points() const { return m_points; }
    const uint8_t* tags() const { return m_tags; }
    uint32_t contourBegin(uint32_t contour) const { return contour == 0 ? 0 : m_contourEnds[contour - 1]; }
    uint32_t contourEnd(uint32_t contour) const { return m_contourEnds[contour]; } // behind its last point
    bool isClosed(uint32_t contour) const { return m_closed[contour] != 0; }

    bool evenOdd = false; // fill rule, else non-zero winding

private:
    uint32_t contourStart() const { return contourBegin(m_contourCount); }
    void closeContour();

    FixedPoint* m_points = nullptr;
    uint8_t* m_tags = nullptr;
    uint32_t* m_contourEnds = nullptr;
    uint8_t* m_closed = nullptr;
    uint32_t m_pointCount = 0;
    uint32_t m_pointCapacity = 0;
    uint32_t m_contourCount = 0;
    uint32_t m_contourCapacity = 0;
};

// Receives the commands of an outline. A command that does not return OutlineOk ends the decomposition.
class OutlineSink {
public:
    virtual ~OutlineSink() = default;
    virtual OutlineError moveTo(FixedPoint to, bool closed) = 0; // closed: whether the contour that begins is
    virtual OutlineError lineTo(FixedPoint to) = 0;
    virtual OutlineError conicTo(FixedPoint control, FixedPoint to) = 0;
    virtual OutlineError cubicTo(FixedPoint control1, FixedPoint control2, FixedPoint to) = 0;
    virtual OutlineError endContour(FixedPoint first, bool closed) = 0; // first: where the contour began
};

// Walks over all contours. Between two control points of quadratic curves a point on the curve is understood
// in their middle. OutlineInvalid for a contour that begins with a cubic control point, or a control point
// without its partner.
OutlineError Decompose(const Outline& outline, OutlineSink& sink);

} // namespace vec
