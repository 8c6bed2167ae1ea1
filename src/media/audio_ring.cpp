#include "media/audio_ring.h"

#include <algorithm>
#include <cstring>

bool CVrAudioRing::Write(const uint8_t* source, uint32_t count) {
    CVrScopeLock guard(lock);
    const uint32_t capacity = bytes.GetSize();
    if (count > capacity - fill)
        return false;
    const uint32_t untilEnd = std::min(count, capacity - writePosition);
    if (count > 0) {
        memcpy(bytes.GetData() + writePosition, source, untilEnd);
        memcpy(bytes.GetData(), source + untilEnd, count - untilEnd);
        writePosition = (writePosition + count) % capacity;
    }
    fill += count;
    return true;
}

uint32_t CVrAudioRing::Read(uint8_t* target, uint32_t count) {
    CVrScopeLock guard(lock);
    const uint32_t capacity = bytes.GetSize();
    count = std::min(count, fill);
    if (count == 0)
        return 0;
    const uint32_t untilEnd = std::min(count, capacity - readPosition);
    memcpy(target, bytes.GetData() + readPosition, untilEnd);
    memcpy(target + untilEnd, bytes.GetData(), count - untilEnd);
    readPosition = (readPosition + count) % capacity;
    fill -= count;
    return count;
}

void CVrAudioRing::Clear() {
    CVrScopeLock guard(lock);
    readPosition = writePosition = fill = 0;
}

uint32_t CVrAudioRing::Held() const {
    CVrScopeLock guard(lock);
    return fill;
}
