// A loaded animation and the surface that it is shown on: brings the one to a frame of the other's size.
#pragma once

#include <cstdint>

#include "gui/vector/animation_model.h"

class VAnimationPlayer {
public:
    // Takes over the model. width, height: of the surface in pixels.
    VAnimationPlayer(VAnimationModel* newModel, int32_t surfaceWidth, int32_t surfaceHeight);
    ~VAnimationPlayer();
    VAnimationPlayer(const VAnimationPlayer&) = delete;
    VAnimationPlayer& operator=(const VAnimationPlayer&) = delete;

    // frame: counted from the model's first; the picture is centred in the size and keeps its aspect. False
    // if all is as it was.
    bool Update(uint64_t frame, int32_t newWidth, int32_t newHeight);

    // Clears the surface and paints the frame on it.
    void Render(VSurface& surface);

    // The content changed: the next Update brings it to its frame again.
    void SetDirty() { m_dirty = true; }

    VAnimationModel& Model() { return *m_model; }
    const VAnimationModel& Model() const { return *m_model; }

    int32_t width = 0;
    int32_t height = 0;

private:
    VMatrix MatrixFor(int32_t surfaceWidth, int32_t surfaceHeight) const;

    VAnimationModel* m_model;
    bool m_dirty = true;
    int32_t m_frame = 0; // of the model's
    int32_t m_width = 0; // as of the last Update
    int32_t m_height = 0;
    float m_alpha = 1;
};
