#include "platform/event.h"

#include <cerrno>
#include <ctime>

namespace platform {

namespace {

timespec DeadlineIn(uint32_t ms) {
    timespec due{};
    clock_gettime(CLOCK_MONOTONIC, &due);
    due.tv_sec += ms / 1000;
    due.tv_nsec += static_cast<long>(ms % 1000) * 1000000;
    if (due.tv_nsec >= 1000000000) {
        due.tv_nsec -= 1000000000;
        due.tv_sec++;
    }
    return due;
}

} // namespace

Event::Event() {
    pthread_mutex_init(&m_mutex, nullptr);
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&m_changed, &attributes);
    pthread_condattr_destroy(&attributes);
}

Event::~Event() {
    pthread_cond_destroy(&m_changed);
    pthread_mutex_destroy(&m_mutex);
}

void Event::Set() {
    pthread_mutex_lock(&m_mutex);
    m_isSet = true;
    pthread_cond_broadcast(&m_changed);
    pthread_mutex_unlock(&m_mutex);
}

void Event::Reset() {
    pthread_mutex_lock(&m_mutex);
    m_isSet = false;
    pthread_mutex_unlock(&m_mutex);
}

bool Event::Wait(uint32_t timeoutMs) {
    const timespec due = DeadlineIn(timeoutMs == kForever ? 0 : timeoutMs);
    pthread_mutex_lock(&m_mutex);
    while (!m_isSet) {
        int result = timeoutMs == kForever ? pthread_cond_wait(&m_changed, &m_mutex)
                                           : pthread_cond_timedwait(&m_changed, &m_mutex, &due);
        if (result == ETIMEDOUT)
            break;
    }
    const bool isSet = m_isSet;
    pthread_mutex_unlock(&m_mutex);
    return isSet;
}

} // namespace platform
