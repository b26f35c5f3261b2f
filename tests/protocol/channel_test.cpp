#include "ScriptedChannel.h"
#include "camsim/Scene.h"
#include "camsim/Simulator.h"
#include "support/Leaks.h"
#include "support/SocketAddress.h"
#include "support/TraceLog.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

using camsim::parseFaults;
using Gx::ControlChannel;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

namespace {

/// A simulated camera on loopback and a channel to it.
class ChannelToCamera : public testing::Test, public ControlChannel::SurpriseRemovalCallback {
protected:
    ChannelToCamera() {
        camsim::CameraConfig config = camsim::parseCameras("ip=127.0.0.1/8,enabled=persistent,xml=none")[0];
        config.memory.push_back({0x20000, Bytes(4096), true});
        cameras.addCamera(config);
        cameras.start();
        before = Holdings::now();
    }
    ~ChannelToCamera() override {
        destroy();
        EXPECT_TRUE(eventually([&] { return Holdings::now() == before; })) << "the channels left something behind";
    }

    GXSTATUS open(std::uint32_t accessFlags, std::uint32_t heartbeat_ms = 3000, sa_family_t family = AF_INET) {
        channel = reinterpret_cast<ControlChannel *>(this); // to see it cleared after a failure
        const GXSTATUS status = ControlChannel::Create(SocketAddress("127.0.0.1", cameras.port(), family), accessFlags,
                                                       heartbeat_ms, &channel);
        return status == 0 ? channel->RegisterSurpriseRemovalCallback(this) : status;
    }
    void destroy() {
        if (channel) {
            EXPECT_EQ(channel->RegisterSurpriseRemovalCallback(nullptr), 0u); // a notification may be on its way
            EXPECT_EQ(channel->Destroy(), 0u);
        }
        channel = nullptr;
    }

    GXSTATUS read(std::uint32_t address, std::uint32_t *value) { return channel->ReadReg(&address, value, 1); }
    GXSTATUS write(std::uint32_t address, std::uint32_t value) { return channel->WriteReg(&address, &value, 1); }
    std::uint32_t privilege() const { return cameras.readRegister(mac, GEV_REG_CONTROL_CHANNEL_PRIVILEGE) & 3; }

    /// The camera answers no more.
    void mute() { cameras.setFaults(parseFaults("silent-after=0")); }
    /// Commands sent to one register, oldest first.
    std::vector<camsim::ReceivedRequest> requestsTo(std::uint16_t tag, std::uint32_t address) const {
        std::vector<camsim::ReceivedRequest> found;
        for (const camsim::ReceivedRequest &request : cameras.requests()) {
            if (request.command() == tag && word(request.bytes, 8) == address)
                found.push_back(request);
        }
        return found;
    }

    void OnSurpriseRemoval() noexcept override {
        if (onLost)
            onLost();
        ++lost;
    }

