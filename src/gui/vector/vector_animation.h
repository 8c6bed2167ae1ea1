// A vector animation for a button's `vector`: the frame that the time has come to, as pixels.
#pragma once

#include <cstdint>

#include "gui/vector/animation_player.h"
#include "gui/vector_player.h"

class CVrVectorAnimation final : public CVrVectorPlayer {
public:
    CVrVectorAnimation() = default;
    ~CVrVectorAnimation() override;
    CVrVectorAnimation(const CVrVectorAnimation&) = delete;
    CVrVectorAnimation& operator=(const CVrVectorAnimation&) = delete;

    // Takes over the model and shows it from its first frame on, on a surface of this size in pixels. False,
    // and nothing is loaded, if there is no memory for the surface or the size is none.
    bool Load(VAnimationModel* model, int32_t width, int32_t height);
    void Unload();

    bool HasContent() const override { return player != nullptr; }
    int32_t FirstFrame() const override { return player ? player->Model().startFrame : 0; }
    int32_t LastFrame() const override { return player ? player->Model().endFrame : 0; }
    float FrameRate() const override { return player ? player->Model().frameRate : 0; }

    // Brings the pixels to currentFrame. A frame that somebody else renders at the moment is skipped.
    void RenderFrame() override;

    CVrSize GetSurfaceSize() const override {
        return player ? CVrSize(player->width, player->height) : CVrSize();
    }
    const uint32_t* GetSurfacePixels() const override { return pixels; }

    VAnimationPlayer* player = nullptr; // owned; null: nothing is loaded
    uint64_t renderedFrame = kNoFrame;  // what stands in pixels
    uint32_t* pixels = nullptr;         // owned; premultiplied alpha

private:
    static constexpr uint64_t kNoFrame = UINT64_MAX;
};
