// Reading of an RBSP bit by bit (clauses 7.2, 9.1). Reading behind the end gives zeros and is remembered: a
// parser may read a whole structure and ask Failed() once, provided that none of its loops depends on bits
// alone.
#pragma once

#include <bit>
#include <cstring>

#include "media/h264/types.h"

namespace h264 {

class BitReader {
public:
    BitReader() = default;
    // Borrows `size` bytes of RBSP, emulation prevention already removed.
    BitReader(const u8* bytes, u32 size) : data(bytes), sizeBytes(size), endBit(u64{size} * 8) {}

    // The next 57 bits or more, left-aligned; zeros stand in for what lies behind the end.
    u64 Peek57() const {
        const u64 byte = position >> 3;
        if (byte + sizeof(u64) > sizeBytes)
            return PeekNearEnd();
        u64 word;
        std::memcpy(&word, data + byte, sizeof word);
        if constexpr (std::endian::native == std::endian::little)
            word = __builtin_bswap64(word);
        return word << (position & 7);
    }
    u32 Peek32() const { return static_cast<u32>(Peek57() >> 32); }

    void Skip(u32 bits) { position += bits; }

    // u(n), 1 to 32 bits.
    u32 ReadBits(u32 bits) {
        const u32 value = Peek32() >> (32 - bits);
        Skip(bits);
        return value;
    }

    bool ReadFlag() { return ReadBits(1) != 0; }

    // ue(v), 9.1: 0 to 2^32 - 2. A longer code fails the reader.
    u32 ReadUe() {
        const u32 bits = Peek32();
        const u32 leadingZeroBits = static_cast<u32>(std::countl_zero(bits));
        if (leadingZeroBits > 15)
            return ReadLongUe(leadingZeroBits);
        Skip(2 * leadingZeroBits + 1);
        return (bits >> (31 - 2 * leadingZeroBits)) - 1;
    }

    // se(v), 9.1.1.
    i32 ReadSe() {
        const u32 codeNum = ReadUe();
        const u32 magnitude = codeNum / 2 + (codeNum & 1);
        return static_cast<i32>((codeNum & 1) != 0 ? magnitude : 0 - magnitude);
    }

    // te(v), 9.1: `range` is the largest value, at least 1.
    u32 ReadTe(u32 range) { return range > 1 ? ReadUe() : 1 - ReadBits(1); }

    bool ByteAligned() const { return (position & 7) == 0; }
    u64 Position() const { return position; } // in bits
    u64 BitsLeft() const { return position < endBit ? endBit - position : 0; }
    const u8* BytePointer() const { return data + (position >> 3); }

    // True once a code was invalid or anything behind the end was consumed.
    bool Failed() const { return position > endBit; }
    void Fail() { position = endBit + 1; }

    // more_rbsp_data(), 7.2: are there bits ahead of the trailing bits?
    bool MoreRbspData() const { return position < lastOneBit; }
    // Finds the stop bit once, so that MoreRbspData() is one comparison.
    void FindTrailingBits();

private:
    u64 PeekNearEnd() const;
    u32 ReadLongUe(u32 leadingZeroBits);

    const u8* data = nullptr; // borrowed
    u64 sizeBytes = 0;
    u64 endBit = 0;
    u64 position = 0;   // of the next bit
    u64 lastOneBit = 0; // position of rbsp_stop_one_bit, after FindTrailingBits()
};

} // namespace h264
