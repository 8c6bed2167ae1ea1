// Fills and strokes against exact areas and distances.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "gui/vector/rasterizer.h"
#include "gui/vector/scan_converter.h"
#include "gui/vector_reference.h"

using namespace vectortest;

namespace {

class Random {
public:
    explicit Random(uint32_t seed) : m_engine(seed) {}
    float within(float low, float high) { return std::uniform_real_distribution<float>(low, high)(m_engine); }
    VPointF point(float low, float high) { return {within(low, high), within(low, high)}; }

private:
    std::mt19937 m_engine;
};

VRle Fill(const VPath& path, VFillRule rule = VFillRule::NonZero, const VRect& clip = {}) {
    VRasterizer rasterizer;
    rasterizer.rasterize(path, rule, clip);
    return rasterizer.rle();
}

VRle StrokeOf(const VPath& path, const VStrokeStyle& style) {
    VRasterizer rasterizer;
    rasterizer.rasterizeStroke(path, style);
    return rasterizer.rle();
}

double WorstDifference(const Grid& grid, const std::function<double(int, int)>& expected) {
    double worst = 0;
    for (int y = 0; y < grid.height; ++y)
        for (int x = 0; x < grid.width; ++x)
            worst = std::max(worst, std::abs(grid.at(x, y) - expected(x, y)));
    return worst;
}

// Raster order, no span empty, none that could have been one with its neighbour.
void ExpectGoodSpans(const VRle& rle) {
    const auto& spans = rle.spans();
    for (uint32_t i = 0; i < spans.GetSize(); ++i) {
        ASSERT_GT(spans[i].len, 0);
        ASSERT_GT(spans[i].coverage, 0);
        if (i == 0)
            continue;
        const VRle::Span& before = spans[i - 1];
        const bool isBehind =
            before.y < spans[i].y || (before.y == spans[i].y && before.x + before.len <= spans[i].x);
        ASSERT_TRUE(isBehind) << i;
    }
}

double DistanceTo(const std::vector<VPointF>& line, double px, double py) {
    double least = 1e9;
    for (size_t s = 0; s + 1 < line.size(); ++s) {
        const double ax = line[s].x, ay = line[s].y;
        const double dx = line[s + 1].x - ax, dy = line[s + 1].y - ay;
        const double t = std::clamp(((px - ax) * dx + (py - ay) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
        least = std::min(least, std::hypot(px - ax - t * dx, py - ay - t * dy));
    }
    return least;
}

// Share of a pixel, by samples, that lies within `radius` of the line through the points.
double SampledStroke(const std::vector<VPointF>& line, double radius, int x, int y) {
    const double fromMiddle = DistanceTo(line, x + 0.5, y + 0.5) - radius;
    if (std::abs(fromMiddle) > 0.75)
        return fromMiddle < 0 ? 255 : 0;
    constexpr int kSamples = 12;
    int hits = 0;
    for (int i = 0; i < kSamples * kSamples; ++i)
        hits += DistanceTo(line, x + (i % kSamples + 0.5) / kSamples, y + (i / kSamples + 0.5) / kSamples) <=
                radius;
    return hits * 255.0 / (kSamples * kSamples);
}

// A stroke against all points within half the width of its line. Pixels wholly within or without must be so;
// at borders two parts of the stroke may meet in a pixel, and their shares add up there.
void ExpectStroke(const VRle& rle, const std::vector<VPointF>& line, double radius, int edge, int round) {
    const Grid picture = Picture(rle, edge, edge);
    double sum = 0;
    for (int y = 0; y < edge; ++y)
        for (int x = 0; x < edge; ++x) {
            const double expected = SampledStroke(line, radius, x, y);
            const double difference = std::abs(expected - picture.at(x, y));
            const bool isBorder = expected > 0 && expected < 255;
            ASSERT_LE(difference, isBorder ? 180 : 24) << "round " << round << " at " << x << "," << y;
            sum += difference;
        }
    EXPECT_LE(sum / (edge * edge), 1.2) << "round " << round;
}

double TotalCoverage(const VRle& rle) {
    double sum = 0;
    for (const VRle::Span& span : rle.spans())
        sum += span.len * span.coverage / 255.0;
    return sum;
}

} // namespace

// --- Fill ---

TEST(VectorFill, RandomPolygonsAreWithinOneOfTheExactArea) {
    constexpr int kEdge = 48;
    constexpr double kAllowed = 1.0 + 1e-3;
    Random random(11);
    for (int round = 0; round < 400; ++round) {
        std::vector<VPointF> points;
        const int corners = 3 + round % 9;
        for (int i = 0; i < corners; ++i)
            points.push_back(random.point(-8, kEdge + 8)); // also beyond the clip
        Grid area{kEdge, kEdge};
        AddArea(area, ToPolygon(points));
        const VRect clip{0, 0, kEdge, kEdge};
        const VRle nonZero = Fill(ToPath(points), VFillRule::NonZero, clip);
        const VRle evenOdd = Fill(ToPath(points), VFillRule::EvenOdd, clip);
        ExpectGoodSpans(nonZero);
        ASSERT_LE(WorstDifference(Picture(nonZero, kEdge, kEdge),
                                  [&](int x, int y) { return NonZeroCoverage(area.at(x, y)); }),
                  kAllowed)
            << "round " << round;
        ASSERT_LE(WorstDifference(Picture(evenOdd, kEdge, kEdge),
                                  [&](int x, int y) { return EvenOddCoverage(area.at(x, y)); }),
                  kAllowed)
            << "round " << round;
    }
}

TEST(VectorFill, ManyEdgesInOnePixelAddUpExactly) {
    // A comb of slanted teeth, thirty to a pixel.
    std::vector<VPointF> points;
    for (int i = 0; i < 240; ++i)
        points.push_back({1.0F + static_cast<float>(i) / 30, i % 2 ? 1.1F : 6.7F});
    points.push_back({9, 8});
    points.push_back({1, 8});
    Grid area{12, 12};
    AddArea(area, ToPolygon(points));
    EXPECT_LE(WorstDifference(Picture(Fill(ToPath(points)), 12, 12),
                              [&](int x, int y) { return NonZeroCoverage(area.at(x, y)); }),
              1.001);
}

TEST(VectorFill, BothDirectionsOfAContourGiveTheSame) {
    Random random(12);
    for (int round = 0; round < 50; ++round) {
        std::vector<VPointF> points;
        for (int i = 0; i < 7; ++i)
            points.push_back(random.point(0, 40));
        const std::vector<VPointF> reversed(points.rbegin(), points.rend());
        EXPECT_EQ(Picture(Fill(ToPath(points)), 40, 40).values,
                  Picture(Fill(ToPath(reversed)), 40, 40).values);
    }
}

TEST(VectorFill, ACircleHasItsArea) {
    for (float radius : {0.4F, 3.0F, 17.5F, 120.0F, 330.0F}) {
        VPath path;
        path.addEllipse({360, 360}, {radius, radius});
        const double exact = M_PI * radius * radius;
        EXPECT_NEAR(TotalCoverage(Fill(path)), exact, 0.02 + radius * 0.25) << radius;
    }
}

TEST(VectorFill, CurvesAreRoundWithinAFewStepsOfCoverage) {
    constexpr int kEdge = 220;
    VPath path;
    path.addEllipse({110, 110}, {100, 100});
    const Grid picture = Picture(Fill(path), kEdge, kEdge);
    const double worst = WorstDifference(picture, [](int x, int y) {
        // The circle as a very fine polygon would be exact; its distance is as good within a pixel.
        return SampledStroke({{110, 110}, {110, 110.001F}}, 100, x, y);
    });
    EXPECT_LE(worst, 16); // the reference itself is only a count of 256 samples
}

TEST(VectorFill, AHoleDependsOnTheFillRule) {
    VPath path = ToPath({{10, 50}, {50, 10}, {90, 50}, {50, 90}});
    path.addPath(ToPath({{30, 50}, {50, 30}, {70, 50}, {50, 70}}));
    EXPECT_EQ(Picture(Fill(path, VFillRule::NonZero), 100, 100).at(50, 50), 255);
    EXPECT_EQ(Picture(Fill(path, VFillRule::EvenOdd), 100, 100).at(50, 50), 0);
    EXPECT_EQ(Picture(Fill(path, VFillRule::EvenOdd), 100, 100).at(20, 50), 255);
}

TEST(VectorFill, WholePixelsAreOneSpanALine) {
    VPath path;
    path.addRect({3, 4}, {500, 2});
    const VRle rle = Fill(path);
    ASSERT_EQ(rle.spans().GetSize(), 2u);
    EXPECT_EQ(rle.spans()[0].x, 3);
    EXPECT_EQ(rle.spans()[0].len, 500);
    EXPECT_EQ(rle.spans()[0].coverage, 255);
    EXPECT_EQ(rle.bounds(), (VRect{3, 4, 503, 6}));
}

TEST(VectorFill, NothingComesOfWhatCannotBeSeen) {
    EXPECT_TRUE(Fill(VPath()).empty());
    VPath outside;
    outside.addRect({50, 50}, {10, 10});
    EXPECT_TRUE(Fill(outside, VFillRule::NonZero, {0, 0, 50, 50}).empty());
    EXPECT_FALSE(Fill(outside, VFillRule::NonZero, {0, 0, 51, 51}).empty());
    EXPECT_TRUE(Fill(ToPath({{5, 5}, {9, 9}})).empty()) << "a line has no area";

    // An earlier result is cleared.
    VRasterizer rasterizer;
    rasterizer.rasterize(outside, VFillRule::NonZero);
    EXPECT_FALSE(rasterizer.rle().empty());
    rasterizer.rasterize(VPath(), VFillRule::NonZero);
    EXPECT_TRUE(rasterizer.rle().empty());
}

TEST(VectorFill, ClippingOnlyCutsAway) {
    Random random(13);
    for (int round = 0; round < 40; ++round) {
        VPath path;
        path.moveTo(random.point(-300, 400));
        for (int i = 0; i < 5; ++i)
            path.cubicTo(random.point(-300, 400), random.point(-300, 400), random.point(-300, 400));
        const Grid all = Picture(Fill(path, VFillRule::NonZero, {0, 0, 90, 90}), 90, 90);
        const Grid part = Picture(Fill(path, VFillRule::NonZero, {20, 31, 70, 66}), 90, 90);
        for (int y = 31; y < 66; ++y)
            for (int x = 20; x < 70; ++x)
                ASSERT_EQ(part.at(x, y), all.at(x, y)) << x << "," << y;
    }
}

TEST(VectorFill, BandsAreSplitWhenThePoolRunsOut) {
    // A fan of 600 thin blades: many more cells than the pool has, in every band.
    std::vector<VPointF> points;
    for (int i = 0; i < 600; ++i) {
        const double angle = i * M_PI / 300;
        const double radius = i % 2 ? 349 : 12;
        points.push_back({static_cast<float>(360 + radius * std::cos(angle)),
                          static_cast<float>(360 + radius * std::sin(angle))});
    }
    Grid area{720, 720};
    AddArea(area, ToPolygon(points));
    const VRle rle = Fill(ToPath(points));
    ExpectGoodSpans(rle);
    EXPECT_LE(
        WorstDifference(Picture(rle, 720, 720), [&](int x, int y) { return NonZeroCoverage(area.at(x, y)); }),
        1.001);
}

TEST(VectorFill, ALineOfAllPixelsOfTheScreenFitsThePool) {
    const std::vector<VPointF> sliver{{0, 10.1F}, {720, 10.9F}, {720, 10.95F}, {0, 10.2F}};
    Grid area{720, 12};
    AddArea(area, ToPolygon(sliver));
    EXPECT_LE(WorstDifference(Picture(Fill(ToPath(sliver)), 720, 12),
                              [&](int x, int y) { return NonZeroCoverage(area.at(x, y)); }),
              1.001);
}

TEST(VectorFill, WhatCannotBeSplitAnyFurtherEndsThere) {
    // Teeth on one scan line that are wider than the pool has cells for; the lines above are complete.
    VPath path;
    path.addRect({0, 0}, {4, 4});
    path.moveTo({0, 5.0F});
    for (int i = 0; i < 3000; ++i)
        path.lineTo({static_cast<float>(i) + 0.5F, i % 2 ? 5.2F : 5.8F});
    path.lineTo({0, 5.0F});
    const VRle rle = Fill(path);
    EXPECT_EQ(rle.bounds(), (VRect{0, 0, 4, 4}));
}

TEST(VectorFill, AHugeShapeFillsTheWholeRange) {
    const float kFar = 1e9F;
    const VRle rle = Fill(ToPath({{-kFar, -kFar}, {kFar, -kFar}, {kFar, kFar}, {-kFar, kFar}}),
                          VFillRule::NonZero, {0, 0, 720, 720});
    // Its edges are longer than any line that is drawn.
    EXPECT_TRUE(rle.empty());
    const VRle large = Fill(ToPath({{-19000, -19000}, {19000, -19000}, {19000, 19000}, {-19000, 19000}}));
    EXPECT_EQ(large.bounds(), (VRect{-19000, -19000, 19000, 19000}));
    EXPECT_NEAR(TotalCoverage(large), 38000.0 * 38000.0, 1);
}

TEST(VectorFill, MalformedPathsAreDropped) {
    VPath noStart;
    noStart.cubicTo({0, 0}, {10, 0}, {10, 10});
    EXPECT_TRUE(Fill(noStart).empty());
    for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
        EXPECT_TRUE(Fill(ToPath({{0, 0}, {10, bad}, {10, 10}})).empty());
    std::vector<VPointF> many(VRasterizer::kMaxPoints - 1, VPointF{5, 5});
    many[0] = {0, 0};
    many[1] = {9, 0};
    EXPECT_FALSE(Fill(ToPath(many)).empty());
    many.push_back({5, 5}); // with the sub-path one too many
    EXPECT_TRUE(Fill(ToPath(many)).empty());
}

TEST(VectorFill, SharedPathsAndResultsAreCopiedBeforeAChange) {
    VPath first;
    first.addRect({1, 1}, {4, 4});
    VPath second(first);
    second.lineTo({9, 9});
    EXPECT_EQ(first.points().GetSize(), 4u);
    EXPECT_EQ(second.points().GetSize(), 5u);

    VRasterizer rasterizer;
    rasterizer.rasterize(first, VFillRule::NonZero);
    VRle moved = rasterizer.rle();
    moved.translate(10, 20);
    EXPECT_EQ(moved.bounds(), (VRect{11, 21, 15, 25}));
    EXPECT_EQ(rasterizer.rle().bounds(), (VRect{1, 1, 5, 5}));
    moved.translate(32760, 0);
    EXPECT_TRUE(moved.empty()) << "beyond the range of the coordinates";
}

// --- Stroke ---

TEST(VectorStroke, AStraightLineIsARectangleWithItsCaps) {
    const VPath line = ToPath({{20, 30}, {70, 30}}, false);
    VStrokeStyle style;
    style.width = 12;
    EXPECT_NEAR(TotalCoverage(StrokeOf(line, style)), 50 * 12, 1);
    style.cap = vec::Cap::Square;
    EXPECT_NEAR(TotalCoverage(StrokeOf(line, style)), 62 * 12, 1);
    EXPECT_EQ(StrokeOf(line, style).bounds(), (VRect{14, 24, 76, 36}));
    style.cap = vec::Cap::Round;
    EXPECT_NEAR(TotalCoverage(StrokeOf(line, style)), 50 * 12 + M_PI * 36, 1);
}

TEST(VectorStroke, JoinsHaveTheirShapes) {
    // A right angle; width 20: the square at the outer side has 10 x 10 pixels.
    const VPath corner = ToPath({{20, 20}, {80, 20}, {80, 80}}, false);
    VStrokeStyle style;
    style.width = 20;
    const double arms = 2 * 60 * 20 - 100; // the inner quarter is common to both
    style.join = vec::Join::Bevel;
    EXPECT_NEAR(TotalCoverage(StrokeOf(corner, style)), arms + 50, 1);
    style.join = vec::Join::Round;
    EXPECT_NEAR(TotalCoverage(StrokeOf(corner, style)), arms + M_PI * 25, 1);
    style.join = vec::Join::Miter;
    EXPECT_NEAR(TotalCoverage(StrokeOf(corner, style)), arms + 100, 1);
    style.miterLimit = 1.4F; // a right angle has 1.414
    EXPECT_NEAR(TotalCoverage(StrokeOf(corner, style)), arms + 50, 1);
}

TEST(VectorStroke, RoundStrokesOfRandomLinesAreAllPointsWithinHalfTheWidth) {
    constexpr int kEdge = 60;
    Random random(21);
    for (int round = 0; round < 60; ++round) {
        std::vector<VPointF> points;
        for (int i = 0; i < 2 + round % 7; ++i)
            points.push_back(random.point(12, 48));
        VStrokeStyle style;
        style.width = random.within(1, 22);
        style.cap = vec::Cap::Round;
        style.join = vec::Join::Round;
        const bool closed = round % 3 == 0;
        const VRle rle = StrokeOf(ToPath(points, closed), style);
        if (closed)
            points.push_back(points[0]);
        ExpectStroke(rle, points, style.width / 2, kEdge, round);
    }
}

TEST(VectorStroke, CurvesTighterThanTheStrokeHaveNoHoles) {
    constexpr int kEdge = 120;
    Random random(22);
    for (int round = 0; round < 30; ++round) {
        const VPointF p[4] = {random.point(40, 80), random.point(30, 90), random.point(30, 90),
                              random.point(40, 80)};
        VPath path;
        path.moveTo(p[0]);
        path.cubicTo(p[1], p[2], p[3]);
        VStrokeStyle style;
        style.width = random.within(2, 50);
        style.cap = vec::Cap::Round;
        style.join = vec::Join::Round;
        std::vector<VPointF> fine;
        for (int i = 0; i <= 64; ++i) {
            const float t = static_cast<float>(i) / 64, s = 1 - t;
            fine.push_back(p[0] * (s * s * s) + p[1] * (3 * s * s * t) + p[2] * (3 * s * t * t) +
                           p[3] * (t * t * t));
        }
        ExpectStroke(StrokeOf(path, style), fine, style.width / 2, kEdge, round);
    }
}

TEST(VectorStroke, AClosedContourIsARing) {
    VPath circle;
    circle.addEllipse({50, 50}, {30, 30});
    VStrokeStyle style;
    style.width = 10;
    const VRle rle = StrokeOf(circle, style);
    EXPECT_NEAR(TotalCoverage(rle), M_PI * (35 * 35 - 25 * 25), 6);
    EXPECT_EQ(Picture(rle, 100, 100).at(50, 50), 0);
    EXPECT_EQ(Picture(rle, 100, 100).at(80, 50), 255);
}

TEST(VectorStroke, ALineWithoutLengthShowsItsCaps) {
    const VPath dot = ToPath({{20, 20}, {20, 20}}, false);
    VStrokeStyle style;
    style.width = 10;
    EXPECT_TRUE(StrokeOf(dot, style).empty());
    style.cap = vec::Cap::Round;
    EXPECT_NEAR(TotalCoverage(StrokeOf(dot, style)), M_PI * 25, 1);
    style.cap = vec::Cap::Square;
    EXPECT_EQ(StrokeOf(dot, style).bounds(), (VRect{15, 15, 25, 25}));
    VPath onlyMove;
    onlyMove.moveTo({20, 20});
    EXPECT_TRUE(StrokeOf(onlyMove, style).empty());
}

TEST(VectorStroke, AbsurdStylesAndPathsDoNoHarm) {
    const float kNan = std::numeric_limits<float>::quiet_NaN();
    Random random(23);
    for (int round = 0; round < 300; ++round) {
        VPath path;
        const float reach = std::pow(10.0F, static_cast<float>(round % 8));
        path.moveTo(random.point(-reach, reach));
        for (int i = 0; i < 4; ++i) {
            path.cubicTo(random.point(-reach, reach), random.point(-reach, reach),
                         random.point(-reach, reach));
            path.lineTo(random.point(-1, 1));
        }
        VStrokeStyle style;
        style.width = round % 5 == 0 ? kNan : random.within(-1, reach);
        style.miterLimit = round % 7 == 0 ? kNan : random.within(0, 1e9F);
        style.cap = static_cast<vec::Cap>(round % 3);
        style.join = static_cast<vec::Join>(round / 3 % 3);
        VRasterizer rasterizer;
        rasterizer.rasterizeStroke(path, style, {0, 0, 200, 200});
        Grid picture = Picture(rasterizer.rle(), 200, 200);
        EXPECT_GE(picture.at(0, 0), 0);
    }
}
