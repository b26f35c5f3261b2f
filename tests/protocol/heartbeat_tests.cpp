#include "ControlChannelXaction.h"
#include "RetriggerableTimerPosix.h"
#include "ScriptedChannel.h"
#include "gxapi/Trace.h"
#include "support/Leaks.h"

#include <chrono>
#include <thread>

using GxImp::CControlChannel;
using std::chrono::milliseconds;

namespace {

TEST(Heartbeat, BeatsAtAThirdOfTheTimeoutToKeepThePrivilege) {
    const struct {
        std::uint32_t accessFlags;
        std::uint16_t beat;
    } cases[] = {{0, TAG_READREG_CMD}, {GEV_EXCLUSIVE_CONTROL_ACCESS, TAG_WRITEREG_CMD}};
    for (const auto &row : cases) {
        ScriptedChannel channel(good, Device(), row.accessFlags, 600);
        const std::uint64_t start = channel.network.now_ms();
        for (std::uint32_t beats = 0; beats < 5; ++beats) {
            channel.network.advance(199);
            EXPECT_EQ(channel.requests().size(), beats);
            channel.network.advance(1);
        }
        ASSERT_EQ(channel.requests().size(), 5u);
        for (std::size_t i = 0; i < 5; ++i) {
            EXPECT_EQ(channel.times_ms()[i] - start, 200 * (i + 1));
            EXPECT_EQ(command(channel.requests()[i]), row.beat);
            EXPECT_EQ(word(channel.requests()[i], 8), GEV_REG_HEARTBEAT_TIMEOUT);
        }
        channel.destroy();
        EXPECT_EQ(channel.requests().size(), row.accessFlags != 0 ? 6u : 5u);
        EXPECT_EQ(isRelease(channel.requests().back()), row.accessFlags != 0);
        EXPECT_EQ(channel.lost, 0);
    }
}

TEST(Heartbeat, TimeoutChangesKeepTheHostAheadOfTheDevice) {
    const struct { std::uint32_t from, to; } cases[] = {{1500, 30000}, {30000, 1500}};
    for (const auto &row : cases) {
        ScriptedChannel channel(
            [](const Bytes &request, std::size_t number) {
                return Answers{{Device().answer(request), number == 0 ? 700u : 0u}};
            },
            Device(), GEV_CONTROL_ACCESS, row.from);
        channel.setProperty(Gx::ControlChannel::WriteRegTimeout, 5000);
        EXPECT_EQ(channel->SetHeartbeatTimeout(499), 0xE1000018u);
        EXPECT_EQ(channel->SetHeartbeatTimeout(row.to), 0u);
        // The shorter period, 500 ms, is in force while the device is told: a beat fell due meanwhile.
        EXPECT_TRUE(eventually([&] { return channel.requests().size() == 2; })) << row.to;
        EXPECT_EQ(word(channel.requests().back(), 12), row.to);
    }
}

/// A channel of which the test holds the lock, in a transaction that is started and not complete.
class BusyChannel : public ScriptedChannel {
public:
    explicit BusyChannel(std::uint32_t heartbeat_ms)
        : ScriptedChannel(
              [](const Bytes &request, std::size_t) {
                  return isRelease(request) ? Answers{acknowledge(request, 0x8007, 0x0083, {})} : good(request);
              },
              Device(), GEV_CONTROL_ACCESS, heartbeat_ms) {
        const std::uint32_t address = 0x1000;
        auto *channel = static_cast<CControlChannel *>(operator->());
        EXPECT_EQ(channel->ReadRegBegin(&address, &value, 1, &m_Xaction), 0u);
    }
    void finish() {
        EXPECT_EQ(m_Xaction->Complete(), 0u);
        m_Xaction.reset();
    }
    /// Starts a change that cannot finish yet.
    std::thread change(std::uint32_t heartbeat_ms) {
        std::thread thread([this, heartbeat_ms] { EXPECT_EQ((*this)->SetHeartbeatTimeout(heartbeat_ms), 0u); });
        std::this_thread::sleep_for(milliseconds(30));
        return thread;
    }

private:
    std::unique_ptr<CControlChannel::CReadRegXaction> m_Xaction;
};

TEST(Heartbeat, WaitingBeatWritesTheNewTimeout) {
    BusyChannel channel(900);
    channel.network.advance(300); // a beat falls due and waits
    std::thread change = channel.change(30000);
    channel.finish();
    change.join();
    for (const Bytes &request : channel.requests())
        EXPECT_TRUE(command(request) == TAG_READREG_CMD || word(request, 12) == 30000) << word(request, 12);
}

TEST(Heartbeat, WaitingBeatIsNotSentWithoutPrivilege) {
    // Leaves the beat time between the release, which the device refuses, and the end of the channel.
    const auto rest = [](void *, std::uint32_t, std::uint32_t, const char *text) {
        if (std::string(text).find("Failed to release") == 0)
            std::this_thread::sleep_for(milliseconds(20));
    };
    Gx::Trace::SetSink(rest, nullptr, Gx::Trace::FlagAll, Gx::Trace::LevelError);
    for (int i = 0; i < 4; ++i) { // it may have got its turn before
        BusyChannel channel(500);
        channel.network.advance(167);
        channel.finish();
        channel.destroy();
        EXPECT_TRUE(isRelease(channel.requests().back()));
        EXPECT_EQ(channel.lost, 0);
    }
    Gx::Trace::SetSink(nullptr, nullptr, 0, 0);
}

TEST(Heartbeat, ConcurrentChangesLeaveDeviceAndTimerWithOneTimeout) {
    BusyChannel channel(3000);
    channel.network.advance(300);
    std::thread longer = channel.change(30000);
    std::thread shorter = channel.change(900);
    channel.finish();
    longer.join();
    shorter.join();
    const std::uint32_t told_ms = word(channel.requests().back(), 12);
    const std::size_t before = channel.requests().size();
    channel.network.advance(told_ms / 3 - 1); // a change starts a full period
    EXPECT_EQ(channel.requests().size(), before) << told_ms;
    channel.network.advance(1);
    EXPECT_EQ(channel.requests().size(), before + 1) << told_ms;
}

class IdleTimer : public GxImp::Posix::CRetriggerableTimer {
public:
    ~IdleTimer() override {
        (void)Stop();
        Join();
    }

protected:
    void TimeoutRoutine() noexcept override {}
};

/// Stop takes no mutex, so its signal may slip by a thread about to wait: Join must not wait for the period.
TEST(Timer, LongPeriodsEndAtOnce) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 300; ++i) {
        IdleTimer timer;
        ASSERT_EQ(timer.Create(600000), 0u);
        if (i % 2 != 0)
            std::this_thread::sleep_for(std::chrono::microseconds(i));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

} // namespace
