#include "gui/vector/animation_player.h"

#include <algorithm>

namespace {

// Content that is fainter is not painted.
constexpr float kLeastAlpha = 1e-6F;

} // namespace

VAnimationPlayer::VAnimationPlayer(VAnimationModel* newModel, int32_t surfaceWidth, int32_t surfaceHeight)
    : width(surfaceWidth), height(surfaceHeight), m_model(newModel) {
}

VAnimationPlayer::~VAnimationPlayer() {
    delete m_model;
}

VMatrix VAnimationPlayer::MatrixFor(int32_t surfaceWidth, int32_t surfaceHeight) const {
    VMatrix matrix;
    if (!(m_model->width > 0 && m_model->height > 0))
        return matrix;
    const auto w = static_cast<float>(surfaceWidth);
    const auto h = static_cast<float>(surfaceHeight);
    const float factor = std::min(w / m_model->width, h / m_model->height);
    matrix.translate((w - m_model->width * factor) * 0.5F, (h - m_model->height * factor) * 0.5F);
    return matrix.scale(factor, factor);
}

bool VAnimationPlayer::Update(uint64_t frame, int32_t newWidth, int32_t newHeight) {
    const int64_t first = m_model->startFrame;
    const int64_t last = std::max<int64_t>(m_model->endFrame, first);
    const auto counted = static_cast<int64_t>(std::min<uint64_t>(frame, UINT32_MAX));
    const auto wanted = static_cast<int32_t>(std::clamp(first + counted, first, last));
    if (!m_dirty && wanted == m_frame && newWidth == m_width && newHeight == m_height)
        return false;
    m_dirty = false;
    m_frame = wanted;
    m_width = newWidth;
    m_height = newHeight;
    m_model->update(m_frame, MatrixFor(newWidth, newHeight), m_alpha);
    return true;
}

void VAnimationPlayer::Render(VSurface& surface) {
    surface.clear();
    const bool isInRange = m_frame >= m_model->startFrame && m_frame <= m_model->endFrame;
    if (isInRange && m_alpha > kLeastAlpha)
        m_model->paint(surface);
}
