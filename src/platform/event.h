// Manual-reset event: once set it stays set, for every waiter, until somebody resets it.
#pragma once

#include <cstdint>
#include <pthread.h>

namespace platform {

class Event {
public:
    static constexpr uint32_t kForever = UINT32_MAX;

    Event();
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void Set();
    void Reset();

    // True if the event is or becomes set within timeoutMs milliseconds of the real clock. Does not reset it.
    bool Wait(uint32_t timeoutMs);

private:
    pthread_mutex_t m_mutex;
    pthread_cond_t m_changed;
    bool m_isSet = false;
};

} // namespace platform
