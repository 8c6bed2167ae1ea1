// The base of every thread of the system. A derived class overrides MainLoop, polls `state` at least once per
// pass and, in its own destructor, asks for the stop and joins: when the base destructor runs, the derived
// members that MainLoop uses are gone already.
//
//   NotRunning --Start--> (new thread) Running --owner--> StopRequested --ExitThread--> Ended --Start--> ...
//
// A stop that is requested between Start and the first instruction of the thread is kept.
#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/mutex.h"
#include "platform/thread.h"

class CVrThread {
public:
    enum State : uint32_t { NotRunning = 0, Running = 1, StopRequested = 2, Ended = 3 };

    static constexpr uint32_t kNameSize = 64;           // bytes, terminator included
    static constexpr uint32_t kDefaultStackSize = 8192; // recorded only

    CVrThread() = default;
    // Joins what still runs. A thread must not destroy its own object.
    virtual ~CVrThread();
    CVrThread(const CVrThread&) = delete;
    CVrThread& operator=(const CVrThread&) = delete;

    // Starts the thread; both arguments are recorded and have no further effect. Waits for a former thread
    // that was asked to stop; a thread that runs is left alone. Always true: a thread that cannot be had ends
    // the process.
    virtual bool Start(uint32_t threadPriority = 0, uint32_t threadStackSize = 0);

    // Waits for the thread's end; nothing if there is none. Not to be called by the thread itself.
    virtual void Join();

    // The thread's last act: logs, clears `thread`, sets Ended.
    virtual void ExitThread();

    // The thread body.
    virtual void MainLoop();

    // Called by the owner after it has set StopRequested, to end a wait early.
    virtual void Wakeup() {}

    // Not called by anything.
    virtual void OnIdle() {}

    // Sets StopRequested unless the thread has ended, and calls Wakeup.
    void RequestStop();

    bool IsStopRequested() const { return state.load(std::memory_order_acquire) >= StopRequested; }

    // True while a native thread stands behind this object and has not passed ExitThread.
    bool HasThread() const { return thread.load(std::memory_order_acquire) != nullptr; }

    std::atomic<uint32_t> state{NotRunning};
    std::atomic<platform::NativeThread*> thread{
        nullptr};  // borrowed from m_native; null when no thread exists
    CVrMutex lock; // for the derived class's own use
    char name[kNameSize] = "";
    uint32_t priority = 0;
    uint32_t stackSize = 0;

protected:
    // For constructors of derived classes; a longer name is cut.
    void SetName(const char* text);

private:
    static void Enter(void* self);
    void EnterMainLoop();

    platform::NativeThread m_native; // touched by the owner only
};
