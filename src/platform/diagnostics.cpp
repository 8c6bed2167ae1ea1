#include "platform/diagnostics.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "platform/descriptor.h"
#include "platform/wait.h"

namespace platform {

namespace {

// A pipe that poll calls writable takes this much at once (PIPE_BUF).
constexpr int kLineSize = 4096;

std::atomic<bool> g_isSilent{false};

} // namespace

void WriteDiagnostic(const char* format, ...) {
    if (g_isSilent.load(std::memory_order_relaxed))
        return;
    char line[kLineSize];
    va_list arguments;
    va_start(arguments, format);
    const int wanted = vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (wanted <= 0)
        return;
    pollfd entry{STDERR_FILENO, POLLOUT, 0};
    if (Poll(&entry, 1, Deadline(0)) <= 0 || (entry.revents & POLLOUT) == 0)
        return;
    const auto length = static_cast<size_t>(std::min(wanted, kLineSize - 1));
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line, length);
}

bool RedirectDiagnostics(const char* path) {
    const Descriptor file(open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    return file.IsOpen() && dup2(file.Get(), STDERR_FILENO) >= 0;
}

void OpenMissingStandardStreams() {
    // The lowest free number is given out first.
    int opened = open("/dev/null", O_RDWR | O_CLOEXEC);
    while (opened >= 0 && opened <= STDERR_FILENO)
        opened = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (opened >= 0)
        close(opened);
}

void SilenceDiagnostics() {
    g_isSilent.store(true, std::memory_order_relaxed);
}

} // namespace platform
