#include "platform/clock.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <sched.h>

namespace platform {

namespace {

constexpr long kNsPerMs = 1000000;
constexpr int64_t kMsPerSecond = 1000;

std::atomic<TickSource> g_tickSource{nullptr};
std::atomic<LocalTimeSource> g_localTimeSource{nullptr};

} // namespace

uint64_t TickMs() {
    if (TickSource source = g_tickSource.load(std::memory_order_acquire))
        return source();
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec * kMsPerSecond + now.tv_nsec / kNsPerMs);
}

void SleepMs(uint32_t ms) {
    if (ms == 0) {
        YieldProcessor();
        return;
    }
    timespec due{};
    clock_gettime(CLOCK_MONOTONIC, &due);
    due.tv_sec += ms / kMsPerSecond;
    due.tv_nsec += static_cast<long>(ms % kMsPerSecond) * kNsPerMs;
    if (due.tv_nsec >= kMsPerSecond * kNsPerMs) {
        due.tv_nsec -= kMsPerSecond * kNsPerMs;
        due.tv_sec++;
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &due, nullptr) == EINTR) {
    }
}

void YieldProcessor() {
    sched_yield();
}

LocalTime NowLocal() {
    if (LocalTimeSource source = g_localTimeSource.load(std::memory_order_acquire))
        return source();
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    LocalTime local;
    local.year = parts.tm_year + 1900;
    local.month = parts.tm_mon + 1;
    local.day = parts.tm_mday;
    local.hour = parts.tm_hour;
    local.minute = parts.tm_min;
    local.second = parts.tm_sec;
    local.millisecond = static_cast<int32_t>(now.tv_nsec / kNsPerMs);
    local.weekday = parts.tm_wday;
    return local;
}

void SetTickSource(TickSource source) {
    g_tickSource.store(source, std::memory_order_release);
}

void SetLocalTimeSource(LocalTimeSource source) {
    g_localTimeSource.store(source, std::memory_order_release);
}

} // namespace platform
