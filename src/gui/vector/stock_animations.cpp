#include "gui/vector/stock_animations.h"

#include "gui/vector/keyframe_animation.h"

namespace {

constexpr uint32_t kInk = 0xFFFFFFFF;
constexpr uint32_t kFaintInk = 0x38FFFFFF;
constexpr float kEdge = 24; // own width and height
constexpr float kRate = 25; // frames per second

} // namespace

VAnimationModel* MakePlayingAnimation() {
    constexpr int32_t kPeriod = 30; // frames
    constexpr int kBars = 4;
    constexpr float kBarWidth = 3;
    constexpr float kStep = 5;
    constexpr float kFoot = 21;
    constexpr int kSteps = 5;
    // By eye: neighbours never stand at the same height for long. The last equals the first.
    constexpr float kHeights[kBars][kSteps + 1] = {
        {7, 15, 9, 17, 5, 7}, {16, 6, 13, 8, 18, 16}, {10, 18, 5, 14, 9, 10}, {14, 8, 16, 6, 12, 14}};
    auto* animation = new VKeyframeAnimation(kEdge, kEdge, kPeriod - 1, kRate);
    for (int bar = 0; bar < kBars; ++bar) {
        VKeyframeLayer& layer = animation->addLayer();
        for (int step = 0; step <= kSteps; ++step) {
            const float height = kHeights[bar][step];
            VKeyframe keyframe;
            keyframe.frame = step * kPeriod / kSteps;
            keyframe.fillColor = kInk;
            keyframe.path.addRoundRect({3 + kStep * static_cast<float>(bar), kFoot - height},
                                       {kBarWidth, height}, kBarWidth / 2);
            layer.addKeyframe(keyframe);
        }
    }
    return animation;
}

VAnimationModel* MakeWaitingAnimation() {
    constexpr int32_t kPeriod = 36; // frames
    constexpr float kRadius = 9;
    constexpr float kLine = 2.5F;
    constexpr float kSweep = 100;  // degrees
    constexpr float kDegrees = 10; // from one frame to the next; points of an arc must not be mixed over more
    auto* animation = new VKeyframeAnimation(kEdge, kEdge, kPeriod - 1, kRate);
    VKeyframe ring;
    ring.path.addEllipse({kEdge / 2, kEdge / 2}, {kRadius, kRadius});
    ring.strokeColor = kFaintInk;
    ring.strokeWidth = kLine;
    animation->addLayer().addKeyframe(ring);
    VKeyframeLayer& runner = animation->addLayer();
    runner.strokeStyle.cap = vec::Cap::Round;
    for (int32_t frame = 0; frame < kPeriod; ++frame) {
        VKeyframe keyframe;
        keyframe.frame = frame;
        keyframe.path.addArc({kEdge / 2, kEdge / 2}, kRadius, kDegrees * static_cast<float>(frame) - 90,
                             kSweep);
        keyframe.strokeColor = kInk;
        keyframe.strokeWidth = kLine;
        runner.addKeyframe(keyframe);
    }
    return animation;
}
