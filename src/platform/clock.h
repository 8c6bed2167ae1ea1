// Time as the system sees it: a monotonic tick, a precise sleep and the calendar. Both readings can be
// replaced by tests, so that timers, fades and rest logic are tested without waiting.
#pragma once

#include <cstdint>

namespace platform {

// Milliseconds of the monotonic clock, or of the replacement that a test has set.
uint64_t TickMs();

// Sleeps at least ms milliseconds by the real clock, with the kernel's high-resolution timer; 0 yields.
void SleepMs(uint32_t ms);

// Gives the rest of the time slice to others.
void YieldProcessor();

// A moment of the local calendar.
struct LocalTime {
    int32_t year = 1970;
    int32_t month = 1; // 1..12
    int32_t day = 1;   // 1..31
    int32_t hour = 0;  // 0..23
    int32_t minute = 0;
    int32_t second = 0; // 0..60
    int32_t millisecond = 0;
    int32_t weekday = 4; // 0 Sunday .. 6 Saturday
};

LocalTime NowLocal();

// Replacements for tests; null restores the real source. May be set while other threads read the clock.
using TickSource = uint64_t (*)();
using LocalTimeSource = LocalTime (*)();
void SetTickSource(TickSource source);
void SetLocalTimeSource(LocalTimeSource source);

} // namespace platform
