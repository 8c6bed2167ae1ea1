// Critical section, recursive on the same thread.
#pragma once

#include "platform/mutex.h"

class CVrMutex {
public:
    CVrMutex() = default;
    virtual ~CVrMutex() = default;
    CVrMutex(const CVrMutex&) = delete;
    CVrMutex& operator=(const CVrMutex&) = delete;

    void Lock() { m_mutex.Lock(); }
    void Unlock() { m_mutex.Unlock(); }

private:
    platform::RecursiveMutex m_mutex;
};

// Holds a mutex for the length of a scope.
class CVrScopeLock {
public:
    explicit CVrScopeLock(CVrMutex& mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    ~CVrScopeLock() { m_mutex.Unlock(); }
    CVrScopeLock(const CVrScopeLock&) = delete;
    CVrScopeLock& operator=(const CVrScopeLock&) = delete;

private:
    CVrMutex& m_mutex;
};
