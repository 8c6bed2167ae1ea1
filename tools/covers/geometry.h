// Points, colours and distances for the covers. A cover is the unit square, y downward; a colour has channels
// 0..1.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace covers {

inline constexpr double kPi = std::numbers::pi;

struct Point {
    double x = 0;
    double y = 0;

    Point operator+(Point o) const { return {x + o.x, y + o.y}; }
    Point operator-(Point o) const { return {x - o.x, y - o.y}; }
    Point operator*(double f) const { return {x * f, y * f}; }
    double Length() const { return std::hypot(x, y); }
    double Angle() const { return std::atan2(y, x); }
    Point Turned(double angle) const {
        return {x * std::cos(angle) - y * std::sin(angle), x * std::sin(angle) + y * std::cos(angle)};
    }
};

struct Color {
    double r = 0;
    double g = 0;
    double b = 0;
};

constexpr Color Hex(uint32_t rgb) {
    return {(rgb >> 16 & 255) / 255.0, (rgb >> 8 & 255) / 255.0, (rgb & 255) / 255.0};
}

inline Color Mix(Color a, Color b, double t) {
    t = std::clamp(t, 0.0, 1.0);
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

// As two printing inks, one over the other.
inline Color Multiply(Color a, Color b) {
    return {a.r * b.r, a.g * b.g, a.b * b.b};
}

inline double Cross(Point a, Point b) {
    return a.x * b.y - a.y * b.x;
}

// Distance to the segment from a to b.
inline double ToSegment(Point p, Point a, Point b) {
    const Point along = b - a;
    const Point to = p - a;
    const double t = (to.x * along.x + to.y * along.y) / (along.x * along.x + along.y * along.y);
    return (to - along * std::clamp(t, 0.0, 1.0)).Length();
}

// Distance to the arc around centre that runs from angle `from` over `sweep` radians, clockwise on the
// screen.
inline double ToArc(Point p, Point centre, double radius, double from, double sweep) {
    const Point to = p - centre;
    const double turned = std::fmod(to.Angle() - from + 4 * kPi, 2 * kPi);
    if (turned <= sweep)
        return std::abs(to.Length() - radius);
    const Point start = Point{radius, 0}.Turned(from);
    const Point end = Point{radius, 0}.Turned(from + sweep);
    return std::min((to - start).Length(), (to - end).Length());
}

// Distance to the outline of an upright box with rounded corners, negative inside.
inline double ToRoundBox(Point p, Point centre, double halfWidth, double halfHeight, double radius) {
    const Point q{std::abs(p.x - centre.x) - halfWidth + radius,
                  std::abs(p.y - centre.y) - halfHeight + radius};
    const Point outside{std::max(q.x, 0.0), std::max(q.y, 0.0)};
    return outside.Length() + std::min(std::max(q.x, q.y), 0.0) - radius;
}

} // namespace covers
