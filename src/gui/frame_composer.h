// The frame that goes out: the screen of 720 x 720 pixels within a border of 32 pixels that carries a marker.
//
// One frame is kept for the life of its owner. Border and marker never change, so that composing is a copy of the
// screen's rows and nothing else; nobody outside can tell this from a frame that is made anew.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr int32_t kScreenSide = 720; // pixels
constexpr int32_t kFrameBorder = 32; // pixels on each side
constexpr int32_t kFrameSide = kScreenSide + 2 * kFrameBorder;
constexpr size_t kScreenBytes = size_t{kScreenSide} * kScreenSide * 4;
constexpr size_t kFrameBytes = size_t{kFrameSide} * kFrameSide * 4;
constexpr uint32_t kFrameBorderColor = 0xFF323232U;

class CVrFrame {
public:
    CVrFrame() = default;
    ~CVrFrame();
    CVrFrame(const CVrFrame&) = delete;
    CVrFrame& operator=(const CVrFrame&) = delete;

    // Allocates the frame and paints what never changes, once. False without memory; the next call tries again.
    bool Prepare();

    // kFrameSide rows of kFrameSide pixels 0xAARRGGBB; null before Prepare.
    uint32_t* Pixels() const { return m_pixels; }

private:
    void PaintMarker();

    uint32_t* m_pixels = nullptr; // owned
};

// Puts the screen, kScreenSide rows of kScreenSide pixels, into the frame. The whole frame's kFrameBytes bytes as they
// go over the wire, valid until the next call; null without memory.
const uint8_t* ComposeFrame(const uint32_t* screen, CVrFrame& frame);
