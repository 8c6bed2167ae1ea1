// A ring of audio bytes between two threads: what does not fit whole is dropped.
#pragma once

#include <cstdint>

#include "foundation/byte_array.h"
#include "foundation/mutex.h"

class CVrAudioRing {
public:
    static constexpr uint32_t kBytes = 32768;

    CVrAudioRing() { bytes.SetSize(kBytes); }

    // Appends all of it, or nothing and false if the ring has no room for all.
    bool Write(const uint8_t* source, uint32_t count);

    // Takes at most `count` bytes, the oldest first: their number.
    uint32_t Read(uint8_t* target, uint32_t count);

    void Clear();
    uint32_t Held() const;

private:
    mutable CVrMutex lock; // guards all that follows
    CVrxByteArray bytes;
    uint32_t readPosition = 0;
    uint32_t writePosition = 0;
    uint32_t fill = 0; // bytes held
};
