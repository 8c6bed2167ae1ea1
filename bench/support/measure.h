// How the programs here measure: a piece of work and its floor turn by turn in one run on one core, the medians
// compared. Figures of one machine at one moment say little, ratios hold.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <sched.h>
#include <string>
#include <vector>

namespace bench {

using Work = std::function<void()>;

inline double SecondsOf(const Work& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// The upper one of two in the middle. Not for empty lists.
inline double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Keeps this process on the core that it runs on, so that caches stay warm.
inline void PinToOneCore() {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &set);
    sched_setaffinity(0, sizeof set, &set);
}

struct Medians {
    double work;  // seconds
    double floor; // seconds
    double Ratio() const { return work / floor; }
};

// Both in turns; `prepare` runs before each of them and is not measured.
inline Medians InTurns(
    int rounds, const Work& work, const Work& floor, const Work& prepare = [] {}) {
    std::vector<double> times, floors;
    for (int i = 0; i < rounds; i++) {
        prepare();
        floors.push_back(SecondsOf(floor));
        prepare();
        times.push_back(SecondsOf(work));
    }
    return {Median(times), Median(floors)};
}

// The unit M: a memcpy of one screen of 720 x 720 pixels.
inline void CopyScreen() {
    constexpr std::size_t screenBytes = std::size_t{720} * 720 * 4;
    static std::vector<std::uint8_t> from(screenBytes, 1), to(screenBytes);
    std::memcpy(to.data(), from.data(), screenBytes);
}

enum class Goal { AtMost, AtLeast };

// Prints a line for each comparison and remembers whether all goals were reached.
class Report {
public:
    explicit Report(int rounds) : m_rounds(rounds) {}

    // How many times the floor's time the work takes (AtMost), or how many times as fast it is (AtLeast).
    void Compare(
        const std::string& name, const Work& work, const Work& floor, Goal goal, double limit,
        const char* unit, const Work& prepare = [] {}) {
        const Medians medians = InTurns(m_rounds, work, floor, prepare);
        const double ratio = goal == Goal::AtMost ? medians.Ratio() : 1 / medians.Ratio();
        const bool isReached = goal == Goal::AtMost ? ratio <= limit : ratio >= limit;
        m_allReached = m_allReached && isReached;
        std::printf("%-46s %9.2f us %8.3f %-14s (goal %s %.1f)%s\n", name.c_str(), medians.work * 1e6, ratio,
                    unit, goal == Goal::AtMost ? "<=" : ">=", limit, isReached ? "" : "  MISSED");
    }
    void CompareWithCopy(
        const std::string& name, const Work& work, double limit, const Work& prepare = [] {}) {
        Compare(name, work, CopyScreen, Goal::AtMost, limit, "M", prepare);
    }
    int ExitCode() const { return m_allReached ? 0 : 1; }

private:
    int m_rounds;
    bool m_allReached = true;
};

} // namespace bench
