#include "gui/vector/vector_animation.h"

#include <cstdlib>

namespace {

// Far beyond the display, so that a wrong size does not take all memory.
constexpr int32_t kMaxEdge = 4096; // pixels

} // namespace

CVrVectorAnimation::~CVrVectorAnimation() {
    Unload();
}

void CVrVectorAnimation::Unload() {
    delete player;
    free(pixels);
    player = nullptr;
    pixels = nullptr;
    currentFrame = 0;
    renderedFrame = kNoFrame;
}

bool CVrVectorAnimation::Load(VAnimationModel* model, int32_t width, int32_t height) {
    Unload();
    const bool isSize = width > 0 && height > 0 && width <= kMaxEdge && height <= kMaxEdge;
    if (model && isSize)
        pixels = static_cast<uint32_t*>(
            calloc(static_cast<size_t>(width) * static_cast<size_t>(height), sizeof(uint32_t)));
    if (!pixels) {
        delete model;
        return false;
    }
    player = new VAnimationPlayer(model, width, height);
    return true;
}

void CVrVectorAnimation::RenderFrame() {
    if (!player || currentFrame == renderedFrame)
        return;
    std::atomic<uint8_t>& busy = player->Model().busy;
    if (busy.exchange(1, std::memory_order_acquire) == 0) {
        VSurface surface{pixels, player->width, player->height};
        player->Update(currentFrame, player->width, player->height);
        player->Render(surface);
        busy.store(0, std::memory_order_release);
    }
    renderedFrame = currentFrame;
}
