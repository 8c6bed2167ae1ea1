// Catches what the system logs while one lives. The level is 5 unless the test asks for another.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "foundation/log.h"

class LogCapture {
public:
    explicit LogCapture(uint32_t level = LogTrace) : m_formerLevel(GetLogLevel()) {
        Lines().clear();
        SetLogLevel(level);
        SetLogSlot([](const char* line) {
            std::lock_guard lock(Mutex());
            Lines().push_back(line);
        });
    }
    ~LogCapture() {
        SetLogSlot(nullptr);
        SetLogLevel(m_formerLevel);
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // All lines so far, each with its prefix "%ums RK TAG: ".
    std::vector<std::string> All() const {
        std::lock_guard lock(Mutex());
        return Lines();
    }

    // How many lines contain this text.
    size_t Count(const std::string& text) const {
        size_t count = 0;
        for (const std::string& line : All())
            count += line.find(text) != std::string::npos;
        return count;
    }
    bool Has(const std::string& text) const { return Count(text) > 0; }

    void Clear() {
        std::lock_guard lock(Mutex());
        Lines().clear();
    }

private:
    static std::mutex& Mutex() {
        static std::mutex mutex;
        return mutex;
    }
    static std::vector<std::string>& Lines() {
        static std::vector<std::string> lines;
        return lines;
    }

    uint32_t m_formerLevel;
};
