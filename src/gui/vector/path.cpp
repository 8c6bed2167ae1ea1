#include "gui/vector/path.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace {

// Distance of the control points of a quarter circle, in radii.
constexpr float kQuarterControl = 0.552284750F;
constexpr float kRightAngle = 90; // degrees

// Distance of the control points of an arc, in radii.
float ArcControl(float angle) {
    return 4.0F / 3.0F * std::tan(angle / 4);
}

} // namespace

void VPath::moveTo(VPointF point) {
    Data& own = data.Write();
    own.points.Add(point);
    own.elements.Add(Element::MoveTo);
    ++own.segments;
}

void VPath::lineTo(VPointF point) {
    Data& own = data.Write();
    own.points.Add(point);
    own.elements.Add(Element::LineTo);
}

void VPath::cubicTo(VPointF control1, VPointF control2, VPointF end) {
    Data& own = data.Write();
    own.points.Add(control1);
    own.points.Add(control2);
    own.points.Add(end);
    own.elements.Add(Element::CubicTo);
}

void VPath::close() {
    data.Write().elements.Add(Element::Close);
}

void VPath::reset() {
    data.Reset();
}

void VPath::addRect(VPointF topLeft, VPointF size) {
    moveTo(topLeft);
    lineTo({topLeft.x + size.x, topLeft.y});
    lineTo(topLeft + size);
    lineTo({topLeft.x, topLeft.y + size.y});
    close();
}

void VPath::addRoundRect(VPointF topLeft, VPointF size, float radius) {
    const float r = std::min({radius, size.x / 2, size.y / 2});
    if (!(r > 0)) {
        addRect(topLeft, size);
        return;
    }
    const float c = r * (1 - kQuarterControl);
    const float left = topLeft.x, top = topLeft.y, right = left + size.x, bottom = top + size.y;
    moveTo({left + r, top});
    lineTo({right - r, top});
    cubicTo({right - c, top}, {right, top + c}, {right, top + r});
    lineTo({right, bottom - r});
    cubicTo({right, bottom - c}, {right - c, bottom}, {right - r, bottom});
    lineTo({left + r, bottom});
    cubicTo({left + c, bottom}, {left, bottom - c}, {left, bottom - r});
    lineTo({left, top + r});
    cubicTo({left, top + c}, {left + c, top}, {left + r, top});
    close();
}

void VPath::addEllipse(VPointF centre, VPointF radii) {
    const VPointF c = radii * kQuarterControl;
    const float left = centre.x - radii.x, top = centre.y - radii.y;
    const float right = centre.x + radii.x, bottom = centre.y + radii.y;
    moveTo({right, centre.y});
    cubicTo({right, centre.y + c.y}, {centre.x + c.x, bottom}, {centre.x, bottom});
    cubicTo({centre.x - c.x, bottom}, {left, centre.y + c.y}, {left, centre.y});
    cubicTo({left, centre.y - c.y}, {centre.x - c.x, top}, {centre.x, top});
    cubicTo({centre.x + c.x, top}, {right, centre.y - c.y}, {right, centre.y});
    close();
}

void VPath::addArc(VPointF centre, float radius, float startAngle, float sweep) {
    const float limited = std::clamp(sweep, -360.0F, 360.0F);
    const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(limited) / kRightAngle)));
    const float toRadians = std::numbers::pi_v<float> / 180;
    const float step = limited * toRadians / static_cast<float>(pieces);
    const float control = radius * ArcControl(step);
    float angle = startAngle * toRadians;
    const auto direction = [](float a) { return VPointF{std::cos(a), std::sin(a)}; };
    const auto tangent = [](float a) { return VPointF{-std::sin(a), std::cos(a)}; };
    moveTo(centre + direction(angle) * radius);
    for (int i = 0; i < pieces; ++i, angle += step) {
        const VPointF from = centre + direction(angle) * radius;
        const VPointF to = centre + direction(angle + step) * radius;
        cubicTo(from + tangent(angle) * control, to - tangent(angle + step) * control, to);
    }
}

void VPath::addPath(const VPath& other) {
    const VPath source(other); // it may be this path
    Data& own = data.Write();
    for (const VPointF& point : source.points())
        own.points.Add(point);
    for (const Element element : source.elements())
        own.elements.Add(element);
    own.segments += source.segments();
}

void VPath::transform(const VMatrix& matrix) {
    if (matrix.isIdentity() || empty())
        return;
    for (VPointF& point : data.Write().points)
        point = matrix.map(point);
}

bool VPath::isCompatibleWith(const VPath& other) const {
    const auto& mine = elements();
    const auto& others = other.elements();
    return mine.GetSize() == others.GetSize() && points().GetSize() == other.points().GetSize() &&
           std::equal(mine.begin(), mine.end(), others.begin());
}

VPath VPath::between(const VPath& from, const VPath& to, float part) {
    VPath path(from);
    if (part <= 0 || from.data.IsSharedWith(to.data))
        return path;
    if (part >= 1)
        return to;
    VrArray<VPointF>& points = path.data.Write().points;
    for (uint32_t i = 0; i < points.GetSize(); ++i)
        points[i] = points[i] + (to.points()[i] - points[i]) * part;
    return path;
}
