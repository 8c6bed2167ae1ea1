#include "platform/thread.h"

#include <csignal>
#include <cstring>
#include <new>

namespace platform {

namespace {

constexpr size_t kSystemNameSize = 16; // with the terminator

struct StartRecord {
    NativeThread::Entry entry;
    void* argument;
};

void* RunEntry(void* opaque) {
    StartRecord record = *static_cast<StartRecord*>(opaque);
    delete static_cast<StartRecord*>(opaque);
    record.entry(record.argument);
    return nullptr;
}

// Threads inherit the mask of their creator: block around the creation, not inside the new thread.
class ScopedSignalBlock {
public:
    ScopedSignalBlock() {
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGTERM);
        sigaddset(&blocked, SIGINT);
        pthread_sigmask(SIG_BLOCK, &blocked, &m_former);
    }
    ~ScopedSignalBlock() { pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    ScopedSignalBlock(const ScopedSignalBlock&) = delete;
    ScopedSignalBlock& operator=(const ScopedSignalBlock&) = delete;

private:
    sigset_t m_former;
};

} // namespace

bool NativeThread::Start(Entry entry, void* argument, const char* name) {
    auto* record = new (std::nothrow) StartRecord{entry, argument};
    if (!record)
        return false;
    ScopedSignalBlock block;
    if (pthread_create(&m_handle, nullptr, RunEntry, record) != 0) {
        delete record;
        return false;
    }
    m_started = true;
    char shortName[kSystemNameSize] = {};
    strncpy(shortName, name ? name : "", kSystemNameSize - 1);
    pthread_setname_np(m_handle, shortName);
    return true;
}

void NativeThread::Join() {
    if (!m_started)
        return;
    pthread_join(m_handle, nullptr);
    m_started = false;
}

} // namespace platform
