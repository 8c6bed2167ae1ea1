// The decoder's only way to speak: one line at a time through a slot that the owner fills. Without a listener
// nothing is formatted.
#pragma once

#include <atomic>

namespace h264 {

enum LogLevel : int { LogError = 1, LogLifeCycle = 3, LogTrace = 4 };

// Takes a printf-style line. `tag` names the operation that speaks.
using LogSlot = void (*)(int level, const char* tag, const char* format, ...);

inline std::atomic<LogSlot> logSlot{nullptr};

template <class... Args>
inline void Log(int level, const char* tag, const char* format, Args... args) {
    if (LogSlot slot = logSlot.load(std::memory_order_relaxed))
        slot(level, tag, format, args...);
}

} // namespace h264