    const camsim::MacAddress mac = camsim::CameraConfig().mac;
    camsim::Simulator cameras{{"lo", camsim::AddressMode::Unmanaged, 0}};
    Holdings before; // the first channel
    ControlChannel *channel = nullptr;
    std::function<void()> onLost;
    std::atomic<int> lost{0};
};

TEST_F(ChannelToCamera, BeatsAtAThirdOfTheTimeoutToKeepThePrivilege) {
    const struct {
        std::uint32_t accessFlags;
        std::uint16_t beat;
        std::size_t openings; // writes of the opening, after those of privilege, mode and capability
    } cases[] = {{0, TAG_READREG_CMD, 0}, {GEV_EXCLUSIVE_CONTROL_ACCESS, TAG_WRITEREG_CMD, 1}};
    for (const auto &row : cases) {
        cameras.clearRequests();
        const auto start = Clock::now();
        ASSERT_EQ(open(row.accessFlags, 600), 0u);
        const auto beats = [&] { return requestsTo(row.beat, GEV_REG_HEARTBEAT_TIMEOUT); };
        EXPECT_EQ(beats().size(), row.openings);
        EXPECT_TRUE(eventually([&] { return beats().size() >= row.openings + 4; }));
        const auto seen = beats();
        EXPECT_LE(seen.size() - row.openings, static_cast<std::size_t>((Clock::now() - start) / milliseconds(200)));
        auto shortest = Clock::duration::max(); // the others may have had to wait for the processor
        for (std::size_t i = row.openings + 1; i < seen.size(); ++i)
            shortest = std::min(shortest, seen[i].time - seen[i - 1].time);
        EXPECT_LT(shortest, milliseconds(270));
        EXPECT_EQ(privilege(), row.accessFlags);
        EXPECT_EQ(lost, 0);
        destroy();
        EXPECT_EQ(privilege(), 0u);
        const bool writes = row.accessFlags != 0;
        EXPECT_EQ(cameras.readRegister(mac, GEV_REG_HEARTBEAT_TIMEOUT), writes ? 600u : 3000u);
        EXPECT_EQ(requestsTo(TAG_WRITEREG_CMD, GEV_REG_CONTROL_CHANNEL_PRIVILEGE).size(), writes ? 2u : 0u);
    }
}

TEST(Heartbeat, TimeoutChangesKeepTheHostAheadOfTheDevice) {
    const struct { std::uint32_t from, to; } cases[] = {{1500, 30000}, {30000, 1500}};
    for (const auto &row : cases) {
        std::atomic<int> writes{0};
        ScriptedChannel channel(
            [&](const Bytes &request, std::size_t) {
                if (writes++ == 0) // all are writes of the heartbeat timeout
                    std::this_thread::sleep_for(milliseconds(700));
                return good(request);
            },
            Device(), GEV_CONTROL_ACCESS, row.from);
        channel.setProperty(ControlChannel::WriteRegTimeout, 5000);
        EXPECT_EQ(channel->SetHeartbeatTimeout(499), 0xE1000018u);
        EXPECT_EQ(channel->SetHeartbeatTimeout(row.to), 0u);
        // The shorter period, 500 ms, is in force while the device is told: a beat fell due meanwhile.
        EXPECT_TRUE(eventually([&] { return writes >= 2; }, 450)) << row.to;
        EXPECT_EQ(word(channel.requests().back(), 12), row.to);
    }
}

/// A channel to a device that is slow to answer for one register.
class ChannelWithSlowRegister : public ScriptedChannel {
public:
    static constexpr std::uint32_t Slow = 0x9000;

