// The simulator on plain loopback: sockets, thread and faults.
#include "GxSocket.h"
#include "camsim/Scene.h"
#include "camsim/Simulator.h"
#include "support/WireText.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <set>

using namespace camsim;
using namespace std::chrono_literals;

namespace {

using Bytes = std::vector<std::uint8_t>;

const char readHeartbeat[] = "42 01 0080 0004 0102 00000938";
const char readHeartbeatAck[] = "00 00 00 81 00 04 01 02 00 00 0B B8";

/// A UDP socket of an application at 127.0.0.1.
class Application {
public:
    Application() {
        const int on = 1;
        EXPECT_EQ(socket_.Open(GxImp::MakeAddress(htonl(INADDR_LOOPBACK), 0)), 0u);
        EXPECT_EQ(socket_.SetOpt(SOL_SOCKET, SO_BROADCAST, &on, sizeof on), 0u);
    }

    void send(const std::string &hex, const char *to, std::uint16_t port) {
        const Bytes datagram = wire::bytes(hex);
        EXPECT_EQ(socket_.SendTo(datagram.data(), datagram.size(), GxImp::MakeAddress(inet_addr(to), port)), 0u);
    }

    /// The datagrams that come until `count` are there or for `patience` none came.
    std::vector<Bytes> receive(std::size_t count, std::uint32_t patience_ms) {
        std::vector<Bytes> datagrams;
        Bytes buffer(2048);
        std::size_t size = 0;
        while (datagrams.size() < count && socket_.Recv(buffer.data(), buffer.size(), patience_ms, &size) == 0)
            datagrams.emplace_back(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(size));
        return datagrams;
    }

private:
    GxImp::CSocket socket_;
};

MacAddress macOf(unsigned number) { return MacAddress::fromNumber(0x025AE3000000 + number); }

CameraConfig cameraAt(unsigned number, const std::string &address) {
    CameraConfig config = parseCameras("ip=" + address + "/8,enabled=persistent,silence=20,xml=none")[0];
    config.mac = macOf(number);
    return config;
}

SimulatorOptions loopback(std::uint64_t seed = 1) { return {"lo", AddressMode::Unmanaged, 0, -1, seed}; }

/// Returns when the simulator has handled what was sent to it before: loopback queues datagrams at once, and of two
/// calls the second one comes after the thread has looked at its socket.
void settle(const Simulator &simulator) {
    (void)simulator.counters();
    (void)simulator.counters();
}

class RunningSimulator : public testing::Test {
protected:
    void SetUp() override {
        simulator.addCamera(cameraAt(1, "127.0.0.10"));
        simulator.addCamera(cameraAt(2, "127.0.0.11"));
        simulator.start();
    }

    /// Everything that comes at once for a datagram.
    std::vector<Bytes> exchange(const std::string &hex, const char *to) {
        application.send(hex, to, simulator.port());
        settle(simulator);
        return application.receive(100, 1);
    }
    std::vector<Bytes> read(const char *from = "127.0.0.10") { return exchange(readHeartbeat, from); }
    std::vector<Bytes> discover() { return exchange(wire::discovery, "127.255.255.255"); }

    Simulator simulator{loopback()};
    Application application;
};

TEST_F(RunningSimulator, ServesEachCameraAtItsAddressAndAllByBroadcast) {
    std::multiset<std::uint8_t> hosts;
    for (const Bytes &ack : discover())
        hosts.insert(ack.at(8 + 39));
    EXPECT_EQ(hosts, (std::multiset<std::uint8_t>{10, 11}));

    simulator.clearRequests();
    const auto reads = read("127.0.0.11");
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(wire::text(reads[0]), readHeartbeatAck);
    EXPECT_EQ(simulator.status(macOf(2)).requests.at(TAG_READREG_CMD), 1u);
    EXPECT_EQ(simulator.status(macOf(1)).requests.count(TAG_READREG_CMD), 0u);
    const auto requests = simulator.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].bytes, wire::bytes(readHeartbeat));
    EXPECT_EQ(requests[0].requestId(), 0x0102);
    EXPECT_TRUE(read("127.0.0.12").empty());
}

TEST_F(RunningSimulator, ChangesAreEffectiveWhenTheCallReturns) {
    simulator.setReachable(macOf(1), false);
    EXPECT_TRUE(read().empty());
    simulator.removeCamera(macOf(2));
    EXPECT_EQ(discover().size(), 1u);
    EXPECT_THROW(simulator.status(macOf(2)), std::out_of_range);
    EXPECT_THROW(simulator.addCamera(cameraAt(1, "127.0.0.13")), std::invalid_argument);
    simulator.addCamera(cameraAt(3, "127.0.0.13"));
    simulator.setHolder(macOf(3), Holder{{Ipv4::parse("127.0.0.9"), 9}, GEV_EXCLUSIVE_CONTROL_ACCESS});
    EXPECT_EQ(wire::text(read("127.0.0.13").at(0)), "80 06 00 81 00 00 01 02");
    simulator.powerCycle(macOf(3));
    EXPECT_FALSE(simulator.status(macOf(3)).current);
    EXPECT_THROW(simulator.readRegister(macOf(3), 0x9000), std::out_of_range);
}

