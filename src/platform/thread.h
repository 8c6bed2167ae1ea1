// A native thread. Signals that end the process are blocked in it, so that they reach the first thread only.
#pragma once

#include <pthread.h>

namespace platform {

class NativeThread {
public:
    using Entry = void (*)(void* argument);

    NativeThread() = default;
    ~NativeThread() { Join(); }
    NativeThread(const NativeThread&) = delete;
    NativeThread& operator=(const NativeThread&) = delete;

    // Starts entry(argument) on a new thread with the default stack; false if the system gives none.
    // A former thread of this object must have been joined. The name is cut to the system's 15 bytes.
    bool Start(Entry entry, void* argument, const char* name);

    // Waits for the end of the thread; nothing if none was started or it was joined already.
    void Join();

    // True from Start until Join.
    bool IsJoinable() const { return m_started; }

    bool IsCurrent() const { return m_started && pthread_equal(m_handle, pthread_self()); }

private:
    pthread_t m_handle{};
    bool m_started = false;
};

} // namespace platform
