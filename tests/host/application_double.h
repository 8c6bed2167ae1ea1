// Stands for the application behind the host link and records what reaches it.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "host/application.h"

class ApplicationDouble : public CHostedApplication {
public:
    explicit ApplicationDouble(const CHostSlots& hostSlots) : slots(hostSlots) {
        current = this;
        created++;
    }
    ~ApplicationDouble() override { current = nullptr; }

    void Load(const CHostTexts& texts) override {
        std::lock_guard lock(mutex);
        loads.push_back({texts.categories, texts.rooms, texts.symbols, texts.configuration});
    }
    void PostTouch(uint32_t type, CVrPoint point) override {
        std::lock_guard lock(mutex);
        touches.push_back(std::to_string(type) + "@" + std::to_string(point.x) + "," +
                          std::to_string(point.y));
    }
    void PostRepaint() override { repaints++; }
    void RequestStop() override { stopRequested = true; }
    bool HasEnded() const override { return stopRequested; }

    static CHostedApplication* Make(const CHostSlots& slots) { return new ApplicationDouble(slots); }

    static inline std::atomic<ApplicationDouble*> current{nullptr};
    static inline std::atomic<int> created{0};

    const CHostSlots slots;
    std::mutex mutex;
    std::vector<std::vector<std::string>> loads;
    std::vector<std::string> touches; // "TYPE@X,Y"
    std::atomic<int> repaints{0};
    std::atomic<bool> stopRequested{false};
};
