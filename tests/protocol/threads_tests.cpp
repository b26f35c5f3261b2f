#include "RetriggerableTimerPosix.h"
#include "support/Leaks.h"
#include "support/ScriptedNetwork.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace GxImp;
using namespace GxImp::Posix;
using Clock = std::chrono::steady_clock;

namespace {

class SelfStoppingTimer : public CRetriggerableTimer {
public:
    ~SelfStoppingTimer() override {
        (void)Stop();
        Join();
    }
    std::atomic<int> count{0};

protected:
    void TimeoutRoutine() noexcept override {
        ++count;
        (void)Stop();
    }
};

TEST(Timer, RetriggerStartsAFullPeriod) {
    ScriptedNetwork network([](const Bytes &) { return 0; });
    SelfStoppingTimer timer;
    ASSERT_EQ(timer.Create(600000), 0u);
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(timer.Retrigger(600), 0u);
        network.advance(599);
        EXPECT_EQ(timer.count, 0);
    }
    network.advance(1);
    EXPECT_EQ(timer.count, 1);
}

TEST(Timer, StopFromItsOwnRoutineAndLongPeriodsEndAtOnce) {
    SelfStoppingTimer timer;
    ASSERT_EQ(timer.Create(10), 0u);
    EXPECT_TRUE(eventually([&] { return !timer.IsStarted(); }));
    timer.Join();
    EXPECT_EQ(timer.count, 1);

    // Stop takes no mutex, so its signal may slip by a thread about to wait: Join must not wait for the period.
    const auto start = Clock::now();
    for (int i = 0; i < 300; ++i) {
        SelfStoppingTimer brief;
        ASSERT_EQ(brief.Create(600000), 0u);
        if (i % 2 != 0)
            std::this_thread::sleep_for(std::chrono::microseconds(i));
    }
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(60));
}

} // namespace
