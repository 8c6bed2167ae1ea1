// The rare paths of the bit reader: near the end of the data and for long codes.
#include "media/h264/bits.h"

namespace h264 {

u64 BitReader::PeekNearEnd() const {
    const u64 byte = position >> 3;
    u64 word = 0;
    for (u64 i = 0; i < sizeof word; ++i)
        word = word << 8 | (byte + i < sizeBytes ? data[byte + i] : 0);
    return word << (position & 7);
}

u32 BitReader::ReadLongUe(u32 leadingZeroBits) {
    if (leadingZeroBits > 31) {
        Fail();
        return 0;
    }
    Skip(leadingZeroBits);
    return ReadBits(leadingZeroBits + 1) - 1;
}

void BitReader::FindTrailingBits() {
    u64 bytes = sizeBytes;
    while (bytes > 0 && data[bytes - 1] == 0)
        --bytes;
    lastOneBit = bytes == 0 ? 0 : bytes * 8 - 1 - static_cast<u64>(std::countr_zero(data[bytes - 1]));
}

} // namespace h264
