#include "camsim/Simulator.h"
#include "gxapi/ControlChannel.h"
#include "support/Leaks.h"
#include "support/TraceLog.h"

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <iostream>
#include <mutex>
#include <random>
#include <thread>

using Gx::ControlChannel;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

namespace {

/// A simulated camera on loopback.
class ChannelToCamera : public testing::Test, public ControlChannel::SurpriseRemovalCallback {
protected:
    ~ChannelToCamera() override {
        destroy();
        EXPECT_TRUE(eventually([&] { return Holdings::now() == m_Before; })) << "the channels left something behind";
    }

    static camsim::SimulatorOptions options() {
        camsim::SimulatorOptions options;
        options.port = 0;
        return options;
    }

    static camsim::CameraConfig config() {
        camsim::CameraConfig config;
        config.persistent.address = camsim::Ipv4::parse("127.0.0.1");
        config.persistent.mask = camsim::Ipv4::maskOf(8);
        config.ipEnabled = GEV_IP_CONFIG_PERSISTENT_IP;
        config.memory.push_back({0x20000, std::vector<std::uint8_t>(4096), true});
        return config;
    }

    void start(const camsim::CameraConfig &camera = config()) { start(std::vector<camsim::CameraConfig>{camera}); }
    void start(const std::vector<camsim::CameraConfig> &configs) {
        cameras.addCameras(configs);
        cameras.start();
        m_Before = Holdings::now();
    }

    sockaddr_in address() const {
        sockaddr_in result{};
        result.sin_family = AF_INET;
        result.sin_port = htons(cameras.port());
        result.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return result;
    }

    GXSTATUS open(std::uint32_t accessFlags, std::uint32_t heartbeat_ms = 3000) {
        const sockaddr_in device = address();
        const GXSTATUS status =
            ControlChannel::Create(reinterpret_cast<const sockaddr *>(&device), accessFlags, heartbeat_ms, &channel);
        if (status == 0) {
            EXPECT_EQ(channel->RegisterSurpriseRemovalCallback(this), 0u);
        }
        return status;
    }

    void destroy() {
        if (channel) {
            EXPECT_EQ(channel->RegisterSurpriseRemovalCallback(nullptr), 0u);
            EXPECT_EQ(channel->Destroy(), 0u);
        }
        channel = nullptr;
    }

    GXSTATUS read(std::uint32_t address, std::uint32_t *value) { return channel->ReadReg(&address, value, 1); }
    GXSTATUS write(std::uint32_t address, std::uint32_t value) { return channel->WriteReg(&address, &value, 1); }
    void setProperty(std::uint32_t tag, std::uint32_t value) {
        EXPECT_EQ(channel->SetProperty(tag, &value, sizeof value), 0u);
    }

    std::uint32_t privilege() const { return cameras.readRegister(config().mac, 0x0A00); }

    void OnSurpriseRemoval() noexcept override { ++lost; }

    /// Commands sent to one register, oldest first.
    std::vector<camsim::ReceivedRequest> requestsTo(std::uint16_t command, std::uint32_t address) const {
        std::vector<camsim::ReceivedRequest> found;
        for (const camsim::ReceivedRequest &request : cameras.requests()) {
            if (request.command() == command && request.bytes.size() >= 12 && request.bytes[10] == address >> 8 &&
                request.bytes[11] == (address & 0xFF))
                found.push_back(request);
        }
        return found;
    }

private:
    Holdings m_Before; // before the first channel

protected:
    camsim::Simulator cameras{options()};
    ControlChannel *channel = nullptr;
    std::atomic<int> lost{0};
};

constexpr std::uint16_t ReadRegCommand = 0x0080;
constexpr std::uint16_t WriteRegCommand = 0x0082;

TEST_F(ChannelToCamera, TakesAndReturnsThePrivilege) {
    start();
    EXPECT_EQ(open(GEV_EXCLUSIVE_CONTROL_ACCESS), 0u);
    EXPECT_EQ(privilege() & 3, 1u);
    EXPECT_EQ(cameras.readRegister(config().mac, 0x0938), 3000u);
    // Open, then the heartbeat timeout once more: privilege, mode, capability, timeout.
    const auto requests = cameras.requests();
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[0].command(), WriteRegCommand);
    EXPECT_EQ(requests[3].bytes, (std::vector<std::uint8_t>{0x42, 0x01, 0x00, 0x82, 0x00, 0x08, 0x00, 0x04, 0x00, 0x00,
                                                            0x09, 0x38, 0x00, 0x00, 0x0B, 0xB8}));
    destroy();
    EXPECT_EQ(privilege() & 3, 0u);

