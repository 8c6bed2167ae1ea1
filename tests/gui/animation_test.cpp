#include "gui/animation.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include "gui/test_tree.h"

namespace {

class Recorder : public IVrAnimConsumer<CVrRect> {
public:
    void OnAnimValue(CVrRect& value) override { values.push_back(value); }
    std::vector<CVrRect> values;
};

class ArrayRecorder : public IVrAnimConsumer<CVrAnimArray<CVrRect>> {
public:
    void OnAnimValue(CVrAnimArray<CVrRect>& value) override { values.push_back(value); }
    std::vector<CVrAnimArray<CVrRect>> values;
};

class AnimationTest : public testing::Test {
protected:
    CVrTestClock clock;
    test_tree::Application app;
    Recorder recorder;
};

using Tween = CVrTweenAnimation<CVrRect>;

const CVrRect kFrom(0, 0, 100, 100);
const CVrRect kTo(200, -200, 100, 50);

TEST(EaseBezierTest, EndsAndMiddleOfTheStandardCurve) {
    const CVrAnimCurve curve;
    EXPECT_EQ(EaseBezier(curve, -1.0F), 0.0F);
    EXPECT_EQ(EaseBezier(curve, 1.5F), 1.0F);
    EXPECT_NEAR(EaseBezier(curve, 0.5F), 0.5F, 1e-6);
    EXPECT_EQ(EaseBezier(curve, NAN), 0.0F);
}

TEST(EaseBezierTest, FollowsTheParametricCurve) {
    const CVrAnimCurve curve{0.25F, 0.1F, 0.25F, 1.0F};
    for (int i = 1; i < 100; i++) {
        const double s = i / 100.0, r = 1 - s;
        const double x = 3 * r * r * s * curve.x1 + 3 * r * s * s * curve.x2 + s * s * s;
        const double y = 3 * r * r * s * curve.y1 + 3 * r * s * s * curve.y2 + s * s * s;
        EXPECT_NEAR(EaseBezier(curve, static_cast<float>(x)), y, 1e-4);
    }
}

TEST_F(AnimationTest, TweenDeliversTheFirstValueAtOnceAndTheLastOneExactly) {
    Tween tween;
    const uint64_t start = clock.Now();
    tween.Start(kFrom, kTo, &recorder);
    EXPECT_EQ(recorder.values, std::vector{kFrom});
    EXPECT_TRUE(app.animations.Step(start + 100));
    EXPECT_EQ(recorder.values.back(), CVrRect(100, -100, 100, 75));
    EXPECT_TRUE(app.animations.Step(start + 200));
    EXPECT_EQ(recorder.values.back(), kTo);
    EXPECT_FALSE(tween.IsRunning());
    EXPECT_TRUE(app.animations.IsEmpty());
    EXPECT_FALSE(app.animations.Step(start + 300));
}

TEST_F(AnimationTest, BothDirectionsShowTheirFirstPixelAtTheSameMoment) {
    Tween tween;
    const uint64_t start = clock.Now();
    tween.Start(CVrRect(0, 0, 0, 0), CVrRect(50, -50, 0, 0), &recorder);
    for (uint64_t ms = 1; ms < 200; ms++) {
        app.animations.Step(start + ms);
        EXPECT_EQ(recorder.values.back().x, -recorder.values.back().y) << ms;
    }
}

TEST_F(AnimationTest, TweenWithoutDurationEndsAtItsFirstStep) {
    Tween tween;
    tween.Start(kFrom, kTo, &recorder, 0);
    app.animations.Step(clock.Now());
    EXPECT_EQ(recorder.values, (std::vector{kFrom, kTo}));
}

TEST_F(AnimationTest, CancelledTweenDeliversNothingMore) {
    Tween tween;
    tween.Start(kFrom, kTo, &recorder);
    tween.Cancel();
    app.animations.Step(clock.Now() + 500);
    EXPECT_EQ(recorder.values.size(), 1U);
    EXPECT_TRUE(app.animations.IsEmpty());
}

TEST_F(AnimationTest, RestartedTweenIsQueuedOnce) {
    Tween tween;
    tween.Start(kFrom, kTo, &recorder);
    tween.Start(kTo, kFrom, &recorder);
    EXPECT_EQ(app.animations.count, 1U);
    app.animations.Step(clock.Now() + 200);
    EXPECT_EQ(recorder.values.back(), kFrom);
}

TEST_F(AnimationTest, DestroyedTweenLeavesTheQueue) {
    {
        Tween tween;
        tween.Start(kFrom, kTo, &recorder);
    }
    EXPECT_TRUE(app.animations.IsEmpty());
}

TEST_F(AnimationTest, ThirdAnimationCancelsTheOldestWithoutALastValue) {
    Tween oldest, middle, newest;
    Recorder others;
    oldest.Start(kFrom, kTo, &recorder);
    middle.Start(kFrom, kTo, &others);
    newest.Start(kFrom, kTo, &others);
    EXPECT_FALSE(oldest.IsRunning());
    EXPECT_EQ(recorder.values.size(), 1U);
    EXPECT_FALSE(app.animations.Holds(&oldest));
    EXPECT_TRUE(app.animations.Holds(&middle));
    EXPECT_TRUE(app.animations.Holds(&newest));
}

TEST_F(AnimationTest, EntriesLeaveTheQueueInAnyOrder) {
    Tween a, b, c;
    for (Tween* first : {&a, &b}) {
        a.Start(kFrom, kTo, &recorder);
        b.Start(kFrom, kTo, &recorder);
        app.animations.Remove(first);
        EXPECT_EQ(app.animations.count, 1U);
        EXPECT_FALSE(app.animations.Holds(first));
        c.Start(kFrom, kTo, &recorder);
        EXPECT_EQ(app.animations.count, 2U);
        for (Tween* tween : {&a, &b, &c})
            tween->Stop();
        EXPECT_TRUE(app.animations.IsEmpty());
    }
}

// The consumer of the first animation stops the second one, which must not be stepped any more.
TEST_F(AnimationTest, StepMayRemoveAnotherAnimation) {
    struct Stopper : Recorder {
        void OnAnimValue(CVrRect& value) override {
            Recorder::OnAnimValue(value);
            if (victim)
                victim->Stop();
        }
        Tween* victim = nullptr;
    } stopper;
    Tween first;
    auto second = std::make_unique<Tween>();
    first.Start(kFrom, kTo, &stopper);
    second->Start(kFrom, kTo, &recorder);
    stopper.victim = second.get();
    app.animations.Step(clock.Now() + 50);
    EXPECT_EQ(recorder.values.size(), 1U);
    EXPECT_EQ(app.animations.count, 1U);
}

TEST_F(AnimationTest, ArrayTweenMovesEveryRectangle) {
    ArrayRecorder arrays;
    CVrAnimArray<CVrRect> from, to;
    for (int i = 0; i < 3; i++) {
        from.Add(CVrRect(i * 10, 0, 10, 10));
        to.Add(CVrRect(i * 20, 100, 20, 10));
    }
    CVrTweenAnimation<CVrAnimArray<CVrRect>> tween;
    tween.Start(from, to, &arrays);
    app.animations.Step(clock.Now() + 100);
    ASSERT_EQ(arrays.values.back().GetSize(), 3U);
    EXPECT_EQ(arrays.values.back()[2], CVrRect(30, 50, 15, 10));
    app.animations.Step(clock.Now() + 200);
    EXPECT_EQ(arrays.values.back()[2], to[2]);
}

TEST_F(AnimationTest, HugeDistancesSaturate) {
    Tween tween;
    tween.Start(CVrRect(INT32_MIN, 0, 0, 0), CVrRect(INT32_MAX, 0, 0, 0), &recorder);
    app.animations.Step(clock.Now() + 199);
    EXPECT_LE(recorder.values.back().x, INT32_MAX);
}

} // namespace
