// Any bytes as a compressed stream, into outputs of many sizes: the decoder must give what the format says
// word by word. And the same bytes as a text: they must come back from the encoder's stream.
#include <algorithm>
#include <cstdlib>

#include "foundation/stream_text.h"
#include "stream_encoder.h"

using namespace stream_text;

namespace {

void Require(bool condition) {
    if (!condition)
        abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Both the twin and the exhaustive encoder are slow.
    constexpr size_t kMaxSize = 512;
    if (size < 1 || size > kMaxSize)
        return 0;
    size_t outputSize = data[0] * 8u;
    std::vector<uint8_t> stream(data + 1, data + size);
    Require(DecodeFast(stream, outputSize) == DecodeByTheLetter(stream, outputSize));

    std::string text(data, data + size);
    std::vector<uint8_t> encoded = iconpack::EncodeStream({data, size});
    Require(DecodeFast(encoded, size) == Decoded{0, text});
    return 0;
}
