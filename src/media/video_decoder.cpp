#include "media/video_decoder.h"

#include <cstdlib>

#include "foundation/clock.h"
#include "foundation/log.h"
#include "platform/clock.h"

namespace {

constexpr const char* kTag = "Ch264VideoDecoder::MainLoop";

constexpr size_t kPoolAlignment = 16;
constexpr uint32_t kEmptyRingMs = 1; // sleep while no unit waits
constexpr uint32_t kAfterPictureMs = 5;

uint32_t Now() {
    return static_cast<uint32_t>(TickMs());
}

int Elapsed(uint32_t from, uint32_t to) {
    return static_cast<int>(to - from);
}

} // namespace

Ch264VideoDecoder::Ch264VideoDecoder() {
    SetName("Ch264VideoDecoder");
    InitDecoder();
}

Ch264VideoDecoder::~Ch264VideoDecoder() {
    RequestStop();
    Join();
}

Ch264VideoDecoder::Pool::~Pool() {
    free(poolBase);
}

void Ch264VideoDecoder::InitDecoder() {
    if (!pool.poolBase)
        pool.poolBase = static_cast<uint8_t*>(aligned_alloc(kPoolAlignment, h264::PoolBytes));
    decoder.InitDecoder(pool.poolBase, h264::PoolBytes);
}

void Ch264VideoDecoder::ShowOn(IVrVideoOutput* output, uint32_t cameraAddress) {
    StopShowing(videoElement);
    videoElement = output;
    address = cameraAddress;
    Start(kPriority, kStackSize);
}

void Ch264VideoDecoder::StopShowing(const IVrVideoOutput* output) {
    if (videoElement != output)
        return;
    RequestStop();
    Join();
    videoElement = nullptr;
}

// ---- The thread ----

void Ch264VideoDecoder::MainLoop() {
    if (!videoElement)
        return;
    InitDecoder();
    StartStream();
    Log(LogEvent, kTag, "start video loop %d", streamId);
    frameCount = 0;
    lastFrameTick = Now();
    while (!IsStopRequested()) {
        platform::YieldProcessor();
        if (IsStopRequested() || !RunPass())
            break;
    }
    camClient.RequestStop();
}

void Ch264VideoDecoder::StartStream() {
    camClient.RequestStop();
    camClient.Join(); // a former run's client may not have ended yet
    camClient.address = address;
    camClient.streamState.store(CCamClient::NotConnected, std::memory_order_release);
    camClient.Start(kPriority, kStackSize);
}

// False ends the loop. The decoder works in the ring's slot, which is released when it has used all of it; a
// unit that holds several pictures, or one that an earlier picture had to leave for, takes several passes.
// So nothing is left to drain when the stream ends.
bool Ch264VideoDecoder::RunPass() {
    CCamClient::Unit unit; // null: the rest of the unit at hand
    if (!decoder.HasPendingInput() && !TakeUnit(&unit)) {
        SleepMs(kEmptyRingMs);
        return true;
    }
    const uint32_t decodeStart = Now();
    const h264::AccessUnitResult result = decoder.DecodeAccessUnit(unit.bytes, unit.size);
    if (!decoder.HasPendingInput())
        camClient.ReleaseUnit();
    return result != h264::AccessUnitResult::Picture || ShowPicture(decodeStart);
}

bool Ch264VideoDecoder::TakeUnit(CCamClient::Unit* unit) {
    if (!camClient.PeekUnit(unit))
        return false;
    if (unit->size == 0) {
        camClient.ReleaseUnit();
        return false;
    }
    Log(LogEvent, kTag, "Received %d", static_cast<int>(unit->size));
    return true;
}

bool Ch264VideoDecoder::ShowPicture(uint32_t decodeStart) {
    const h264::DecodedPicture& picture = decoder.OutputPicture();
    if (!picture.planes) {
        Log(LogError, kTag, "Image data is NULL");
        return false;
    }
    Log(LogEvent, kTag, "h264 Frame %d", 0);
    frameCount++;
    const uint32_t decoded = Now();
    if (!videoElement->ShowFrame(picture))
        return false;
    const uint32_t shown = Now();
    Log(LogState, kTag, "Frame %d: Wait %dms Decode %dms (Rgb: %dms) Frame: %dms", frameCount.load(),
        Elapsed(lastFrameTick, decodeStart), Elapsed(decodeStart, shown), Elapsed(decoded, Now()),
        Elapsed(lastFrameTick, decoded));
    lastFrameTick = decoded;
    SleepMs(kAfterPictureMs);
    return true;
}