    EXPECT_EQ(open(GEV_CONTROL_ACCESS), 0u);
    EXPECT_EQ(privilege() & 3, 2u);
}

TEST_F(ChannelToCamera, MonitorsWithoutPrivilege) {
    start();
    EXPECT_EQ(open(0, 500), 0u);
    EXPECT_TRUE(eventually([&] { return requestsTo(ReadRegCommand, 0x0938).size() >= 2; }));
    destroy();
    EXPECT_TRUE(requestsTo(WriteRegCommand, 0x0A00).empty());
    EXPECT_TRUE(requestsTo(WriteRegCommand, 0x0938).empty());
}

TEST_F(ChannelToCamera, HeartbeatKeepsThePrivilege) {
    start();
    EXPECT_EQ(open(GEV_CONTROL_ACCESS, 500), 0u);
    std::this_thread::sleep_for(milliseconds(1500));
    EXPECT_EQ(privilege() & 3, 2u);
    const auto beats = requestsTo(WriteRegCommand, 0x0938);
    ASSERT_GE(beats.size(), 4u);
    EXPECT_GE(beats.back().time - beats[beats.size() - 2].time, milliseconds(160)); // 500 / 3
    EXPECT_EQ(lost, 0);
}

TEST_F(ChannelToCamera, TimeoutChangesKeepTheHostAheadOfTheDevice) {
    start();
    EXPECT_EQ(open(GEV_CONTROL_ACCESS, 600), 0u);
    EXPECT_EQ(channel->SetHeartbeatTimeout(499), 0xE1000018u);
    cameras.clearRequests();
    // Raising writes the register at once; the next beat is a third of the new timeout away.
    EXPECT_EQ(channel->SetHeartbeatTimeout(30000), 0u);
    std::this_thread::sleep_for(milliseconds(500));
    const auto raised = requestsTo(WriteRegCommand, 0x0938);
    ASSERT_GE(raised.size(), 1u);
    EXPECT_LE(raised.size(), 2u); // at most one beat of the old period slips in between
    EXPECT_EQ(raised.back().bytes[14] << 8 | raised.back().bytes[15], 30000);
    // Lowering retriggers: the beats come at the new pace.
    cameras.clearRequests();
    EXPECT_EQ(channel->SetHeartbeatTimeout(500), 0u);
    EXPECT_TRUE(eventually([&] { return requestsTo(WriteRegCommand, 0x0938).size() >= 3; }));
    EXPECT_EQ(cameras.readRegister(config().mac, 0x0938), 500u);
}

