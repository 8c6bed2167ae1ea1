// Keyframes, the player, and a vector animation on a button.
#include "gui/vector/vector_animation.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

#include "gui/button.h"
#include "gui/test_tree.h"
#include "gui/vector/keyframe_animation.h"
#include "gui/vector/stock_animations.h"
#include "structure/style_sheet.h"
#include "support/golden.h"

using namespace test_tree;

namespace {

// Notes what is asked of it and fills the surface with the number of paintings.
class FakeModel : public VAnimationModel {
public:
    FakeModel() {
        startFrame = 10;
        endFrame = 19;
        width = 50;
        height = 100;
    }
    void update(int32_t frame, const VMatrix& newMatrix, float) override {
        frames.push_back(frame);
        matrix = newMatrix;
    }
    void paint(VSurface& surface) override {
        EXPECT_EQ(surface.pixels[0], 0u) << "not cleared";
        surface.pixels[0] = ++paintings;
    }
    std::vector<int32_t> frames;
    VMatrix matrix;
    uint32_t paintings = 0;
};

VKeyframe SquareAt(int32_t frame, float left, float edge, uint32_t color) {
    VKeyframe keyframe;
    keyframe.frame = frame;
    keyframe.fillColor = color;
    keyframe.ease = VEase::Linear;
    keyframe.path.addRect({left, 0}, {edge, edge});
    return keyframe;
}

VPath StarPath(VPointF centre, float outer, float inner) {
    VPath path;
    for (int i = 0; i < 10; ++i) {
        const float radius = i % 2 ? inner : outer;
        const float angle = static_cast<float>(i) * 0.6283185F - 1.5707963F;
        const VPointF point = centre + VPointF{std::cos(angle), std::sin(angle)} * radius;
        i == 0 ? path.moveTo(point) : path.lineTo(point);
    }
    path.close();
    return path;
}

} // namespace

// --- Player ---

TEST(VectorAnimation, AFrameIsRenderedOnce) {
    CVrVectorAnimation animation;
    EXPECT_FALSE(animation.HasContent());
    animation.RenderFrame();
    EXPECT_EQ(animation.GetSurfacePixels(), nullptr);

    auto* model = new FakeModel;
    ASSERT_TRUE(animation.Load(model, 40, 40));
    animation.RenderFrame();
    animation.RenderFrame();
    EXPECT_EQ(model->paintings, 1u) << "the first frame, too";
    animation.currentFrame = 3;
    animation.RenderFrame();
    EXPECT_EQ(model->paintings, 2u);
    animation.currentFrame = 1000;
    animation.RenderFrame();
    EXPECT_EQ(model->frames, (std::vector<int32_t>{10, 13, 19}));
    EXPECT_EQ(model->busy, 0);
}

TEST(VectorAnimation, AFrameThatSomebodyElseRendersIsSkipped) {
    CVrVectorAnimation animation;
    auto* model = new FakeModel;
    ASSERT_TRUE(animation.Load(model, 40, 40));
    model->busy = 1;
    animation.RenderFrame();
    EXPECT_EQ(model->paintings, 0u);
    EXPECT_EQ(animation.renderedFrame, 0u);
    EXPECT_EQ(model->busy, 1) << "the other's flag stays";
}

TEST(VectorAnimation, ThePictureIsCentredAndKeepsItsAspect) {
    CVrVectorAnimation animation;
    auto* model = new FakeModel; // 50 x 100
    ASSERT_TRUE(animation.Load(model, 300, 200));
    animation.RenderFrame();
    EXPECT_EQ(model->matrix.map({0, 0}), (VPointF{100, 0}));
    EXPECT_EQ(model->matrix.map({50, 100}), (VPointF{200, 200}));
}

TEST(VectorAnimation, AnUnchangedFrameIsNotBroughtUpAgain) {
    VAnimationPlayer player(new FakeModel, 10, 10);
    EXPECT_TRUE(player.Update(2, 10, 10));
    EXPECT_FALSE(player.Update(2, 10, 10));
    EXPECT_TRUE(player.Update(2, 10, 20));
    player.SetDirty();
    EXPECT_TRUE(player.Update(2, 10, 20));
}

