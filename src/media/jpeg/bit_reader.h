// The input side of the decoder: the JPEG data is read through one small window, first segment by segment for
// the header, then as a stream of bits for the scan.
//
// When the window is loaded for the scan, stuffed zero bytes (FF 00) are taken out and loading stops at a
// marker, so that the bit reader sees plain bits. Behind the marker, or behind the end of the data, zero bits
// follow; they are counted, and HasOverrun tells whether any of them was consumed.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace jpeg {

// The bits at hand, the next one at the top. Small enough to stay in registers over a block; BitReader keeps
// it in between.
struct BitCursor {
    uint64_t bits = 0;
    uint32_t count = 0; // valid bits, padding included

    uint32_t Peek(uint32_t n) const { return static_cast<uint32_t>(bits >> (64 - n)); } // n 1..32
    void Drop(uint32_t n) {
        bits <<= n;
        count -= n;
    }
    uint32_t Take(uint32_t n) { // n 1..32
        const uint32_t taken = Peek(n);
        Drop(n);
        return taken;
    }
};

class BitReader {
public:
    static constexpr uint32_t kWindowSize = 4096; // bytes
    static constexpr uint32_t kGuaranteed = 32;   // bits that Ensure promises: the longest code and its value

    // Starts on new data. window: kWindowSize bytes, needed by all but Take and Skip. Both are borrowed.
    void Start(const uint8_t* data, uint32_t size);
    void UseWindow(uint8_t* window) { buffer = window; }

    // Header reading: straight from the data.
    bool Take(uint8_t* bytes, uint32_t count); // false if fewer are left
    bool Skip(uint32_t count);
    bool TakeSegment(uint32_t count); // into the window, at most kWindowSize bytes
    const uint8_t* Segment() const { return buffer; }
    uint32_t Left() const { return inputSize - inputPos; }

    // Scan reading begins, or goes on behind a restart marker: nothing is kept of the bits before.
    void BeginBits();

    // Skips the rest of the current byte and takes the two bytes behind it. False if further entropy-coded
    // bytes stand there, or nothing at all.
    bool TakeMarker(uint8_t (&marker)[2]);

    // To read on: take the cursor, Ensure before each code, and put the cursor back.
    BitCursor Cursor() const { return m_cursor; }
    void SetCursor(BitCursor cursor) { m_cursor = cursor; }
    void Ensure(BitCursor& cursor) {
        if (cursor.count < kGuaranteed)
            cursor = Refilled(cursor);
    }

    // Whether padding was consumed, up to the cursor that was put back.
    bool HasOverrun() const { return m_cursor.count < padBits; }

private:
    static constexpr uint32_t kWordBytes = 8;

    BitCursor Refilled(BitCursor cursor) {
        if (bufferFill - bufferPos < kWordBytes && !LoadWindow())
            return RefilledAtEnd(cursor);
        uint64_t word;
        std::memcpy(&word, buffer + bufferPos, kWordBytes);
        if constexpr (std::endian::native == std::endian::little)
            word = __builtin_bswap64(word);
        // Bits below the count are those of bytes that the next refill brings again.
        const uint32_t taken = (63 - cursor.count) >> 3;
        bufferPos += taken;
        return {cursor.bits | word >> cursor.count, cursor.count + taken * 8};
    }
    bool LoadWindow(); // false if fewer than kWordBytes bytes come before the marker or the end
    BitCursor RefilledAtEnd(BitCursor cursor);
    void CopyUnstuffed(uint32_t room);

    const uint8_t* input = nullptr; // not owned
    uint32_t inputSize = 0;
    uint32_t inputPos = 0;

    uint8_t* buffer = nullptr; // the window, not owned
    uint32_t bufferFill = 0;
    uint32_t bufferPos = 0;
    bool stopped = false; // the window ends at a marker or at the end of the data

    BitCursor m_cursor;
    uint32_t padBits = 0; // zero bits added behind the end
};

} // namespace jpeg
