// The element on which the decoder thread shows a camera's pictures. A picture appears one to one in an
// element of its size, and doubled in one of twice its size; that size is the coded one or, where the stream
// has cropping, that of what is left of it. Any other picture is refused.
//
// Two threads meet here, under one lock: the decoder thread converts into a second store, the GUI thread
// swaps it with the one that it draws from. So no picture is ever torn, nothing is copied, and the longest
// wait on either side is one conversion. Everything else of the element belongs to the GUI thread.
//
// A page creates it by name, gives it its rectangle and its stores, and hands it to the application's decoder:
//
//     auto* video = CreateChild<CVrGuiVideo>("CVrGuiVideo", false);
//     video->SetRect(0, 0, 720, 720);
//     video->PrepareStore();
//     TheApplication()->VideoDecoder()->ShowOn(video, address);
#pragma once

#include <atomic>

#include "foundation/mutex.h"
#include "gui/element.h"
#include "media/video_output.h"

class CVrGuiVideo : public CVrGuiElement, public IVrVideoOutput {
public:
    CVrGuiVideo();
    // Ends the stream that shows here and waits for the decoder thread, which takes as long as the decoding
    // of one unit.
    ~CVrGuiVideo() override;

    // Makes the stores for the size of the rectangle, unless they have it; Draw does it too.
    void PrepareStore();

    // On the decoder thread.
    bool ShowFrame(const h264::DecodedPicture& picture) override;

    void Draw(bool force, bool compose) override;
    void DrawBackground() override;
    bool UpdateTimers(uint64_t now) override;

    std::atomic<uint32_t> frameCounter{0}; // pictures shown

private:
    bool Convert(const h264::DecodedPicture& picture);
    bool TakePicture();

    bool m_hasPicture = false; // the store holds a picture; GUI thread

    CVrMutex m_lock;              // guards what follows
    CVrGuiFrameBuffer m_incoming; // of the store's size
    bool m_isFresh = false;       // m_incoming holds a picture that the GUI thread has not taken
};
