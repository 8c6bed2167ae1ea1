#include "gui/vector/keyframe_animation.h"

#include <algorithm>
#include <cmath>

namespace {

float Eased(VEase ease, float part) {
    switch (ease) {
    case VEase::Linear:
        return part;
    case VEase::InOut:
        return part * part * (3 - 2 * part);
    case VEase::Hold:
        break;
    }
    return 0;
}

float Mix(float from, float to, float part) {
    return from + (to - from) * part;
}

uint32_t MixColor(uint32_t from, uint32_t to, float part) {
    uint32_t color = 0;
    for (uint32_t shift = 0; shift < 32; shift += 8) {
        const auto a = static_cast<float>(from >> shift & 255);
        const auto b = static_cast<float>(to >> shift & 255);
        color |= static_cast<uint32_t>(std::lround(Mix(a, b, part))) << shift;
    }
    return color;
}

// How much longer lines become on the whole.
float ScaleOf(const VMatrix& matrix) {
    return std::sqrt(std::abs(matrix.m11 * matrix.m22 - matrix.m12 * matrix.m21));
}

} // namespace

// --- Layer ---

VKeyframeLayer::~VKeyframeLayer() {
    for (VKeyframe* keyframe : m_keyframes)
        delete keyframe;
}

uint32_t VKeyframeLayer::behind(int32_t frame) const {
    uint32_t index = 0;
    while (index < m_keyframes.GetSize() && m_keyframes[index]->frame <= frame)
        ++index;
    return index;
}

void VKeyframeLayer::addKeyframe(const VKeyframe& keyframe) {
    const uint32_t index = behind(keyframe.frame);
    if (index > 0 && m_keyframes[index - 1]->frame == keyframe.frame)
        *m_keyframes[index - 1] = keyframe;
    else
        m_keyframes.InsertAt(index, new VKeyframe(keyframe));
}

VKeyframe VKeyframeLayer::at(int32_t frame) const {
    if (isEmpty())
        return {};
    const uint32_t next = behind(frame);
    if (next == 0 || next == m_keyframes.GetSize())
        return *m_keyframes[next == 0 ? 0 : next - 1];
    const VKeyframe& from = *m_keyframes[next - 1];
    const VKeyframe& to = *m_keyframes[next];
    const float passed = static_cast<float>(int64_t{frame} - from.frame);
    const float part = Eased(from.ease, passed / static_cast<float>(int64_t{to.frame} - from.frame));
    VKeyframe between = from;
    if (from.path.isCompatibleWith(to.path))
        between.path = VPath::between(from.path, to.path, part);
    between.fillColor = MixColor(from.fillColor, to.fillColor, part);
    between.strokeColor = MixColor(from.strokeColor, to.strokeColor, part);
    between.strokeWidth = Mix(from.strokeWidth, to.strokeWidth, part);
    between.opacity = Mix(from.opacity, to.opacity, part);
    return between;
}

// --- Animation ---

VKeyframeAnimation::VKeyframeAnimation(float ownWidth, float ownHeight, int32_t lastFrame,
                                       float framesPerSecond) {
    width = ownWidth;
    height = ownHeight;
    endFrame = lastFrame;
    frameRate = framesPerSecond;
}

VKeyframeAnimation::~VKeyframeAnimation() {
    for (VKeyframeLayer* layer : m_layers)
        delete layer;
}

VKeyframeLayer& VKeyframeAnimation::addLayer() {
    auto* layer = new VKeyframeLayer;
    m_layers.Add(layer);
    return *layer;
}

void VKeyframeAnimation::update(int32_t frame, const VMatrix& matrix, float opacity) {
    m_frame = frame;
    m_matrix = matrix;
    m_opacity = opacity;
}

void VKeyframeAnimation::paint(VSurface& surface) {
    for (const VKeyframeLayer* layer : m_layers)
        paintLayer(surface, *layer);
}

void VKeyframeAnimation::paintLayer(VSurface& surface, const VKeyframeLayer& layer) {
    VKeyframe now = layer.at(m_frame);
    now.path.transform(m_matrix);
    const float opacity = now.opacity * m_opacity;
    if (vec::AlphaOf(now.fillColor) != 0) {
        m_rasterizer.rasterize(now.path, layer.fillRule, surface.bounds());
        surface.paint(m_rasterizer.rle(), now.fillColor, opacity);
    }
    if (vec::AlphaOf(now.strokeColor) != 0) {
        VStrokeStyle style = layer.strokeStyle;
        style.width = now.strokeWidth * ScaleOf(m_matrix);
        m_rasterizer.rasterizeStroke(now.path, style, surface.bounds());
        surface.paint(m_rasterizer.rle(), now.strokeColor, opacity);
    }
}
