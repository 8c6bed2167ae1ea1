#include "platform/stop_signal.h"

#include <atomic>
#include <cerrno>
#include <csignal>

#include "platform/descriptor.h"
#include "platform/wait.h"

namespace platform {

namespace {

std::atomic<bool> g_isRequested{false};
std::atomic<int> g_watchedSocket{-1};

const WakeDescriptor& Wake() {
    static const WakeDescriptor wake;
    return wake;
}

void OnSignal(int) {
    const int savedError = errno;
    RequestStop();
    errno = savedError;
}

void Route(int signalNumber, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(signalNumber, &action, nullptr);
}

} // namespace

void InstallStopSignals() {
    Wake(); // made here, not in the handler
    Route(SIGTERM, OnSignal);
    Route(SIGINT, OnSignal);
    Route(SIGPIPE, SIG_IGN);
}

void RequestStop() {
    g_isRequested.store(true);
    Wake().Raise();
}

void ClearStopRequest() {
    g_isRequested.store(false);
    Wake().Lower();
}

bool IsStopRequested() {
    return g_isRequested.load();
}

void Pause(uint32_t ms) {
    // poll passes over a negative descriptor.
    pollfd entries[] = {{StopDescriptor(), POLLIN, 0}, {g_watchedSocket.load(), POLLRDHUP, 0}};
    Poll(entries, 2, Deadline(ms));
}

void WatchPeer(int socket) {
    g_watchedSocket.store(socket);
}

int StopDescriptor() {
    return Wake().Get();
}

} // namespace platform
