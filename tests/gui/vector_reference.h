// Reference pictures for the rasterizer tests: the exact area in each pixel, worked out in double precision
// by clipping polygons to pixels, and pictures made of spans.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "gui/vector/path.h"
#include "gui/vector/rle.h"

namespace vectortest {

struct Vertex {
    double x = 0;
    double y = 0;
};
using Polygon = std::vector<Vertex>;

struct Grid {
    int width = 0;
    int height = 0;
    std::vector<double> values =
        std::vector<double>(static_cast<size_t>(width) * static_cast<size_t>(height));

    double& at(int x, int y) { return values[static_cast<size_t>(y * width + x)]; }
    double at(int x, int y) const { return values[static_cast<size_t>(y * width + x)]; }
};

// The part of the polygon on one side of a line; axis 0: x, 1: y.
inline Polygon ClipHalf(const Polygon& polygon, int axis, double limit, bool keepAbove) {
    Polygon kept;
    const auto value = [axis](const Vertex& v) { return axis == 0 ? v.x : v.y; };
    for (size_t i = 0; i < polygon.size(); ++i) {
        const Vertex& a = polygon[i];
        const Vertex& b = polygon[(i + 1) % polygon.size()];
        const bool aIn = keepAbove ? value(a) >= limit : value(a) <= limit;
        const bool bIn = keepAbove ? value(b) >= limit : value(b) <= limit;
        if (aIn)
            kept.push_back(a);
        if (aIn != bIn) {
            const double t = (limit - value(a)) / (value(b) - value(a));
            kept.push_back({a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t});
        }
    }
    return kept;
}

inline double SignedArea(const Polygon& polygon) {
    double sum = 0;
    for (size_t i = 0; i < polygon.size(); ++i) {
        const Vertex& a = polygon[i];
        const Vertex& b = polygon[(i + 1) % polygon.size()];
        sum += a.x * b.y - b.x * a.y;
    }
    return sum / 2;
}

// Adds the polygon's signed area in each pixel: the integral of its winding number, also where it crosses
// itself.
inline void AddArea(Grid& grid, const Polygon& polygon) {
    for (int y = 0; y < grid.height; ++y) {
        Polygon rest = ClipHalf(ClipHalf(polygon, 1, y, true), 1, y + 1, false);
        rest = ClipHalf(rest, 0, 0, true);
        for (int x = 0; x < grid.width && !rest.empty(); ++x) {
            grid.at(x, y) += SignedArea(ClipHalf(rest, 0, x + 1, false));
            rest = ClipHalf(rest, 0, x + 1, true);
        }
    }
}

// What a fill rule makes of the area: 0..255.
inline double NonZeroCoverage(double area) {
    return std::min(std::abs(area), 1.0) * 255;
}
inline double EvenOddCoverage(double area) {
    const double folded = std::fmod(std::abs(area), 2.0);
    return (folded > 1 ? 2 - folded : folded) * 255;
}

// The spans as a picture; -1 where a span was laid over another or leaves the grid.
inline Grid Picture(const VRle& rle, int width, int height) {
    Grid grid{width, height};
    for (const VRle::Span& span : rle.spans())
        for (int x = span.x; x < span.x + span.len; ++x) {
            if (x < 0 || x >= width || span.y < 0 || span.y >= height) {
                grid.at(0, 0) = -1;
                continue;
            }
            grid.at(x, span.y) = grid.at(x, span.y) == 0 ? span.coverage : -1;
        }
    return grid;
}

// As the rasterizer takes a coordinate: 64ths of a pixel, truncated.
inline double Truncated(float value) {
    return std::trunc(value * 64) / 64.0;
}

inline VPath ToPath(const std::vector<VPointF>& points, bool closed = true) {
    VPath path;
    for (size_t i = 0; i < points.size(); ++i) {
        if (i == 0)
            path.moveTo(points[i]);
        else
            path.lineTo(points[i]);
    }
    if (closed)
        path.close();
    return path;
}

inline Polygon ToPolygon(const std::vector<VPointF>& points) {
    Polygon polygon;
    for (const VPointF& point : points)
        polygon.push_back({Truncated(point.x), Truncated(point.y)});
    return polygon;
}

} // namespace vectortest
