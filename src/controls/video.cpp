#include "controls/video.h"

#include <utility>

#include "gui/application.h"
#include "media/colour_convert.h"
#include "media/video_decoder.h"

VR_REGISTER_ELEMENT(CVrGuiVideo)

namespace {

// How a part of a picture fills a store; false if it does not.
bool FitScale(const h264::CropWindow& part, const CVrSize& store, colour::Scale* scale) {
    const auto width = static_cast<uint32_t>(store.width);
    const auto height = static_cast<uint32_t>(store.height);
    *scale = width == 2 * part.width ? colour::Scale::Doubled : colour::Scale::Same;
    const auto factor = static_cast<uint32_t>(*scale);
    return width == factor * part.width && height == factor * part.height;
}

colour::PlanarPicture Part(const h264::DecodedPicture& picture, const h264::CropWindow& part) {
    const size_t lumaSize = size_t{picture.width} * picture.height;
    const size_t chroma = size_t{part.y} / 2 * (picture.width / 2) + part.x / 2;
    const uint8_t* const cb = picture.planes + lumaSize;
    return {picture.planes + size_t{part.y} * picture.width + part.x,
            cb + chroma,
            cb + lumaSize / 4 + chroma,
            part.width,
            part.height,
            picture.width};
}

} // namespace

CVrGuiVideo::CVrGuiVideo() {
    type = ElementType::Video;
    className = "CVrGuiVideo";
    flags |= FlagOwnStore;
}

CVrGuiVideo::~CVrGuiVideo() {
    Ch264VideoDecoder* const decoder = TheApplication() ? TheApplication()->VideoDecoder() : nullptr;
    if (decoder)
        decoder->StopShowing(this);
}

void CVrGuiVideo::PrepareStore() {
    const CVrRect size(0, 0, rect.width, rect.height);
    if (HasStore() && storeSize == size.Size())
        return;
    InitMem(size);
    m_hasPicture = false;
    CVrScopeLock guard(m_lock);
    m_incoming.InitMem(HasStore() ? size : CVrRect());
    m_isFresh = false;
}

// ---- Decoder thread ----

bool CVrGuiVideo::ShowFrame(const h264::DecodedPicture& picture) {
    if (!Convert(picture))
        return false;
    frameCounter++;
    if (CVrGuiApplication* const application = TheApplication())
        application->WakeForRepaint();
    return true;
}

bool CVrGuiVideo::Convert(const h264::DecodedPicture& picture) {
    CVrScopeLock guard(m_lock);
    if (!m_incoming.HasStore())
        return false;
    h264::CropWindow part = {0, 0, picture.width, picture.height};
    colour::Scale scale = colour::Scale::Same;
    if (!FitScale(part, m_incoming.storeSize, &scale)) {
        part = picture.crop;
        if (!FitScale(part, m_incoming.storeSize, &scale))
            return false;
    }
    colour::ConvertPicture(Part(picture, part), m_incoming.pixels,
                           static_cast<size_t>(m_incoming.storeSize.width), scale);
    m_isFresh = true;
    return true;
}

// ---- GUI thread ----

// True: there was a new picture, and the store holds it now.
bool CVrGuiVideo::TakePicture() {
    CVrScopeLock guard(m_lock);
    if (!m_isFresh)
        return false;
    std::swap(pixels, m_incoming.pixels);
    m_isFresh = false;
    m_hasPicture = true;
    return true;
}

void CVrGuiVideo::Draw(bool force, bool compose) {
    PrepareStore();
    TakePicture();
    CVrGuiElement::Draw(force, compose);
}

// The picture is the whole content.
void CVrGuiVideo::DrawBackground() {
    if (!m_hasPicture)
        CVrGuiElement::DrawBackground();
}

// A picture whose wake-up was not followed by a painting is found here.
bool CVrGuiVideo::UpdateTimers(uint64_t now) {
    const bool changed = CVrGuiElement::UpdateTimers(now);
    if (!TakePicture())
        return changed;
    Invalidate();
    if (parent)
        parent->Invalidate();
    return true;
}
