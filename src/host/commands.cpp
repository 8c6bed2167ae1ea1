#include "host/commands.h"

#include <cstdlib>
#include <utility>

#include "foundation/clock.h"
#include "foundation/log.h"
#include "gui/frame_composer.h"
#include "host/protocol.h"
#include "platform/diagnostics.h"

namespace {

constexpr const char* kTag = "CHostCommands::handle_cmd";
constexpr uint32_t kStopCheckMs = 10;

bool IsTerminated(const CVrxByteArray& payload) {
    return !payload.IsEmpty() && memchr(payload.GetData(), '\0', payload.GetSize());
}

// The texts' own terminators separate them; false if there are fewer than four.
bool SplitTexts(const CVrxByteArray& payload, CHostTexts& texts) {
    const char* const end = reinterpret_cast<const char*>(payload.end());
    const char* next = reinterpret_cast<const char*>(payload.begin());
    for (const char** text : {&texts.categories, &texts.rooms, &texts.symbols, &texts.configuration}) {
        const auto rest = static_cast<size_t>(end - next);
        const void* terminator = rest > 0 ? memchr(next, '\0', rest) : nullptr;
        if (!terminator)
            return false;
        *text = std::exchange(next, static_cast<const char*>(terminator) + 1);
    }
    return true;
}

} // namespace

CVrMutex CHostCommands::s_handleLock;

bool CHostCommands::handle_cmd(uint32_t command, CVrxByteArray& payload) {
    platform::WriteDiagnostic("%d handle_cmd %d\n", static_cast<int>(TickMs()), static_cast<int>(command));
    switch (command) {
    case CommandCreate:
        CreateApplication();
        return true;
    case CommandLogLevel:
        if (payload.GetSize() >= sizeof(uint32_t))
            SetLogLevel(ReadU32(payload.GetData(), 0));
        return true;
    case CommandEnd:
        return false;
    default:
        break;
    }
    if (!m_application)
        return true;
    switch (command) {
    case CommandLoad:
        Load(payload);
        break;
    case CommandTouch:
        Touch(payload);
        break;
    case CommandText:
    case CommandSettings:
    case CommandRest:
    case CommandNight:
    case CommandRuntime:
        Queue(command, payload);
        break;
    default:
        break;
    }
    return true;
}

void CHostCommands::CreateApplication() {
    if (m_application) {
        Log(LogWarning, kTag, "command 1 repeated, ignored");
        return;
    }
    SetLogSlot(m_slots.log);
    m_application = m_factory(m_slots);
    if (!m_application)
        Log(LogError, kTag, "no memory for the application");
}

void CHostCommands::Load(CVrxByteArray& payload) {
    if (m_isLoaded) {
        Log(LogWarning, kTag, "command 3 repeated, ignored");
        return;
    }
    CHostTexts texts;
    if (!SplitTexts(payload, texts)) {
        Log(LogError, kTag, "command 3: fewer than four texts in %u bytes", payload.GetSize());
        return;
    }
    CVrScopeLock lock(s_handleLock);
    m_isLoaded = true;
    m_application->Load(texts);
}

// A move to a new place is posted twice: the one record may be overwritten before it is seen, and so its
// position arrives even if the next event follows at once.
void CHostCommands::Touch(const CVrxByteArray& payload) {
    if (payload.GetSize() < kTouchPayloadSize)
        return;
    const uint32_t type = ReadU32(payload.GetData(), 0);
    // Unsigned arithmetic: any 32 bits may come.
    const CVrPoint point(static_cast<int32_t>(ReadU32(payload.GetData(), 4) - kFrameBorder),
                         static_cast<int32_t>(ReadU32(payload.GetData(), 8) - kFrameBorder));
    CVrScopeLock lock(s_handleLock);
    if (type == kTouchMove && point != m_lastTouch)
        m_application->PostTouch(type, point);
    m_lastTouch = point;
    m_application->PostTouch(type, point);
}

void CHostCommands::Queue(uint32_t command, CVrxByteArray& payload) {
    const bool isText = command == CommandText || command == CommandSettings || command == CommandRuntime;
    if (isText && !payload.IsEmpty() && !IsTerminated(payload)) {
        Log(LogError, kTag, "command %u: text of %u bytes without its end", command, payload.GetSize());
        return;
    }
    if (!m_queue.Push(command, std::move(payload))) {
        Log(LogError, kTag, "command %u: too many messages wait", command);
        return;
    }
    m_application->PostRepaint();
}

void CHostCommands::DrainQueue() {
    CHostMessageQueue::Message message;
    while (m_queue.Pop(message)) {
        if (m_dispatcher)
            m_dispatcher(message.command, message.payload);
    }
}

void CHostCommands::Terminate() {
    if (!m_application)
        return;
    Log(LogError, "CVrGuiApp::Terminate", "Terminate all");
    m_application->RequestStop();
    for (uint32_t waited = 0; !m_application->HasEnded(); waited += kStopCheckMs) {
        // Nothing may be destroyed under a thread that runs, and the process must not stay.
        if (waited >= kStopPatienceMs)
            _Exit(EXIT_SUCCESS);
        SleepMs(kStopCheckMs);
    }
    delete std::exchange(m_application, nullptr);
}
