// The thread that turns a camera's stream into pictures. It owns the stream client, the decoder and the
// decoder's memory, and shows at most one picture in five milliseconds; the pace is that of the stream.
//
// A run begins with ShowOn, or with Start after `videoElement` and `address` were set while no run was on. The
// element must stay until the run has ended, which StopShowing sees to. A run does not end with the stream (the
// server may be gone, and the last picture stays); ShowOn again connects again.
//
// All of this belongs to one thread, the owner. A stop takes effect within the decoding of the unit at hand:
// the thread never waits for the network.
#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/thread.h"
#include "media/cam_client.h"
#include "media/h264/decoder.h"
#include "media/video_output.h"

class Ch264VideoDecoder : public CVrThread {
public:
    // Values for Start.
    static constexpr uint32_t kPriority = 4;
    static constexpr uint32_t kStackSize = 8192;

    Ch264VideoDecoder();
    ~Ch264VideoDecoder() override;

    // Empties the pool, which is made at the first call, and resets the decoder. Not during a run.
    void InitDecoder();
    void MainLoop() override;

    // Ends a former run and starts one that shows the camera at this IPv4 address (network byte order).
    void ShowOn(IVrVideoOutput* output, uint32_t cameraAddress);
    // Ends the run that shows on this output, if there is one, and waits for its end.
    void StopShowing(const IVrVideoOutput* output);

    IVrVideoOutput* videoElement = nullptr; // borrowed; without it a run ends at once
    int32_t streamId = 0;                   // for the log
    std::atomic<int32_t> frameCount{0};     // pictures shown in this run
    uint32_t lastFrameTick = 0;             // ms, of the last picture shown
    uint32_t address = 0;                   // IPv4 address of the server, network byte order
    CCamClient camClient;

private:
    // Memory of the decoder, made once; null when there was none, and then nothing is decoded.
    struct Pool {
        Pool() = default;
        ~Pool();
        Pool(const Pool&) = delete;
        Pool& operator=(const Pool&) = delete;
        uint8_t* poolBase = nullptr; // h264::PoolBytes
    };

    void StartStream();
    bool RunPass();
    bool TakeUnit(CCamClient::Unit* unit);
    bool ShowPicture(uint32_t decodeStart);

    Pool pool;
    h264::Decoder decoder; // behind the pool: it is gone before its memory
};
