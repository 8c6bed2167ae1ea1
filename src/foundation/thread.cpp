#include "foundation/thread.h"

#include <cstdio>
#include <cstdlib>

#include "foundation/log.h"
#include "platform/clock.h"

CVrThread::~CVrThread() {
    if (m_native.IsCurrent()) {
        fputs("CVrThread: a thread destroys its own object\n", stderr);
        abort();
    }
    m_native.Join();
}

bool CVrThread::Start(uint32_t threadPriority, uint32_t threadStackSize) {
    if (threadPriority != 0)
        priority = threadPriority;
    stackSize = threadStackSize != 0 ? threadStackSize : kDefaultStackSize;

    if (HasThread() && !IsStopRequested())
        return true;
    m_native.Join();
    state.store(NotRunning, std::memory_order_release);
    thread.store(&m_native, std::memory_order_release);
    if (!m_native.Start(Enter, this, name)) {
        fprintf(stderr, "CVrThread: no thread for %s\n", name);
        _Exit(EXIT_FAILURE);
    }
    return true;
}

void CVrThread::Join() {
    m_native.Join();
}

void CVrThread::Enter(void* self) {
    static_cast<CVrThread*>(self)->EnterMainLoop();
}

void CVrThread::EnterMainLoop() {
    uint32_t expected = NotRunning;
    state.compare_exchange_strong(expected, Running, std::memory_order_acq_rel);
    MainLoop();
    ExitThread();
}

void CVrThread::ExitThread() {
    Log(LogState, "CVrThread::ExitThread", "ExitThread %s", name);
    thread.store(nullptr, std::memory_order_release);
    state.store(Ended, std::memory_order_release);
    platform::YieldProcessor();
}

void CVrThread::MainLoop() {
    Log(LogError, "CVrThread::MainLoop", "%s", "");
    while (!IsStopRequested())
        platform::YieldProcessor();
}

void CVrThread::RequestStop() {
    uint32_t current = state.load(std::memory_order_acquire);
    while (current < StopRequested &&
           !state.compare_exchange_weak(current, StopRequested, std::memory_order_acq_rel)) {
    }
    Wakeup();
}

void CVrThread::SetName(const char* text) {
    snprintf(name, sizeof name, "%s", text ? text : "");
}
