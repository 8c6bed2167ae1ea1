// Any bytes as a JPEG picture: decoded with both sets of routines, which must agree, and once halved.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "media/jpeg/jpeg.h"

namespace {

struct Freer {
    void operator()(uint8_t* pixels) const { std::free(pixels); }
};
using Pixels = std::unique_ptr<uint8_t, Freer>;

// A larger picture takes long and finds nothing that a small one does not.
constexpr uint32_t kMostPixels = 1 << 18;

bool IsSmall(const CJpeg& decoder) {
    return uint32_t{decoder.width} * decoder.height <= kMostPixels;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto length = static_cast<uint32_t>(size);
    CJpeg decoder;
    decoder.SetKernels(jpeg::PlainKernels());
    const Pixels plain(decoder.LoadJpeg(data, length));
    if (!IsSmall(decoder))
        return 0;
    if (jpeg::VectorKernels()) {
        decoder.SetKernels(*jpeg::VectorKernels());
        const Pixels vector(decoder.LoadJpeg(data, length));
        const size_t bytes = size_t{decoder.width} * decoder.height * 3;
        if (!plain != !vector || (plain && std::memcmp(plain.get(), vector.get(), bytes) != 0))
            std::abort();
    }
    const auto scale = static_cast<uint8_t>(size % (CJpeg::kMaxScale + 1));
    const Pixels scaled(decoder.LoadScaled(data, length, scale, size % 2 != 0));
    return 0;
}
