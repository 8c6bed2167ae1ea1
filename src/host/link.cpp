#include "host/link.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "foundation/clock.h"
#include "platform/diagnostics.h"
#include "platform/places.h"
#include "platform/stop_signal.h"

namespace {

constexpr int kArgumentCount = 4;  // the program's name included
constexpr uint32_t kFlushMs = 100; // for what is still on its way out at the end
constexpr uint32_t kFrameSize = 784 * 784 * 4;

// The slots are plain functions; this is the link that they reach. One per process at a time.
std::atomic<CHostLink*> g_link{nullptr};

int Tick() {
    return static_cast<int>(TickMs());
}

int Fail(int code, const char* text) {
    platform::WriteDiagnostic("%d WallSlateLib: %s\n", Tick(), text);
    return code;
}

bool IsNonZero(const char* number) {
    return strtol(number, nullptr, 10) != 0;
}

uint32_t ParseTimeout(const char* number) {
    const long ms = strtol(number, nullptr, 10);
    return ms < 0 || ms >= LONG_MAX || static_cast<unsigned long>(ms) >= platform::kWaitForever
               ? platform::kWaitForever
               : static_cast<uint32_t>(ms);
}

// Without the folder, standard error is left alone.
void OpenDiagnosticLog() {
    const platform::Path folder = platform::StateDirectory();
    if (platform::DirectoryExists(folder.text))
        platform::RedirectDiagnostics(platform::Joined(folder, "WallSlateLib.log").text);
}

} // namespace

CHostLink::CHostLink(CHostedApplicationFactory factory, CHostDispatcher dispatcher)
    : m_commands(Slots(), factory, dispatcher) {
    g_link.store(this, std::memory_order_release);
}

CHostLink::~CHostLink() {
    m_commands.Terminate(); // its threads send through this link
    SetLogSlot(nullptr);
    g_link.store(nullptr, std::memory_order_release);
}

CHostSlots CHostLink::Slots() {
    CHostSlots slots;
    slots.log = [](const char* line) { SendText(MessageLog, line); };
    slots.command = [](const char* text) { SendText(MessageText, text); };
    slots.frame = [](const uint8_t* frame, uint32_t size) {
        g_link.load(std::memory_order_acquire)->send_message(MessageFrame, frame, size);
    };
    slots.drain = [] { g_link.load(std::memory_order_acquire)->m_commands.DrainQueue(); };
    slots.hasRoom = [] { return g_link.load(std::memory_order_acquire)->HasRoomFor(kFrameSize); };
    return slots;
}

void CHostLink::SendText(uint32_t command, const char* text) {
    const size_t size = strlen(text) + 1;
    if (size <= UINT32_MAX)
        g_link.load(std::memory_order_acquire)->send_message(command, text, static_cast<uint32_t>(size));
}

int CHostLink::Run(int argc, char** argv) {
    platform::OpenMissingStandardStreams();
    if (argc > 1 && IsNonZero(argv[1]))
        OpenDiagnosticLog();
    if (argc < kArgumentCount)
        return Fail(ExitRefused, "no pipe specified");
    platform::InstallStopSignals();
    const char* name = argv[3];
    const uint32_t timeoutMs = ParseTimeout(argv[2]);
    platform::WriteDiagnostic("%d Use \\\\.\\pipe\\%s\n", Tick(), name);
    switch (m_server.Create(name)) {
    case platform::PipeServer::Creation::NameTaken:
        return Fail(ExitRefused, "another instance is already running");
    case platform::PipeServer::Creation::Failed:
        return ExitNoPipe;
    case platform::PipeServer::Creation::Done:
        break;
    }
    const int code = Serve(platform::Deadline(timeoutMs));
    if (code == ExitDone)
        Shutdown();
    return code;
}

// A peer that goes without having sent a byte was only looking whether the name is taken: the wait goes on.
int CHostLink::Serve(const platform::Deadline& deadline) {
    for (;;) {
        switch (m_server.WaitForClient(deadline)) {
        case platform::PipeServer::Waiting::Connected:
            break;
        case platform::PipeServer::Waiting::StopRequested:
            return ExitDone;
        case platform::PipeServer::Waiting::TimedOut:
            m_server.Close();
            return Fail(ExitTimedOut, "timed out waiting for client");
        case platform::PipeServer::Waiting::Failed:
            m_server.Close();
            return Fail(ExitNoConnection, "connection error");
        }
        if (!m_writer.Start(m_server.ClientDescriptor())) {
            m_server.Close();
            return Fail(ExitNoConnection, "connection error");
        }
        platform::WriteDiagnostic("%d Connected\n", Tick());
        platform::WatchPeer(m_server.ClientDescriptor());
        const bool hasReceived = ServeClient();
        platform::WatchPeer(-1);
        if (hasReceived || deadline.HasPassed() || platform::IsStopRequested())
            return ExitDone;
        m_isRunning = false;
        m_writer.Stop(0);
    }
}

// The read loop; answers whether the client has sent anything at all.
bool CHostLink::ServeClient() {
    m_isRunning = true;
    CHostCommandReader reader(*this);
    uint32_t command = 0;
    CVrxByteArray payload;
    for (;;) {
        const auto result = reader.Read(command, payload);
        if (result == CHostCommandReader::Result::Broken)
            break;
        if (result == CHostCommandReader::Result::Command && !m_commands.handle_cmd(command, payload))
            break;
    }
    return reader.HasReceived();
}

int32_t CHostLink::Receive(void* buffer, uint32_t count) {
    const int32_t got = m_server.Receive(buffer, count, kPieceTimeoutMs);
    if (got == platform::PipeServer::kBroken && m_server.GetError() != 0)
        platform::WriteDiagnostic("%d errret %d\n", Tick(), m_server.GetError());
    return got;
}

bool CHostLink::send_message(uint32_t command, const void* payload, uint32_t length) {
    if (!m_isRunning.load(std::memory_order_acquire))
        return false;
    const uint32_t header[] = {command, length};
    static_assert(sizeof header == kHeaderSize);
    return m_writer.Send(header, kHeaderSize, payload, length, kPieceTimeoutMs);
}

bool CHostLink::HasRoomFor(uint32_t length) {
    return m_writer.HasRoomFor(uint64_t{kHeaderSize} + length);
}

void CHostLink::Shutdown() {
    platform::WriteDiagnostic("%d Terminate\n", Tick());
    m_isRunning = false;
    m_writer.Stop(kFlushMs);
    m_server.Close();
    m_commands.Terminate();
}
