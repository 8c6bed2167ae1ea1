// The decoder thread allocates nothing once it shows pictures. The linker hands the calls of the whole program
// for memory to the functions below, which count those of one thread.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "media/camera_support.h"
#include "media/h264_stream_writer.h"
#include "media/video_decoder.h"

namespace {

std::atomic<unsigned> allocations{0};
thread_local bool isCounted = false;

void Count() {
    allocations += isCounted ? 1 : 0;
}

} // namespace

extern "C" {
// The linker's names.
void* __real_malloc(std::size_t size);                        // NOLINT
void* __real_calloc(std::size_t count, std::size_t size);     // NOLINT
void* __real_realloc(void* memory, std::size_t size);         // NOLINT
void* __real_aligned_alloc(std::size_t align, std::size_t n); // NOLINT
void* __wrap_malloc(std::size_t size) {                       // NOLINT
    Count();
    return __real_malloc(size);
}
void* __wrap_calloc(std::size_t count, std::size_t size) { // NOLINT
    Count();
    return __real_calloc(count, size);
}
void* __wrap_realloc(void* memory, std::size_t size) { // NOLINT
    Count();
    return __real_realloc(memory, size);
}
void* __wrap_aligned_alloc(std::size_t align, std::size_t n) { // NOLINT
    Count();
    return __real_aligned_alloc(align, n);
}
}

namespace {

// Counts from its first picture on.
class CountingScreen : public IVrVideoOutput {
public:
    bool ShowFrame(const h264::DecodedPicture&) override {
        isCounted = true;
        ++shown;
        return true;
    }
    std::atomic<unsigned> shown{0};
};

} // namespace

// New parameter sets, new sizes, intra and inter pictures, reordering, lost pictures, damaged units.
TEST(VideoDecoder, AllocatesNothingWhileItDecodes) {
    const std::string text = "sps width=2 refs=2 gaps=1\npps\nslice idr\n pcm 10 20\n"
                             "slice p frame_num=1\n move 4,0\n skip 1\n"
                             "slice p frame_num=3 active=2\n move 0,4 ref=1\n pcm 5\n"
                             "slice p frame_num=4\n ue 99\n"
                             "sps width=3\npps\nslice idr\n pcm 1 2 3\n";
    camsim::StreamOptions options;
    options.rate = 0;
    const camsim::CameraServer camera(camsim::ScriptOf(h264test::WriteStream(text), options));
    CountingScreen screen;
    Ch264VideoDecoder decoder;
    decoder.camClient.net.port = camera.Port();
    decoder.ShowOn(&screen, cameratest::Loopback());
    EXPECT_TRUE(cameratest::WaitUntil([&] { return screen.shown >= 40; }));
    decoder.StopShowing(&screen);
    EXPECT_EQ(allocations, 0U);
}