    ChannelWithSlowRegister(milliseconds delay, std::uint32_t heartbeat_ms)
        : ScriptedChannel(
              [delay](const Bytes &request, std::size_t) {
                  if (word(request, 8) == Slow)
                      std::this_thread::sleep_for(delay);
                  return good(request);
              },
              Device(), GEV_CONTROL_ACCESS, heartbeat_ms) {
        setProperty(ControlChannel::ReadRegTimeout, 5000);
    }
};

TEST(Heartbeat, WaitingBeatWritesTheNewTimeout) {
    ChannelWithSlowRegister channel(milliseconds(900), 900);
    std::thread change([&channel] {
        std::this_thread::sleep_for(milliseconds(600)); // a beat fell due after 300 ms and waits for the answer
        EXPECT_EQ(channel->SetHeartbeatTimeout(30000), 0u);
    });
    EXPECT_EQ(channel.read(channel.Slow), 0u);
    change.join();
    for (const Bytes &request : channel.requests())
        EXPECT_TRUE(command(request) == TAG_READREG_CMD || word(request, 12) == 30000) << word(request, 12);
}

TEST(Heartbeat, WaitingBeatIsNotSentWithoutPrivilege) {
    const auto destroyWithWaitingBeat = [] {
        ChannelWithSlowRegister channel(milliseconds(250), 500);
        EXPECT_EQ(channel.read(channel.Slow), 0u);
        channel.destroy();
        EXPECT_EQ(word(channel.requests().back(), 8), GEV_REG_CONTROL_CHANNEL_PRIVILEGE);
        EXPECT_EQ(channel.lost, 0);
    };
    std::vector<std::thread> tries; // who gets the channel's lock first is a matter of luck
    for (int i = 0; i < 16; ++i)
        tries.emplace_back(destroyWithWaitingBeat);
    for (std::thread &attempt : tries)
        attempt.join();
}

TEST_F(ChannelToCamera, FailedCreateLeavesNothingBehind) {
    const struct {
        bool held;
        const char *faults;
        std::uint32_t heartbeat_ms;
        sa_family_t family;
        GXSTATUS status;
        std::uint32_t privilege; // afterwards
        const char *trace;
    } cases[] = {
        {true, "limit=0", 3000, AF_INET, 0xE1018006, 2, "Failed to gain access priviledges 0x00000002. 0xE1018006."},
        {false, "limit=0", 499, AF_INET, 0xE1000018, 0, "Attempt to set too small heartbeat timeout of 499 ms."},
        {false, "limit=0", 500, AF_INET6, 0xE1000009, 0, "Failed to open control channel. 0xE1000009."},
        // When the heartbeat already runs.
        {false, "silent-after=1", 3000, AF_INET, 0xE101800B, 2, "Failed to read device mode register. 0xE101800B."},
        {false, "wrong-code=100,commands=readreg", 3000, AF_INET, 0xE100000B, 0,
         "Failed to read device mode register. 0xE100000B."},
    };
    const camsim::Holder other{{camsim::Ipv4::parse("127.0.0.9"), 4444}};
    for (const auto &row : cases) {
        cameras.setHolder(mac, row.held ? std::optional(other) : std::nullopt);
        cameras.setFaults(parseFaults(row.faults));
        TraceLog traces;
        EXPECT_EQ(open(GEV_CONTROL_ACCESS, row.heartbeat_ms, row.family), row.status);
        EXPECT_EQ(channel, nullptr);
        EXPECT_EQ(Holdings::now(), before);
        EXPECT_EQ(privilege(), row.privilege) << row.trace;
        EXPECT_TRUE(traces.contains(row.trace)) << traces.all();
    }
}

TEST_F(ChannelToCamera, CallbackMayDestroyTheChannel) {
    onLost = [this] { // the last reference drops on the callback's thread
        EXPECT_EQ(write(0x0A00, 0), 0xE1000016u);
        destroy();
    };
    ASSERT_EQ(open(GEV_CONTROL_ACCESS, 500), 0u);
    mute(); // found out by the heartbeat
    EXPECT_TRUE(eventually([&] { return lost == 1; }));
}

TEST_F(ChannelToCamera, DestroyedWhileABeatIsUnanswered) {
    ASSERT_EQ(open(GEV_CONTROL_ACCESS, 500), 0u);
    EXPECT_EQ(channel->RegisterSurpriseRemovalCallback(nullptr), 0u);
    mute();
    cameras.clearRequests();
    EXPECT_TRUE(eventually([&] { return !cameras.requests().empty(); }));
    destroy();
    EXPECT_TRUE(eventually([&] { return Holdings::now() == before; })); // a notification has been delivered then
    EXPECT_EQ(lost, 0);
}

TEST(Channels, StreamAndMessageChannelRegisters) {
    const struct {
        std::uint32_t capabilities;
        GXSTATUS status; // of opening a message channel
    } cases[] = {{0, 0xE100001A}, {GEV_CAPABILITY_EVENT, 0}, {GEV_CAPABILITY_EVENTDATA, 0}};
    for (const auto &row : cases) {
        ScriptedChannel channel([](const Bytes &request, std::size_t) { return good(request); },
                                Device{0, GEV_CAPABILITY_CONCATENATION | row.capabilities});
        const SocketAddress to("192.168.1.5", 50123);
        const SocketAddress v6("192.168.1.5", 50123, AF_INET6);
        EXPECT_EQ(channel->OpenStream(1, to), 0u);
        EXPECT_EQ(channel->CloseStream(1), 0u);
        EXPECT_EQ(channel->CloseMessageChannel(), 0u);
        EXPECT_EQ(channel->OpenMessageChannel(to, 700, 3), row.status);
        std::vector<Bytes> payloads;
        for (const Bytes &request : channel.requests())
            payloads.emplace_back(request.begin() + 8, request.end());
        payloads.resize(4); // the message channel that was refused
        const Bytes message = {0, 0, 0x0B, 0x10, 192, 168, 1, 5, 0, 0, 0x0B, 0x14, 0, 0, 2,    0xBC,
                               0, 0, 0x0B, 0x18, 0,   0,   0, 3, 0, 0, 0x0B, 0x00, 0, 0, 0xC3, 0xCB};
        const std::vector<Bytes> expected = {{0, 0, 0x0D, 0x58, 192, 168, 1, 5, 0, 0, 0x0D, 0x40, 0, 0, 0xC3, 0xCB},
                                             {0, 0, 0x0D, 0x40, 0, 0, 0, 0},
                                             {0, 0, 0x0B, 0x00, 0, 0, 0, 0},
                                             row.status == 0 ? message : Bytes()};
        EXPECT_EQ(payloads, expected);
        EXPECT_EQ(channel->OpenStream(0, v6), 0xE1000009u);
        EXPECT_EQ(channel->OpenMessageChannel(v6, 1, 1), 0xE1000009u);
    }
}

TEST_F(ChannelToCamera, ThirtyPercentLossNeverGivesWrongData) {
    std::cout << "fault seed " << cameras.seed() << "\n";
    int failed = 0;
    for (std::uint32_t i = 0; i < 1000; ++i) {
        if (!channel) {
            cameras.setFaults({});
            ASSERT_EQ(open(0, 60000), 0u);
            const std::uint32_t timeout_ms = 3;
            const std::uint32_t retries = 9;
            EXPECT_EQ(channel->SetProperty(ControlChannel::ReadRegTimeout, &timeout_ms, 4), 0u);
            EXPECT_EQ(channel->SetProperty(ControlChannel::MaxRetryCountRead, &retries, 4), 0u);
            // Some acknowledges come after their request was re-sent.
            cameras.setFaults(parseFaults("loss-to-camera=30,loss-from-camera=30,delay=0-4"));
        }
        cameras.writeRegister(mac, 0x20000 + 4 * i, i * 0x01010101);
        std::uint32_t value = 0;
        const GXSTATUS status = read(0x20000 + 4 * i, &value);
        ASSERT_EQ(value, status == 0 ? i * 0x01010101 : 0);
        if (status == 0)
            continue;
        // Ten losses in a row, 0.51 ^ 10, happen to one read in a thousand: then the device counts as lost.
        ASSERT_EQ(status, 0xE101800Bu);
        ASSERT_EQ(read(0x20000, &value), 0xE1000016u);
        destroy();
        ++failed;
    }
    std::cout << failed << " of 1000 reads ended in time-outs\n";
    EXPECT_LE(failed, 50); // without retries half of them would
}

TEST_F(ChannelToCamera, ThreadsShareOneChannel) {
    ASSERT_EQ(open(GEV_CONTROL_ACCESS, 500), 0u);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < 4; ++t) {
        threads.emplace_back([this, t, &failures] {
            for (std::uint32_t i = 0; i < 500; ++i) {
                std::uint32_t value = 0;
                if (write(0x20000 + 4 * t, i) != 0 || read(0x20000 + 4 * t, &value) != 0 || value != i)
                    ++failures;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
}

} // namespace
