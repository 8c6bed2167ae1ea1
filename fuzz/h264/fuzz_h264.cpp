// Feeds arbitrary bytes to the decoder as the video thread does. The first byte chooses the routines and
// whether the data comes at once or in two buffers.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "foundation/log.h"
#include "media/h264/decoder.h"

namespace {

struct PoolMemory {
    std::uint8_t* bytes = static_cast<std::uint8_t*>(::operator new (h264::PoolBytes, std::align_val_t{16}));
};

volatile unsigned sink;

// Touches what comes out, as a display would.
void Show(const h264::DecodedPicture& picture) {
    unsigned sum = 0;
    const std::size_t bytes = std::size_t{picture.width} * picture.height * 3 / 2;
    for (std::size_t i = 0; i < bytes; i += 61)
        sum += picture.planes[i];
    sink = sum;
}

void Feed(h264::Decoder& decoder, std::vector<std::uint8_t> data) {
    auto result = decoder.DecodeAccessUnit(data.data(), static_cast<h264::u32>(data.size()));
    for (;;) {
        if (result == h264::AccessUnitResult::Picture)
            Show(decoder.OutputPicture());
        if (!decoder.HasPendingInput())
            return;
        result = decoder.DecodeAccessUnit(nullptr, 0);
    }
}

void IgnoreLine(const char*) {
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static PoolMemory memory;
    if (size == 0)
        return 0;
    SetLogSlot(IgnoreLine);
    SetLogLevel(LogTrace);
    h264::Decoder decoder;
    decoder.InitDecoder(memory.bytes, h264::PoolBytes);
    const bool plain = (data[0] & 1) != 0;
    const bool split = (data[0] & 2) != 0;
    if (plain)
        decoder.UseRoutines(h264::PlainRoutines());
    const std::size_t half = split ? size / 2 : size;
    Feed(decoder, std::vector<std::uint8_t>(data + 1, data + std::max<std::size_t>(half, 1)));
    if (half < size)
        Feed(decoder, std::vector<std::uint8_t>(data + half, data + size));
    return 0;
}
