#include <atomic>

#include <gtest/gtest.h>

#include "foundation/clock.h"
#include "foundation/thread.h"
#include "support/log_capture.h"

namespace {

class Counter : public CVrThread {
public:
    Counter() { SetName("Counter"); }
    ~Counter() override {
        RequestStop();
        Join();
    }
    void MainLoop() override {
        stateInside = state.load();
        while (!IsStopRequested()) {
            passes++;
            SleepMs(1);
        }
    }
    void Wakeup() override { wakeups++; }

    std::atomic<int> passes{0};
    std::atomic<int> wakeups{0};
    std::atomic<uint32_t> stateInside{99};
};

} // namespace

TEST(ThreadTest, RunsUntilStopIsRequestedAndLogsItsEnd) {
    LogCapture log;
    Counter counter;
    EXPECT_EQ(counter.state, CVrThread::NotRunning);
    EXPECT_FALSE(counter.HasThread());
    EXPECT_TRUE(counter.Start());
    EXPECT_TRUE(counter.HasThread());
    while (counter.passes == 0)
        SleepMs(1);
    EXPECT_EQ(counter.stateInside, CVrThread::Running);
    counter.RequestStop();
    counter.Join();
    EXPECT_EQ(counter.wakeups, 1);
    EXPECT_EQ(counter.state, CVrThread::Ended);
    EXPECT_FALSE(counter.HasThread());
    EXPECT_TRUE(log.Has("RK CVrThread::ExitThread: ExitThread Counter"));
}

TEST(ThreadTest, StopRequestedRightAfterStartIsNotLost) {
    for (int i = 0; i < 200; i++) {
        Counter counter;
        counter.Start();
        counter.RequestStop();
        counter.Join();
        ASSERT_EQ(counter.state, CVrThread::Ended);
    }
}

TEST(ThreadTest, CanBeStartedAgainAfterItsEnd) {
    Counter counter;
    counter.Start();
    counter.RequestStop();
    counter.Start(); // waits for the first run
    EXPECT_TRUE(counter.HasThread());
    const int passes = counter.passes;
    while (counter.passes == passes)
        SleepMs(1);
    counter.Start(); // runs already: nothing happens
    EXPECT_EQ(counter.state, CVrThread::Running);
}

TEST(ThreadTest, StartRecordsItsArguments) {
    CVrThread thread;
    thread.Start(7, 0);
    EXPECT_EQ(thread.priority, 7u);
    EXPECT_EQ(thread.stackSize, CVrThread::kDefaultStackSize);
    thread.RequestStop();
    thread.Start(0, 100);
    EXPECT_EQ(thread.priority, 7u); // 0 leaves it
    EXPECT_EQ(thread.stackSize, 100u);
    thread.RequestStop();
}
