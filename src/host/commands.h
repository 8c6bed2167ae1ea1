// Carries out the host's commands: owns the application, the queue of messages for the GUI thread and the
// last touch position. All of it is called on the pipe thread, except DrainQueue.
#pragma once

#include <cstdint>

#include "foundation/byte_array.h"
#include "foundation/geometry.h"
#include "foundation/mutex.h"
#include "host/application.h"
#include "host/message_queue.h"

class CHostCommands {
public:
    CHostCommands(const CHostSlots& slots, CHostedApplicationFactory factory, CHostDispatcher dispatcher)
        : m_slots(slots), m_factory(factory), m_dispatcher(dispatcher) {}
    ~CHostCommands() { Terminate(); }
    CHostCommands(const CHostCommands&) = delete;
    CHostCommands& operator=(const CHostCommands&) = delete;

    // False to end the link. The payload may be taken over.
    bool handle_cmd(uint32_t command, CVrxByteArray& payload);

    // Hands all queued messages to the dispatcher, oldest first; on the GUI thread.
    void DrainQueue();

    // Ends the GUI thread and destroys the application, if there is one. A thread that does not end within
    // kStopPatienceMs ends the process, with code 0.
    void Terminate();

    bool HasApplication() const { return m_application != nullptr; }

    static constexpr uint32_t kStopPatienceMs = 400;

private:
    void CreateApplication();
    void Load(CVrxByteArray& payload);
    void Touch(const CVrxByteArray& payload);
    void Queue(uint32_t command, CVrxByteArray& payload);

    const CHostSlots m_slots;
    const CHostedApplicationFactory m_factory;
    const CHostDispatcher m_dispatcher;
    CHostedApplication* m_application = nullptr; // owned
    bool m_isLoaded = false;
    CVrPoint m_lastTouch; // screen pixels
    CHostMessageQueue m_queue;

    static CVrMutex s_handleLock; // around commands 3 and 5
};
