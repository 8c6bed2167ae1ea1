// The one logging call of the system. Lines leave through the log slot, which the host link sets; before
// that, and above the current level, nothing happens.
#pragma once

#include <cstdint>

enum LogLevel : uint32_t {
    LogError = 1,
    LogWarning = 2, // fallbacks too
    LogState = 3,   // state changes and life-cycle events
    LogEvent = 4,   // per-event traces
    LogTrace = 5,   // per-frame or very detailed traces
};

// Longest line in bytes, prefix and terminator included; the rest is cut off at a character's border.
constexpr uint32_t kLogLineSize = 32768;

// Writes "%ums RK %s: " (tick and tag; nothing for a null or empty tag) and the formatted text as one line,
// to which no newline is added. The line that leaves is valid UTF-8: stray bytes are replaced by '?'.
// Callable from any thread.
void Log(uint32_t level, const char* tag, const char* format, ...) __attribute__((format(printf, 3, 4)));

// Whether a line of this level would leave now; saves the work of arguments that are costly to make.
bool LogEnabled(uint32_t level);

// Receives each line, NUL-terminated and valid during the call only, on the thread that logs.
using LogSlot = void (*)(const char* line);
void SetLogSlot(LogSlot slot);

// Lines of this level and below leave; 1 at start.
void SetLogLevel(uint32_t level);
uint32_t GetLogLevel();
