// The clock for everything above the platform, and the clock that tests step by hand.
#pragma once

#include <cstdint>

#include "platform/clock.h"

// Milliseconds since an arbitrary start, never going back. All timers, fades and repeats read only this.
inline uint64_t TickMs() {
    return platform::TickMs();
}

// Sleeps at least ms milliseconds of real time; 0 yields the processor.
inline void SleepMs(uint32_t ms) {
    platform::SleepMs(ms);
}

// While one lives, TickMs() answers the time set here. One at a time; SleepMs still sleeps real time.
class CVrTestClock {
public:
    explicit CVrTestClock(uint64_t startMs = 1000000);
    ~CVrTestClock();
    CVrTestClock(const CVrTestClock&) = delete;
    CVrTestClock& operator=(const CVrTestClock&) = delete;

    uint64_t Now() const;
    void Set(uint64_t ms);
    void Advance(uint64_t ms);
};

// While one lives, the calendar stands still at the given moment. One at a time.
class CVrTestCalendar {
public:
    explicit CVrTestCalendar(const platform::LocalTime& moment);
    ~CVrTestCalendar();
    CVrTestCalendar(const CVrTestCalendar&) = delete;
    CVrTestCalendar& operator=(const CVrTestCalendar&) = delete;
};