TEST_F(RunningSimulator, FaultsHappenAsSet) {
    const std::string ack = readHeartbeatAck;
    const struct {
        const char *faults;
        std::vector<std::string> acks; ///< "*" for any bytes
        bool executed;
    } cases[] = {
        {"loss-to-camera=100", {}, false},
        {"loss-from-camera=100", {}, true},
        {"wrong-id=100", {"00 00 00 81 00 04 01 03 00 00 0B B8"}, true},
        {"wrong-code=100", {"00 00 7F FF 00 04 01 02 00 00 0B B8"}, true},
        {"stale-id=100", {"00 00 00 81 00 04 01 01 00 00 0B B8", ack}, true},
        {"garbage=100", {"*", ack}, true},
        {"duplicate=100", {ack, ack}, true},
        {"loss-from-camera=100,commands=discovery", {ack}, true},
        {"loss-from-camera=100,limit=0", {ack}, true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.faults);
        simulator.setFaults(macOf(1), parseFaults(c.faults));
        const auto executed = simulator.status(macOf(1)).acknowledges;
        const auto acks = read();
        ASSERT_EQ(acks.size(), c.acks.size());
        for (std::size_t i = 0; i < acks.size(); ++i)
            EXPECT_TRUE(c.acks[i] == "*" || c.acks[i] == wire::text(acks[i])) << wire::text(acks[i]);
        EXPECT_EQ(simulator.status(macOf(1)).acknowledges - executed, c.executed ? 1u : 0u);
    }
}

TEST_F(RunningSimulator, FaultsOfLengthTimeAndOrder) {
    simulator.setFaults(parseFaults("short=100"));
    EXPECT_LT(read().at(0).size(), 12u);
    simulator.setFaults(parseFaults("long=100"));
    const Bytes oversized = read().at(0);
    EXPECT_GT(oversized.size(), 12u);
    EXPECT_EQ(wire::text({oversized.begin(), oversized.begin() + 12}), readHeartbeatAck);
    simulator.setFaults(parseFaults("delay=60"));
    const auto start = std::chrono::steady_clock::now();
    application.send(readHeartbeat, "127.0.0.10", simulator.port());
    EXPECT_EQ(application.receive(1, 2000).size(), 1u);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 60ms);
    simulator.setFaults({});
    simulator.setFaults(macOf(1), parseFaults("reorder=100"));
    const auto acks = discover(); // camera 2 answers after camera 1
    ASSERT_EQ(acks.size(), 2u);
    EXPECT_EQ(acks[0].at(8 + 39), 11);
    application.send(readHeartbeat, "127.0.0.10", simulator.port());
    EXPECT_EQ(application.receive(1, 2000).size(), 1u); // nothing follows: it comes late, but comes
    EXPECT_GT(simulator.counters().faults, 3u);
    FaultConfig impossible;
    impossible.wrongId = 101;
    EXPECT_THROW(simulator.setFaults(impossible), std::invalid_argument);
}

TEST(SimulatorFaults, TheSeedRepeatsThem) {
    const auto survivors = [](std::uint64_t seed) {
        Simulator simulator(loopback(seed));
        simulator.addCamera(cameraAt(1, "127.0.0.10"));
        simulator.setFaults(parseFaults("loss-from-camera=50"));
        simulator.start();
        Application application;
        for (int id = 10; id < 74; ++id)
            application.send("42 01 0080 0004 00" + std::to_string(id) + "00000938", "127.0.0.10", simulator.port());
        settle(simulator);
        settle(simulator);
        std::vector<int> ids;
        for (const Bytes &ack : application.receive(64, 1))
            ids.push_back(ack.at(7));
        return ids;
    };
    const auto first = survivors(7);
    EXPECT_GT(first.size(), 10u);
    EXPECT_LT(first.size(), 54u);
    EXPECT_EQ(survivors(7), first);
    EXPECT_NE(survivors(8), first);
    EXPECT_NE(Simulator(loopback(0)).seed(), Simulator(loopback(0)).seed());
}

TEST(SimulatorLife, StopsAndStartsAgain) {
    Simulator simulator(loopback());
    simulator.addCameras({cameraAt(1, "127.0.0.10"), cameraAt(2, "127.0.0.11")});
    Application application;
    for (int round = 0; round < 2; ++round) {
        simulator.start();
        application.send(wire::discovery, "127.0.0.10", simulator.port());
        EXPECT_EQ(application.receive(1, 2000).size(), 1u);
        simulator.stop();
        simulator.stop();
    }
    EXPECT_EQ(simulator.status(macOf(1)).requests.at(TAG_DISCOVERY_CMD), 2u); // readable after the end
}

TEST(SimulatorLife, FailsToStartWithAReason) {
    Simulator first(loopback());
    first.start();
    EXPECT_THROW(first.start(), std::logic_error);

    const int noNamespace = open("/dev/null", O_RDONLY | O_CLOEXEC);
    for (const SimulatorOptions &options : {SimulatorOptions{"no-such-interface", AddressMode::Unmanaged, 0},
                                            {"lo", AddressMode::Unmanaged, first.port()},
                                            {"lo", AddressMode::Unmanaged, 0, noNamespace}}) {
        Simulator failing(options);
        EXPECT_THROW(failing.start(), std::runtime_error);
        EXPECT_FALSE(failing.running());
    }
    close(noNamespace);
    EXPECT_THROW(Simulator({"lo", AddressMode::Managed, 0}), std::invalid_argument);
}

} // namespace
