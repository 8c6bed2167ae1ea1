// Waiting for descriptors with a deadline that interrupted system calls do not extend.
#pragma once

#include <cstdint>
#include <poll.h>

namespace platform {

constexpr uint32_t kWaitForever = UINT32_MAX;

// The real monotonic clock, whatever tests have done to TickMs.
uint64_t RealTickMs();

// A moment from which the rest of a wait is counted.
class Deadline {
public:
    explicit Deadline(uint32_t timeoutMs);

    // Milliseconds left, 0 when it has passed.
    uint32_t RemainingMs() const;
    bool HasPassed() const { return RemainingMs() == 0; }

private:
    uint64_t m_due; // UINT64_MAX: never
};

// poll() until something is ready or the deadline has passed: the number of ready entries, 0 on time-out, -1
// on error.
int Poll(pollfd* entries, uint32_t count, const Deadline& deadline);

} // namespace platform