TEST(VectorAnimation, AbsurdSizesAreRefused) {
    CVrVectorAnimation animation;
    EXPECT_FALSE(animation.Load(new FakeModel, 0, 10));
    EXPECT_FALSE(animation.Load(new FakeModel, 10, -10));
    EXPECT_FALSE(animation.Load(new FakeModel, 1 << 20, 1 << 20));
    EXPECT_FALSE(animation.Load(nullptr, 10, 10));
    EXPECT_FALSE(animation.HasContent());
}

// --- Keyframes ---

TEST(VectorKeyframes, BetweenTwoKeyframesAllIsInBetween) {
    VKeyframeLayer layer;
    VKeyframe last = SquareAt(20, 100, 30, 0x80FF0000);
    last.opacity = 0;
    layer.addKeyframe(last);
    layer.addKeyframe(SquareAt(10, 0, 10, 0xFF000000)); // in any order
    const VKeyframe middle = layer.at(15);
    EXPECT_EQ(middle.path.points()[0], (VPointF{50, 0}));
    EXPECT_EQ(middle.path.points()[2], (VPointF{70, 20}));
    EXPECT_EQ(middle.fillColor, 0xC0800000);
    EXPECT_FLOAT_EQ(middle.opacity, 0.5F);
    EXPECT_EQ(layer.at(-5).path.points()[0], (VPointF{0, 0}));
    EXPECT_EQ(layer.at(99).path.points()[0], (VPointF{100, 0}));
}

TEST(VectorKeyframes, EasingsHoldOrStartSlowly) {
    VKeyframeLayer layer;
    VKeyframe first = SquareAt(0, 0, 1, 0);
    first.ease = VEase::Hold;
    layer.addKeyframe(first);
    first.frame = 10;
    first.ease = VEase::InOut;
    layer.addKeyframe(first);
    layer.addKeyframe(SquareAt(20, 100, 1, 0));
    EXPECT_EQ(layer.at(9).path.points()[0].x, 0);
    EXPECT_LT(layer.at(12).path.points()[0].x, 15);
    EXPECT_FLOAT_EQ(layer.at(15).path.points()[0].x, 50);
}

TEST(VectorKeyframes, PathsOfDifferentCommandsAreNotMixed) {
    VKeyframeLayer layer;
    layer.addKeyframe(SquareAt(0, 0, 10, 0xFF000000));
    VKeyframe round = SquareAt(10, 0, 10, 0xFFFFFFFF);
    round.path.reset();
    round.path.addEllipse({5, 5}, {5, 5});
    layer.addKeyframe(round);
    EXPECT_TRUE(layer.at(9).path.isCompatibleWith(layer.at(0).path));
    EXPECT_TRUE(layer.at(10).path.isCompatibleWith(round.path));
    EXPECT_EQ(VKeyframeLayer().at(3).path.empty(), true);
}

TEST(VectorKeyframes, StockAnimationsHaveNoSeam) {
    for (VAnimationModel* (*make)() : {MakePlayingAnimation, MakeWaitingAnimation}) {
        CVrVectorAnimation animation;
        VAnimationModel* model = make();
        ASSERT_TRUE(animation.Load(model, 64, 64));
        const auto sumAt = [&animation](uint64_t frame) {
            animation.currentFrame = frame;
            animation.RenderFrame();
            std::vector<int> alphas;
            for (int i = 0; i < 64 * 64; ++i)
                alphas.push_back(static_cast<int>(animation.GetSurfacePixels()[i] >> 24));
            return alphas;
        };
        const auto distance = [](const std::vector<int>& a, const std::vector<int>& b) {
            int sum = 0;
            for (size_t i = 0; i < a.size(); ++i)
                sum += std::abs(a[i] - b[i]);
            return sum;
        };
        const auto last = static_cast<uint64_t>(model->endFrame);
        int largest = 0;
        for (uint64_t frame = 0; frame < last; ++frame)
            largest = std::max(largest, distance(sumAt(frame), sumAt(frame + 1)));
        EXPECT_GT(largest, 0);
        EXPECT_LE(distance(sumAt(last), sumAt(0)), largest) << "from the last frame to the first";
    }
}

