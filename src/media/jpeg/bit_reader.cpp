#include "media/jpeg/bit_reader.h"

#include <algorithm>

namespace jpeg {

namespace {

constexpr uint8_t kMarkerPrefix = 0xFF;
constexpr uint8_t kStuffing = 0x00;

} // namespace

void BitReader::Start(const uint8_t* data, uint32_t size) {
    *this = BitReader();
    input = data;
    inputSize = data ? size : 0;
}

bool BitReader::Take(uint8_t* bytes, uint32_t count) {
    if (count > Left())
        return false;
    std::memcpy(bytes, input + inputPos, count);
    inputPos += count;
    return true;
}

bool BitReader::Skip(uint32_t count) {
    if (count > Left())
        return false;
    inputPos += count;
    return true;
}

bool BitReader::TakeSegment(uint32_t count) {
    return count <= kWindowSize && Take(buffer, count);
}

void BitReader::BeginBits() {
    bufferFill = 0;
    bufferPos = 0;
    stopped = false;
    m_cursor = BitCursor();
    padBits = 0;
}

bool BitReader::TakeMarker(uint8_t (&marker)[2]) {
    const uint32_t realBits = m_cursor.count - std::min(m_cursor.count, padBits);
    if (realBits >= 8)
        return false;
    if (bufferPos == bufferFill)
        LoadWindow();
    return bufferPos == bufferFill && Take(marker, sizeof marker);
}

// Moves the rest to the front and loads behind it.
bool BitReader::LoadWindow() {
    const uint32_t rest = bufferFill - bufferPos;
    std::memmove(buffer, buffer + bufferPos, rest);
    bufferPos = 0;
    bufferFill = rest;
    while (!stopped && bufferFill < kWindowSize)
        CopyUnstuffed(kWindowSize - bufferFill);
    return bufferFill >= kWordBytes;
}

// Copies up to and including the next stuffed FF, or up to a marker, or room bytes, whatever comes first.
void BitReader::CopyUnstuffed(uint32_t room) {
    const uint8_t* from = input + inputPos;
    const uint32_t reach = std::min(room, Left());
    if (reach == 0) {
        stopped = true;
        return;
    }
    const void* prefix = std::memchr(from, kMarkerPrefix, reach);
    const uint32_t plain = prefix ? static_cast<uint32_t>(static_cast<const uint8_t*>(prefix) - from) : reach;
    std::memcpy(buffer + bufferFill, from, plain);
    bufferFill += plain;
    inputPos += plain;
    if (!prefix)
        return;
    stopped = Left() < 2 || input[inputPos + 1] != kStuffing;
    if (stopped)
        return;
    buffer[bufferFill++] = kMarkerPrefix;
    inputPos += 2;
}

// The last bytes one by one, then zeros.
BitCursor BitReader::RefilledAtEnd(BitCursor cursor) {
    // A word-wise refill may have left bits below the count; here their bytes are added again one by one.
    cursor.bits = cursor.count == 0 ? 0 : cursor.bits >> (64 - cursor.count) << (64 - cursor.count);
    while (cursor.count <= 56) {
        if (bufferPos < bufferFill)
            cursor.bits |= static_cast<uint64_t>(buffer[bufferPos++]) << (56 - cursor.count);
        else
            padBits += 8;
        cursor.count += 8;
    }
    return cursor;
}

} // namespace jpeg
