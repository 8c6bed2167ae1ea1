#include "platform/wait.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>

namespace platform {

uint64_t RealTickMs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
}

Deadline::Deadline(uint32_t timeoutMs)
    : m_due(timeoutMs == kWaitForever ? UINT64_MAX : RealTickMs() + timeoutMs) {
}

uint32_t Deadline::RemainingMs() const {
    if (m_due == UINT64_MAX)
        return kWaitForever;
    const uint64_t now = RealTickMs();
    return now < m_due ? static_cast<uint32_t>(m_due - now) : 0;
}

int Poll(pollfd* entries, uint32_t count, const Deadline& deadline) {
    for (;;) {
        const uint32_t remaining = deadline.RemainingMs();
        const int step = static_cast<int>(std::min<uint32_t>(remaining, INT_MAX));
        const int ready = poll(entries, count, remaining == kWaitForever ? -1 : step);
        const bool isCutShort = (ready < 0 && errno == EINTR) || (ready == 0 && !deadline.HasPassed());
        if (!isCutShort)
            return ready;
    }
}

} // namespace platform
