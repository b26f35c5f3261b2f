#include "AsyncCallbackPosix.h"
#include "GxSocket.h"
#include "RefCounted.h"
#include "RetriggerableTimerPosix.h"
#include "support/Leaks.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

using namespace GxImp;
using namespace GxImp::Posix;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

namespace {

class CountingTimer : public CRetriggerableTimer {
public:
    ~CountingTimer() override {
        (void)Stop();
        Join();
    }
    std::atomic<int> count{0};
    std::function<void()> routine;

protected:
    void TimeoutRoutine() noexcept override {
        ++count;
        if (routine)
            routine();
    }
};

TEST(Timer, FiresPeriodicallyUntilStopped) {
    CountingTimer timer;
    ASSERT_EQ(timer.Create(10), 0u);
    EXPECT_EQ(timer.Create(10), 0xE1000013u);
    EXPECT_TRUE(eventually([&] { return timer.count >= 3; }));
    EXPECT_EQ(timer.Stop(), 0u);
    timer.Join();
    const int count = timer.count;
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(timer.count, count);
    EXPECT_FALSE(timer.IsStarted());
}

TEST(Timer, RetriggerStartsAFullPeriod) {
    CountingTimer timer;
    ASSERT_EQ(timer.Create(600), 0u);
    const auto start = Clock::now();
    while (Clock::now() - start < milliseconds(1500)) {
        ASSERT_EQ(timer.Retrigger(600), 0u);
        std::this_thread::sleep_for(milliseconds(20));
    }
    EXPECT_EQ(timer.count, 0);
    ASSERT_EQ(timer.Retrigger(10), 0u);
    EXPECT_TRUE(eventually([&] { return timer.count > 0; }));
}

TEST(Timer, StopFromItsOwnRoutineAndLongPeriodsEndAtOnce) {
    CountingTimer timer;
    timer.routine = [&timer] { (void)timer.Stop(); };
    ASSERT_EQ(timer.Create(10), 0u);
    EXPECT_TRUE(eventually([&] { return !timer.IsStarted(); }));
    timer.Join();
    EXPECT_EQ(timer.count, 1);

    // Stop takes no mutex, so its signal may slip by a thread about to wait: Join must not wait for the period.
    const auto start = Clock::now();
    for (int i = 0; i < 300; ++i) {
        CountingTimer brief;
        ASSERT_EQ(brief.Create(600000), 0u);
        if (i % 2 != 0)
            std::this_thread::sleep_for(std::chrono::microseconds(i));
    }
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(60));
}

class SleepyThread : public CThread {
protected:
    std::uint32_t Run() noexcept override {
        std::this_thread::sleep_for(milliseconds(200));
        return 42;
    }
};

TEST(Thread, JoinWaitsAsLongAsAllowed) {
    SleepyThread thread;
    ASSERT_EQ(thread.Create(), 0u);
    EXPECT_TRUE(thread.IsStarted());
    EXPECT_EQ(thread.Join(nullptr, 10), 0xE1000007u);
    std::uint32_t exitCode = 0;
    EXPECT_EQ(thread.Join(&exitCode, GX_INFINITE), 0u);
    EXPECT_EQ(exitCode, 42u);
    EXPECT_FALSE(thread.IsStarted());
}

/// Owns its callback, which drops the last reference on the callback's thread.
class Owner : public CRefCounted {
public:
    explicit Owner(std::atomic<int> &deliveries, std::atomic<bool> &deleted)
        : m_Callback(*this, deliveries), m_Deleted(deleted) {}
    void queue() {
        AddRef();
        m_Callback.Queue();
    }

private:
    class Callback : public CAsyncCallback {
    public:
        Callback(Owner &owner, std::atomic<int> &deliveries) : m_Owner(owner), m_Deliveries(deliveries) {}

    protected:
        void Deliver() noexcept override {
            std::this_thread::sleep_for(milliseconds(20));
            ++m_Deliveries;
            m_Owner.Release();
        }

    private:
        Owner &m_Owner;
        std::atomic<int> &m_Deliveries;
    };

    ~Owner() override { m_Deleted = true; }

    Callback m_Callback;
    std::atomic<bool> &m_Deleted;
};

TEST(AsyncCallback, KeepsItsOwnerUntilDelivered) {
    std::thread([] {}).join(); // a sanitizer's own thread starts with the first
    const Holdings before = Holdings::now();
    std::atomic<int> deliveries{0};
    std::atomic<bool> deleted{false};
    auto *owner = new Owner(deliveries, deleted);
    owner->queue();
    owner->queue();
    owner->Release();
    EXPECT_TRUE(eventually([&] { return deleted.load(); }));
    EXPECT_EQ(deliveries, 2);
    EXPECT_TRUE(eventually([&] { return Holdings::now() == before; }));
}

} // namespace