// --- Pictures ---

TEST(VectorPictures, FillsAndStrokes) {
    constexpr int kWidth = 480;
    constexpr int kHeight = 300;
    std::vector<uint32_t> pixels(kWidth * kHeight);
    VSurface surface{pixels.data(), kWidth, kHeight};
    VPath ground;
    ground.addRect({0, 0}, {kWidth, kHeight});
    VRasterizer rasterizer;
    rasterizer.rasterize(ground, VFillRule::NonZero);
    surface.paint(rasterizer.rle(), 0xFFF3EADB, 1);
    for (int i = 0; i < 3; ++i) {
        const float column = 80 + 160 * static_cast<float>(i);
        VStrokeStyle style;
        style.width = 22;
        style.miterLimit = 10;
        style.cap = static_cast<vec::Cap>(i);
        style.join = static_cast<vec::Join>(i);
        VPath corner;
        corner.moveTo({column - 50, 100});
        corner.lineTo({column - 10, 30});
        corner.lineTo({column + 15, 100});
        corner.cubicTo({column + 25, 10}, {column + 80, 40}, {column + 40, 100});
        rasterizer.rasterizeStroke(corner, style, surface.bounds());
        surface.paint(rasterizer.rle(), 0xFF27447F, 1);
        style.width = 1.5F;
        rasterizer.rasterizeStroke(corner, style, surface.bounds());
        surface.paint(rasterizer.rle(), 0xFFF0A63C, 1);

        VPath star = StarPath({column, 210}, 68, 32);
        if (i == 1)
            star.addPath(StarPath({column, 210}, 40, 18)); // a hole by the even-odd rule
        rasterizer.rasterize(star, i == 1 ? VFillRule::EvenOdd : VFillRule::NonZero, surface.bounds());
        surface.paint(rasterizer.rle(), i == 2 ? 0x80E2522F : 0xFFE2522F, 1);
        style.width = 8;
        if (i == 2) {
            rasterizer.rasterizeStroke(star, style, surface.bounds());
            surface.paint(rasterizer.rle(), 0xFF1C2030, 1);
        }
    }
    EXPECT_TRUE(golden::Matches("vector-fills-and-strokes", pixels.data(), kWidth, kHeight));
}

TEST(VectorPictures, ButtonsShowTheFramesOfAnAnimation) {
    CVrTestClock clock;
    Application app;
    app.LoadStyles();
    Probe& root = *app.root;
    constexpr int kFrames = 6;
    constexpr int kStep = 120;
    CVrVectorAnimation animations[2][kFrames];
    for (int row = 0; row < 2; ++row)
        for (int i = 0; i < kFrames; ++i) {
            CVrGuiButton& button =
                Add<CVrGuiButton>(root, CVrRect(i * kStep + 6, row * kStep + 6, 108, 108), 0xFF20304A);
            button.layout = CVrGuiButton::LayoutIcon;
            button.iconSize = 72;
            for (uint32_t state = 0; state < CVrGuiElement::StateCount; state++)
                button.colors[CVrGuiElement::ColorSymbol + state] = row == 0 ? 0xFFF0A63C : 0xFFE8ECF4;
            CVrVectorAnimation& animation = animations[row][i];
            ASSERT_TRUE(animation.Load(row == 0 ? MakePlayingAnimation() : MakeWaitingAnimation(), 72, 72));
            button.vector = &animation;
            button.RestartVector();
            EXPECT_TRUE(button.IsTimerActive());
            animation.Advance(clock.Now() + static_cast<uint64_t>(i) * 200);
        }
    root.Draw(true, true);
    std::vector<uint32_t> shown;
    for (int y = 0; y < 2 * kStep; ++y)
        shown.insert(shown.end(), root.Row(y), root.Row(y) + 720);
    EXPECT_TRUE(golden::Matches("vector-animations", shown.data(), 720, 2 * kStep));
}
