#include "foundation/clock.h"

#include <atomic>

namespace {

std::atomic<uint64_t> g_testNow{0};
platform::LocalTime g_testMoment;

uint64_t TestTick() {
    return g_testNow.load(std::memory_order_relaxed);
}

platform::LocalTime TestMoment() {
    return g_testMoment;
}

} // namespace

CVrTestClock::CVrTestClock(uint64_t startMs) {
    g_testNow = startMs;
    platform::SetTickSource(TestTick);
}

CVrTestClock::~CVrTestClock() {
    platform::SetTickSource(nullptr);
}

uint64_t CVrTestClock::Now() const {
    return TestTick();
}

void CVrTestClock::Set(uint64_t ms) {
    g_testNow = ms;
}

void CVrTestClock::Advance(uint64_t ms) {
    g_testNow += ms;
}

CVrTestCalendar::CVrTestCalendar(const platform::LocalTime& moment) {
    g_testMoment = moment;
    platform::SetLocalTimeSource(TestMoment);
}

CVrTestCalendar::~CVrTestCalendar() {
    platform::SetLocalTimeSource(nullptr);
}
