#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "platform/clock.h"
#include "platform/event.h"
#include "platform/mutex.h"
#include "platform/wait.h"

TEST(ClockTest, SleepsAtLeastTheTimeAndNotMuchLonger) {
    for (const uint32_t ms : {1u, 2u, 10u, 35u}) {
        const uint64_t before = platform::RealTickMs();
        platform::SleepMs(ms);
        const uint64_t passed = platform::RealTickMs() - before;
        EXPECT_GE(passed + 1, ms); // both readings are truncated
        EXPECT_LT(passed, ms + 200);
    }
}

TEST(ClockTest, ReplacementsAreUsedUntilTheyAreTakenBack) {
    platform::SetTickSource([] { return uint64_t{42}; });
    platform::SetLocalTimeSource([] {
        platform::LocalTime moment;
        moment.year = 2031;
        return moment;
    });
    EXPECT_EQ(platform::TickMs(), 42u);
    EXPECT_EQ(platform::NowLocal().year, 2031);
    platform::SetTickSource(nullptr);
    platform::SetLocalTimeSource(nullptr);
    EXPECT_LE(platform::RealTickMs() - platform::TickMs(), 1000u);
    EXPECT_NE(platform::NowLocal().year, 2031);
}

TEST(EventTest, StaysSetForEveryWaiterUntilReset) {
    platform::Event event;
    EXPECT_FALSE(event.Wait(0));
    event.Set();
    EXPECT_TRUE(event.Wait(0));
    EXPECT_TRUE(event.Wait(platform::Event::kForever));
    event.Reset();
    const uint64_t before = platform::RealTickMs();
    EXPECT_FALSE(event.Wait(30));
    EXPECT_GE(platform::RealTickMs() - before, 29u);
}

TEST(EventTest, WakesAllThatWait) {
    platform::Event event;
    std::atomic<int> woken{0};
    std::thread first([&] { woken += event.Wait(5000); });
    std::thread second([&] { woken += event.Wait(platform::Event::kForever); });
    platform::SleepMs(20);
    event.Set();
    first.join();
    second.join();
    EXPECT_EQ(woken, 2);
}

TEST(MutexTest, IsRecursiveAndExcludesOthers) {
    platform::RecursiveMutex mutex;
    int counter = 0;
    auto work = [&] {
        for (int i = 0; i < 20000; i++) {
            mutex.Lock();
            mutex.Lock();
            counter++;
            mutex.Unlock();
            mutex.Unlock();
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(counter, 40000);
}
