// The messages that wait for the GUI thread: commands 4, 7, 8, 9 and 10, first in, first out.
#pragma once

#include <cstdint>
#include <deque>

#include "foundation/byte_array.h"
#include "foundation/mutex.h"

class CHostMessageQueue {
public:
    // Nobody drains before command 3, so a host that never sends it must not fill the memory.
    static constexpr uint64_t kMaxBytes = 64u << 20; // payload bytes
    static constexpr uint32_t kMaxCount = 65536;

    struct Message {
        uint32_t command = 0;
        CVrxByteArray payload;
    };

    // False, and nothing queued, if the queue is full.
    bool Push(uint32_t command, CVrxByteArray&& payload);

    // Takes the oldest message; false if there is none.
    bool Pop(Message& message);

private:
    CVrMutex m_mutex;
    std::deque<Message> m_messages;
    uint64_t m_bytes = 0;
};
