#include "ControlChannelXaction.h"
#include "ScriptedChannel.h"
#include "gxapi/Trace.h"
#include "support/Leaks.h"
#include "support/TraceLog.h"

#include <cerrno>
#include <chrono>
#include <thread>

using Gx::ControlChannel;

namespace {

TEST(Channels, FailedCreateLeavesNothingBehind) {
    const auto denied = [](const Bytes &request) { return acknowledge(request, 0x8006, 0x0083, {}); };
    const auto silent = [](const Bytes &) { return Bytes(); };
    const auto onlyGrants = [](const Bytes &request) {
        return command(request) == TAG_WRITEREG_CMD ? Device().answer(request) : Bytes();
    };
    const auto garbles = [](const Bytes &request) {
        return command(request) == TAG_WRITEREG_CMD ? Device().answer(request) : acknowledge(request, 0, 0x7FFF, {});
    };
    const struct {
        std::function<Bytes(const Bytes &)> answer;
        std::uint32_t heartbeat_ms;
        sa_family_t family;
        GXSTATUS status;
        int releases;
        const char *trace;
    } cases[] = {
        {denied, 3000, AF_INET, 0xE1018006, 0, "Failed to gain access priviledges 0x00000002. 0xE1018006."},
        {silent, 499, AF_INET, 0xE1000018, 0, "Attempt to set too small heartbeat timeout of 499 ms."},
        {silent, 500, AF_INET6, 0xE1000009, 0, "Failed to open control channel. 0xE1000009."},
        // Granted, perhaps: at the loss and at the end it is given back.
        {silent, 500, AF_INET, 0xE101800B, 2, "Failed to gain access priviledges 0x00000002. 0xE101800B."},
        // When the heartbeat already runs.
        {onlyGrants, 3000, AF_INET, 0xE101800B, 2, "Failed to read device mode register. 0xE101800B."},
        {garbles, 3000, AF_INET, 0xE100000B, 1, "Failed to read device mode register. 0xE100000B."},
    };
    std::thread([] {}).join(); // a sanitizer starts a thread of its own with the first one
    for (const auto &row : cases) {
        int releases = 0;
        ScriptedNetwork network([&](const Bytes &request) {
            releases += isRelease(request) ? 1 : 0;
            if (const Bytes answer = row.answer(request); !answer.empty())
                network.answer(answer);
            return 0;
        });
        TraceLog traces;
        const Holdings before = Holdings::now();
        auto *channel = reinterpret_cast<ControlChannel *>(&releases); // to see it cleared
        EXPECT_EQ(ControlChannel::Create(SocketAddress("127.0.0.1", 0, row.family), GEV_CONTROL_ACCESS,
                                         row.heartbeat_ms, &channel),
                  row.status);
        EXPECT_EQ(channel, nullptr);
        EXPECT_TRUE(eventually([&] { return Holdings::now() == before; })) << row.trace;
        EXPECT_EQ(releases, row.releases) << row.trace;
        EXPECT_TRUE(traces.contains(row.trace)) << traces.all();
    }
}

/// A device that hears and says nothing from now on for a while, and may be held meanwhile.
class Outage {
public:
    explicit Outage(std::uint32_t length_ms = 60000) { end_ms = channel.network.now_ms() + length_ms; }

    std::uint64_t end_ms = 0;
    std::atomic<bool> held{true};
    std::atomic<bool> destroyed{false};

    ScriptedChannel channel{[this](const Bytes &request, std::size_t) {
                                if (channel.network.now_ms() < end_ms)
                                    return Answers{};
                                held = held && !isRelease(request);
                                return good(request);
                            },
                            Device(), GEV_CONTROL_ACCESS, 12000};