TEST_F(ChannelToCamera, FailedCreateLeavesNothingBehind) {
    camsim::CameraConfig held = config();
    held.heldBy = camsim::Holder{{camsim::Ipv4::parse("127.0.0.9"), 4444}, GEV_CONTROL_ACCESS};
    start(held);
    const Holdings before = Holdings::now();
    const sockaddr_in device = address();
    sockaddr_in v6 = device;
    v6.sin_family = AF_INET6;
    const struct {
        const sockaddr_in &address;
        std::uint32_t accessFlags, heartbeat_ms;
        GXSTATUS status;
    } cases[] = {
        {device, GEV_CONTROL_ACCESS, 3000, 0xE1018006},
        {device, 0, 499, 0xE1000018},
        {v6, 0, 3000, 0xE1000009},
    };
    TraceLog traces;
    for (const auto &row : cases) {
        channel = reinterpret_cast<ControlChannel *>(this); // to see it cleared
        EXPECT_EQ(ControlChannel::Create(reinterpret_cast<const sockaddr *>(&row.address), row.accessFlags,
                                         row.heartbeat_ms, &channel),
                  row.status);
        EXPECT_EQ(channel, nullptr);
        EXPECT_EQ(Holdings::now(), before);
    }
    EXPECT_TRUE(traces.contains("Failed to gain access priviledges 0x00000002. 0xE1018006."));
    EXPECT_TRUE(traces.contains("Failed to open control channel. 0xE1000018."));
    EXPECT_TRUE(traces.contains("Attempt to set too small heartbeat timeout of 499 ms."));

    // Silence in the middle of the opening: the heartbeat already runs then.
    cameras.setHolder(held.mac, std::nullopt);
    camsim::FaultConfig mute;
    mute.silentAfter = 1;
    cameras.setFaults(mute);
    EXPECT_EQ(open(GEV_CONTROL_ACCESS), 0xE101800Bu);
    EXPECT_TRUE(traces.contains("Failed to read device mode register. 0xE101800B."));
    EXPECT_EQ(Holdings::now(), before);

    // A device that refuses a register stays connected: the privilege is given back.
    cameras.setHolder(held.mac, std::nullopt);
    camsim::FaultConfig wrongCode;
    wrongCode.wrongCode = 100;
    wrongCode.commands = {ReadRegCommand};
    cameras.setFaults(wrongCode);
    EXPECT_EQ(open(GEV_CONTROL_ACCESS), 0xE100000Bu);
    EXPECT_EQ(privilege() & 3, 0u);
    EXPECT_EQ(Holdings::now(), before);
}

TEST_F(ChannelToCamera, SilenceEndsInSurpriseRemoval) {
    start();
    EXPECT_EQ(open(GEV_CONTROL_ACCESS, 600), 0u);
    camsim::FaultConfig mute;
    mute.silentAfter = 0;
    cameras.setFaults(mute);
    EXPECT_TRUE(eventually([&] { return lost == 1; })); // found out by the heartbeat
    std::uint32_t value = 0;
    EXPECT_EQ(read(0x0004, &value), 0xE1000016u);
    EXPECT_EQ(write(0x0A00, 0), 0xE1000016u);
    destroy();
    EXPECT_EQ(lost, 1);
}

TEST_F(ChannelToCamera, UnregisteredCallbackIsNotCalled) {
    start();
    EXPECT_EQ(open(0), 0u);
    EXPECT_EQ(channel->RegisterSurpriseRemovalCallback(nullptr), 0u);
    camsim::FaultConfig mute;
    mute.silentAfter = 0;
    cameras.setFaults(mute);
    std::uint32_t value = 0;
    EXPECT_EQ(read(0x0004, &value), 0xE101800Bu);
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(lost, 0);
}

/// Destroys the channel from the notification: the last reference drops on the callback's thread.
class Destroyer : public ControlChannel::SurpriseRemovalCallback {
public:
    explicit Destroyer(ControlChannel &channel) : m_Channel(channel) {}
    void OnSurpriseRemoval() noexcept override {
        std::uint32_t address = 0x0004;
        std::uint32_t value = 0;
        stillUsable = m_Channel.ReadReg(&address, &value, 1) == GX_E_DISCONNECTED;
        done = m_Channel.Destroy() == GX_SUCCESS;
    }
    std::atomic<bool> stillUsable{false};
    std::atomic<bool> done{false};

private:
    ControlChannel &m_Channel;
};

TEST_F(ChannelToCamera, CallbackMayDestroyTheChannel) {
    start();
    EXPECT_EQ(open(GEV_CONTROL_ACCESS, 500), 0u);
    Destroyer destroyer(*channel);
    EXPECT_EQ(channel->RegisterSurpriseRemovalCallback(&destroyer), 0u);
    cameras.setReachable(config().mac, false);
    EXPECT_TRUE(eventually([&] { return destroyer.done.load(); }));
    EXPECT_TRUE(destroyer.stillUsable);
    channel = nullptr;
}

