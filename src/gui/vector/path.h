// A path of straight lines and cubic curves, in several sub-paths. Copies share their data until one is
// changed.
#pragma once

#include <cstdint>

#include "foundation/array.h"
#include "gui/vector/matrix.h"
#include "gui/vector/shared_data.h"

class VPath {
public:
    enum class Element : uint8_t {
        MoveTo = 0,  // one point
        LineTo = 1,  // one point
        CubicTo = 2, // three points
        Close = 3,   // no point
    };

    struct Data {
        VrArray<VPointF> points;
        VrArray<Element> elements;
        uint32_t segments = 0; // sub-paths, closed or open
    };

    void moveTo(VPointF point);
    void lineTo(VPointF point);
    void cubicTo(VPointF control1, VPointF control2, VPointF end);
    void close();
    void reset();

    // Whole sub-paths, clockwise on the screen.
    void addRect(VPointF topLeft, VPointF size);
    void addRoundRect(VPointF topLeft, VPointF size, float radius);
    void addEllipse(VPointF centre, VPointF radii);
    // An open arc; angles in degrees, clockwise from the right.
    void addArc(VPointF centre, float radius, float startAngle, float sweep);

    // All sub-paths of another path behind the own ones.
    void addPath(const VPath& other);

    void transform(const VMatrix& matrix);

    bool empty() const { return data.Read().elements.IsEmpty(); }
    const VrArray<VPointF>& points() const { return data.Read().points; }
    const VrArray<Element>& elements() const { return data.Read().elements; }
    uint32_t segments() const { return data.Read().segments; }

    // Same commands, so that the points correspond one by one.
    bool isCompatibleWith(const VPath& other) const;
    // The path between two compatible ones; part 0 gives from, 1 gives to.
    static VPath between(const VPath& from, const VPath& to, float part);

private:
    vec::SharedData<Data> data;
};
