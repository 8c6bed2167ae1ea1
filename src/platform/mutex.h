// Recursive mutex of the operating system.
#pragma once

#include <pthread.h>

namespace platform {

class RecursiveMutex {
public:
    RecursiveMutex();
    ~RecursiveMutex();
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    void Lock();
    void Unlock();

private:
    pthread_mutex_t m_mutex;
};

} // namespace platform