TEST_F(ChannelToCamera, DestroyWhileAHeartbeatWaits) {
    start();
    for (const std::uint32_t access : {0u, static_cast<std::uint32_t>(GEV_CONTROL_ACCESS)}) {
        for (int i = 0; i < 5; ++i) {
            ASSERT_EQ(open(access, 500), 0u);
            camsim::FaultConfig mute;
            mute.silentAfter = 0;
            cameras.setFaults(mute);
            std::this_thread::sleep_for(milliseconds(150 + 10 * i)); // around the first beat
            destroy();
            cameras.setFaults(camsim::FaultConfig());
            cameras.setHolder(config().mac, std::nullopt);
        }
    }
}

TEST_F(ChannelToCamera, AccessUnderOthersControl) {
    camsim::CameraConfig held = config();
    held.heldBy = camsim::Holder{{camsim::Ipv4::parse("127.0.0.9"), 4444}, GEV_CONTROL_ACCESS};
    start(held);
    EXPECT_EQ(open(0), 0u);
    std::uint32_t value = 0;
    EXPECT_EQ(read(0x0A00, &value), 0u);
    EXPECT_EQ(value & 3, 2u);
    EXPECT_EQ(write(0x0014, 5), 0xE1018006u); // and that ends the channel
    EXPECT_EQ(read(0x0A00, &value), 0xE1000016u);
    EXPECT_TRUE(eventually([&] { return lost == 1; }));
    destroy();

    cameras.setHolder(held.mac, camsim::Holder{{camsim::Ipv4::parse("127.0.0.9"), 4444}, GEV_EXCLUSIVE_CONTROL_ACCESS});
    EXPECT_EQ(open(0), 0xE1018006u);
}

TEST_F(ChannelToCamera, StreamAndMessageChannelRegisters) {
    camsim::CameraConfig withEvents = config();
    withEvents.capabilities |= GEV_CAPABILITY_EVENT;
    start(withEvents);
    EXPECT_EQ(open(GEV_CONTROL_ACCESS), 0u);
    sockaddr_in destination{};
    destination.sin_family = AF_INET;
    destination.sin_port = htons(50123);
    destination.sin_addr.s_addr = inet_addr("192.168.1.5");
    const auto *to = reinterpret_cast<const sockaddr *>(&destination);
    cameras.clearRequests();
    (void)channel->OpenStream(1, to);
    (void)channel->CloseStream(1);
    (void)channel->OpenMessageChannel(to, 700, 3);
    (void)channel->CloseMessageChannel();
    std::vector<std::vector<std::uint8_t>> payloads;
    for (const camsim::ReceivedRequest &request : cameras.requests()) {
        if (request.bytes[10] != 0x09) // a heartbeat may slip in
            payloads.emplace_back(request.bytes.begin() + 8, request.bytes.end());
    }
    const std::vector<std::vector<std::uint8_t>> expected = {
        {0, 0, 0x0D, 0x58, 192, 168, 1, 5, 0, 0, 0x0D, 0x40, 0, 0, 0xC3, 0xCB},
        {0, 0, 0x0D, 0x40, 0, 0, 0, 0},
        {0, 0, 0x0B, 0x10, 192, 168, 1, 5, 0, 0, 0x0B, 0x14, 0, 0, 2,    0xBC,
         0, 0, 0x0B, 0x18, 0,   0,   0, 3, 0, 0, 0x0B, 0x00, 0, 0, 0xC3, 0xCB},
        {0, 0, 0x0B, 0x00, 0, 0, 0, 0},
    };
    EXPECT_EQ(payloads, expected);
    destination.sin_family = AF_INET6;
    EXPECT_EQ(channel->OpenStream(0, to), 0xE1000009u);
    EXPECT_EQ(channel->OpenMessageChannel(to, 1, 1), 0xE1000009u);
}

TEST_F(ChannelToCamera, NoMessageChannelWithoutEvents) {
    start();
    EXPECT_EQ(open(GEV_CONTROL_ACCESS), 0u);
    const sockaddr_in to = address();
    EXPECT_EQ(channel->OpenMessageChannel(reinterpret_cast<const sockaddr *>(&to), 1, 1), 0xE100001Au);
}

