#include "foundation/log.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "foundation/utf8.h"
#include "platform/clock.h"

namespace {

constexpr uint32_t kStartLevel = LogError;

std::atomic<uint32_t> g_level{kStartLevel};
std::atomic<LogSlot> g_slot{nullptr};

// One buffer per thread: lines of two threads never meet, and nobody waits for a slot that is slow to send.
thread_local char t_line[kLogLineSize];

// What snprintf reports as wanted, cut to what has its place; 0 for a failed conversion.
uint32_t Fitting(int wanted, uint32_t room) {
    return wanted < 0 ? 0 : std::min(static_cast<uint32_t>(wanted), room - 1);
}

uint32_t WritePrefix(const char* tag) {
    if (!tag || !*tag)
        return 0;
    const auto tick = static_cast<uint32_t>(platform::TickMs());
    return Fitting(snprintf(t_line, kLogLineSize, "%ums RK %s: ", tick, tag), kLogLineSize);
}

} // namespace

bool LogEnabled(uint32_t level) {
    return level <= g_level.load(std::memory_order_relaxed) && g_slot.load(std::memory_order_relaxed);
}

void Log(uint32_t level, const char* tag, const char* format, ...) {
    const LogSlot slot = g_slot.load(std::memory_order_acquire);
    if (!slot || level > g_level.load(std::memory_order_relaxed))
        return;

    uint32_t length = WritePrefix(tag);
    const uint32_t room = kLogLineSize - length;
    t_line[length] = '\0';
    va_list arguments;
    va_start(arguments, format);
    const int wanted = vsnprintf(t_line + length, room, format, arguments);
    va_end(arguments);
    length = Utf8WithoutCutEnd(t_line, length + Fitting(wanted, room));
    t_line[length] = '\0';
    ReplaceInvalidUtf8(t_line, length);
    slot(t_line);
}

void SetLogSlot(LogSlot slot) {
    g_slot.store(slot, std::memory_order_release);
}

void SetLogLevel(uint32_t level) {
    g_level.store(level, std::memory_order_relaxed);
}

uint32_t GetLogLevel() {
    return g_level.load(std::memory_order_relaxed);
}
