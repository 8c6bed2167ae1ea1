// The content model of this system: layers, each a path whose outline, colours and line width are given at
// some frames and found in between for all others.
#pragma once

#include <cstdint>

#include "foundation/ptr_array.h"
#include "gui/vector/animation_model.h"
#include "gui/vector/rasterizer.h"

// How a layer goes from one keyframe to the next.
enum class VEase : uint8_t {
    Linear,
    InOut, // starts and ends slowly
    Hold,  // stays until the next keyframe
};

struct VKeyframe {
    int32_t frame = 0;
    VPath path;
    uint32_t fillColor = 0;   // 0xAARRGGBB; alpha 0: not filled
    uint32_t strokeColor = 0; // alpha 0: not stroked
    float strokeWidth = 0;    // in the content's unit
    float opacity = 1;
    VEase ease = VEase::InOut; // towards the next keyframe
};

class VKeyframeLayer {
public:
    VKeyframeLayer() = default;
    ~VKeyframeLayer();
    VKeyframeLayer(const VKeyframeLayer&) = delete;
    VKeyframeLayer& operator=(const VKeyframeLayer&) = delete;

    // In any order; one for the same frame replaces the former one.
    void addKeyframe(const VKeyframe& keyframe);

    // The layer at a frame: before the first and behind the last keyframe it stays as there. Paths whose
    // commands differ are not mixed: the former one stays.
    VKeyframe at(int32_t frame) const;

    bool isEmpty() const { return m_keyframes.IsEmpty(); }

    VFillRule fillRule = VFillRule::NonZero;
    VStrokeStyle strokeStyle; // its width comes from the keyframes

private:
    uint32_t behind(int32_t frame) const; // index of the first keyframe behind the frame

    VrPtrs<VKeyframe> m_keyframes; // owned, by frame
};

class VKeyframeAnimation final : public VAnimationModel {
public:
    VKeyframeAnimation(float ownWidth, float ownHeight, int32_t lastFrame, float framesPerSecond);
    ~VKeyframeAnimation() override;
    VKeyframeAnimation(const VKeyframeAnimation&) = delete;
    VKeyframeAnimation& operator=(const VKeyframeAnimation&) = delete;

    // A new layer above all others.
    VKeyframeLayer& addLayer();

    void update(int32_t frame, const VMatrix& matrix, float opacity) override;
    void paint(VSurface& surface) override;

private:
    void paintLayer(VSurface& surface, const VKeyframeLayer& layer);

    VrPtrs<VKeyframeLayer> m_layers; // owned, from back to front
    VRasterizer m_rasterizer;
    int32_t m_frame = 0;
    VMatrix m_matrix;
    float m_opacity = 1;
};