TEST_F(ChannelToCamera, MemoryRoundTripInPieces) {
    camsim::CameraConfig plain = config();
    std::vector<camsim::CameraConfig> configs;
    for (const std::uint32_t capabilities : {0u, 1u, 2u, 3u}) {
        plain.capabilities = capabilities;
        plain.mac = camsim::MacAddress::fromNumber(0x025AE3000010 + capabilities);
        plain.persistent.address.value = 0x7F000010 + capabilities;
        configs.push_back(plain);
    }
    start(configs);
    std::vector<std::uint8_t> out(2400);
    std::mt19937 random(1);
    for (std::uint8_t &byte : out)
        byte = static_cast<std::uint8_t>(random());
    for (const std::uint32_t capabilities : {0u, 1u, 2u, 3u}) {
        sockaddr_in device = address();
        device.sin_addr.s_addr = htonl(0x7F000010 + capabilities);
        ASSERT_EQ(ControlChannel::Create(reinterpret_cast<const sockaddr *>(&device), GEV_CONTROL_ACCESS, &channel),
                  0u);
        EXPECT_EQ(channel->WriteMem(0x20000, out.data(), 2400), 0u) << capabilities;
        std::vector<std::uint8_t> in(2400);
        EXPECT_EQ(channel->ReadMem(0x20000, in.data(), 2400), 0u) << capabilities;
        EXPECT_EQ(in, out) << capabilities;
        destroy();
    }
}

TEST_F(ChannelToCamera, ThirtyPercentLossNeverGivesWrongData) {
    start();
    const auto connect = [this] {
        ASSERT_EQ(open(GEV_CONTROL_ACCESS, 60000), 0u);
        setProperty(ControlChannel::ReadRegTimeout, 5);
        setProperty(ControlChannel::MaxRetryCountRead, 9);
    };
    connect();
    camsim::FaultConfig lossy;
    lossy.lossToCamera = 30;
    lossy.lossFromCamera = 30;
    lossy.delayMax = milliseconds(7); // some acknowledges come after their request was re-sent
    lossy.duplicate = 5;
    lossy.reorder = 2;
    cameras.setFaults(lossy);
    std::cout << "fault seed " << cameras.seed() << "\n";
    for (std::uint32_t i = 0; i < 1024; ++i)
        cameras.writeRegister(config().mac, 0x20000 + 4 * i, i * 0x01010101);

    int succeeded = 0;
    int reopened = 0;
    for (std::uint32_t i = 0; i < 1000; ++i) {
        std::uint32_t value = 0;
        const GXSTATUS status = read(0x20000 + 4 * i, &value);
        if (status == 0) {
            ASSERT_EQ(value, i * 0x01010101) << "fault seed " << cameras.seed();
            ++succeeded;
            continue;
        }
        // Ten losses in a row, 0.51 ^ 10, happen to one read in a thousand: then the device counts as lost.
        ASSERT_EQ(status, 0xE101800Bu) << "fault seed " << cameras.seed();
        ASSERT_LE(++reopened, 20) << "fault seed " << cameras.seed();
        cameras.setFaults(camsim::FaultConfig());
        destroy();
        cameras.setHolder(config().mac, std::nullopt); // the lost channel could not give the privilege back
        connect();
        cameras.setFaults(lossy);
    }
    std::cout << succeeded << " of 1000 reads succeeded, " << reopened << " ended in time-outs\n";
    cameras.setFaults(camsim::FaultConfig());
}

TEST_F(ChannelToCamera, ThreadsShareOneChannel) {
    start();
    ASSERT_EQ(open(GEV_CONTROL_ACCESS, 500), 0u);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < 4; ++t) {
        threads.emplace_back([this, t, &failures] {
            for (std::uint32_t i = 0; i < 500; ++i) {
                const std::uint32_t address = 0x20000 + 4 * t;
                std::uint32_t value = 0;
                if (write(address, i) != 0 || read(address, &value) != 0 || value != i)
                    ++failures;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
}

} // namespace