    void destroyWhenLost() {
        channel.onLost = [this] {
            channel.destroy();
            destroyed = true;
        };
    }
};

TEST(Loss, ADeviceIsNotHeldAfterAnOutageWhileWriting) {
    for (const std::uint32_t length_ms : {650u, 1000u, 2000u, 3300u}) {
        for (const bool stays : {false, true}) {
            Outage outage(length_ms);
            EXPECT_EQ(outage.channel.write(), 0xE101800Bu);
            EXPECT_TRUE(isRelease(outage.channel.requests().at(3))) << "at once";
            if (!stays)
                outage.channel.destroy();
            EXPECT_TRUE(eventually([&] { return !outage.held; })) << length_ms;
            EXPECT_LT(outage.channel.times_ms().back(), outage.end_ms + 250);
        }
    }
}

TEST(Loss, ADeviceIsToldTwiceWithoutThreads) {
    Outage outage(1000);
    outage.channel.network.refusesThreads = true;
    EXPECT_EQ(outage.channel.write(), 0xE101800Bu);
    EXPECT_TRUE(isRelease(outage.channel.requests().back()));
    EXPECT_TRUE(outage.held);
    outage.channel.network.advance(500);
    outage.channel.destroy();
    EXPECT_FALSE(outage.held);
    EXPECT_EQ(outage.channel.requests().size(), 5u);
}

TEST(Loss, ADeviceThatDeniesAnAccessIsNotKept) {
    ScriptedChannel channel(
        [](const Bytes &request, std::size_t) { return Answers{acknowledge(request, 0x8006, 0x0081, {})}; }, Device(),
        GEV_CONTROL_ACCESS);
    EXPECT_EQ(channel.read(), 0xE1018006u);
    EXPECT_EQ(channel.read(), 0xE1000016u); // nothing more is asked of it
    channel.destroy();
    ASSERT_EQ(channel.requests().size(), 2u);
    EXPECT_TRUE(isRelease(channel.requests().back()));
}

TEST(Loss, IsToldOnceWhoeverFindsItAndWithoutThreadsToo) {
    for (int row = 0; row < 8; ++row) {
        const bool hasThreads = (row & 1) != 0;
        const bool byHeartbeat = (row & 2) != 0; // else by the caller
        const bool destroys = (row & 4) != 0;
        Outage outage;
        ScriptedChannel &channel = outage.channel;
        if (destroys) {
            channel.onLost = [&] { // the last reference drops on the callback's thread
                EXPECT_EQ(outage.channel.write(), 0xE1000016u);
                channel.destroy();
            };
        }
        channel.network.refusesThreads = !hasThreads;
        if (byHeartbeat)
            channel.network.advance(4000);
        else
            EXPECT_EQ(channel.read(), 0xE101800Bu);
        EXPECT_TRUE(eventually([&] { return channel.lost == 1; })) << row;
    }
}

TEST(Loss, ACallbackThatDestroysWaitsForWhoFoundIt) {
    Outage outage;
    outage.destroyWhenLost();
    std::unique_ptr<GxImp::CControlChannel::CReadRegXaction> xaction;
    const std::uint32_t address = 0x1000;
    auto *library = static_cast<GxImp::CControlChannel *>(outage.channel.operator->());
    ASSERT_EQ(library->ReadRegBegin(&address, &outage.channel.value, 1, &xaction), 0u);
    EXPECT_EQ(xaction->Complete(), 0xE101800Bu);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(outage.destroyed);
    xaction.reset();
    EXPECT_TRUE(eventually([&] { return outage.destroyed.load(); }));
}

TEST(Loss, ACallbackThatDestroysWaitsForAChangeOfTheHeartbeat) {
    Outage outage;
    outage.destroyWhenLost();
    // Holds the change up where it is about to return.
    const auto sink = [](void *isDestroyed, std::uint32_t, std::uint32_t, const char *text) {
        if (std::string(text).find("timout register") == std::string::npos)
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        EXPECT_FALSE(*static_cast<std::atomic<bool> *>(isDestroyed));
    };
    Gx::Trace::SetSink(sink, &outage.destroyed, Gx::Trace::FlagAll, Gx::Trace::LevelError);
    EXPECT_EQ(outage.channel->SetHeartbeatTimeout(20000), 0xE101800Bu);
    Gx::Trace::SetSink(nullptr, nullptr, 0, 0);
    EXPECT_TRUE(eventually([&] { return outage.destroyed.load(); }));
}

TEST(Loss, IsNotToldAfterTheCallbackIsUnregistered) {
    for (const bool hasThreads : {true, false}) {
        for (const bool isRegistered : {true, false}) {
            Outage outage;
            outage.channel.network.refusesThreads = !hasThreads;
            outage.channel.onLost = [isRegistered] { EXPECT_TRUE(isRegistered); };
            isRegistered ? outage.channel.destroyRegistered() : outage.channel.destroy(); // which finds the loss
            EXPECT_TRUE(eventually([&] { return !isRegistered || outage.channel.lost == 1; }));
        }
    }
}

TEST(Channels, OutliveFailedSends) {
    ScriptedChannel channel([&](const Bytes &request, std::size_t number) {
        channel.sendError = number == 0 ? ENETUNREACH : 0; // the request cannot be sent again
        return number == 0 ? Answers{} : good(request);
    });
    EXPECT_EQ(channel.read(), 0xE1020000u | ENETUNREACH);
    EXPECT_EQ(channel.read(), 0xE1020000u | ENETUNREACH);
    channel.sendError = 0;
    EXPECT_EQ(channel.read(), 0u);
    EXPECT_EQ(channel.requests().size(), 2u);
    EXPECT_EQ(channel.lost, 0);
}

TEST(Channels, StreamAndMessageChannelRegisters) {
    const struct {
        std::uint32_t capabilities;
        GXSTATUS status; // of opening a message channel
    } cases[] = {{0, 0xE100001A}, {GEV_CAPABILITY_EVENT, 0}, {GEV_CAPABILITY_EVENTDATA, 0}};
    for (const auto &row : cases) {
        ScriptedChannel channel(good, Device{0, GEV_CAPABILITY_CONCATENATION | row.capabilities});
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

TEST(Channels, AreSharedByThreads) {
    ScriptedChannel channel(good); // a register reads as its address
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (std::uint32_t address = 0x20000; address < 0x20010; address += 4) {
        threads.emplace_back([&, address] {
            for (int i = 0; i < 1000; ++i) {
                std::uint32_t value = 0;
                if (channel->ReadReg(&address, &value, 1) != 0 || value != address)
                    ++failures;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
}

} // namespace
