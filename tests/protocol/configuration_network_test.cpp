#include "Found.h"
#include "gxapi/ForceIp.h"
#include "gxapi/SetIpConfiguration.h"
#include "support/Leaks.h"
#include "support/Site.h"
#include "support/SocketAddress.h"
#include "support/TraceLog.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>

using namespace testnet;
using camsim::CameraConfig;
using Clock = std::chrono::steady_clock;

namespace {

GXSTATUS force(const camsim::MacAddress &mac, const char *ip) {
    return Gx::ForceIp(mac.octets.data(), SocketAddress(ip), SocketAddress("255.255.255.0"), SocketAddress("0.0.0.0"),
                       0);
}

GXSTATUS configure(const camsim::MacAddress &mac, const char *name, bool broadcastAck, std::uint32_t timeout_ms) {
    GEV_IP_CONFIG modes{};
    modes.PersistentIP = 1;
    modes.LLA = 1;
    return Gx::SetIpConfiguration(mac.octets.data(), modes, SocketAddress("10.0.0.60"), SocketAddress("255.255.255.0"),
                                  nullptr, name, broadcastAck, timeout_ms);
}

/// Runs a function and returns how long it took in ms.
template <typename Function> long timed(Function function) {
    const auto start = Clock::now();
    function();
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

/// A camera in a foreign subnet behind the second of two adapters.
class Configuration : public testing::Test {
protected:
    void startWith(const std::string &address, const std::string &settings = "") {
        second.emplace("nic1", "10.0.0.7/24", std::vector<CameraConfig>{cameraAt(2, address, settings)});
    }
    Site first{"nic0", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24")}};
    std::optional<Site> second;
    const camsim::MacAddress mac = camera(2).mac;
};

TEST_F(Configuration, ForceIpMovesTheDeviceWithTheMac) {
    startWith("172.16.0.9/16");
    const Holdings before = Holdings::now();
    const long elapsed = timed([&] { EXPECT_EQ(force(mac, "10.0.0.50"), 0u); });
    EXPECT_LT(elapsed, 2500); // the acknowledge ends the wait
    EXPECT_EQ(Holdings::now(), before);
    EXPECT_EQ(second->addressOf(2), "10.0.0.50");
    EXPECT_EQ(first.addressOf(1), "192.168.1.20");

    // Sent on both adapters, to the limited broadcast address.
    const auto there = second->cameras.requests();
    EXPECT_TRUE(there.at(0).isBroadcast());
    EXPECT_EQ(first.cameras.requests().at(0).bytes, there[0].bytes);
}

TEST_F(Configuration, ForceIpThatNobodyGrantsTimesOut) {
    startWith("10.0.0.9/24", ",held-by=10.0.0.200:5555");
    TraceLog traces;
    auto nobody = std::async(std::launch::async, [] { return force(camera(99).mac, "10.0.0.51"); });
    const long elapsed = timed([&] { EXPECT_EQ(force(mac, "10.0.0.50"), 0xE1000007u); });
    EXPECT_GE(elapsed, 3000);
    EXPECT_EQ(nobody.get(), 0xE1000007u);
    EXPECT_EQ(second->addressOf(2), "10.0.0.9");
    // Refused, not unanswered: the refusal is seen and the wait goes on.
    EXPECT_TRUE(traces.contains("Interface 1 OnReady() returned 0xe1018006.")) << traces.all();
    EXPECT_TRUE(traces.contains("Failed to collect force IP responses. Status 0xe1000007"));
}

TEST_F(Configuration, ForceIpToZeroRestartsTheIpCycleWithoutWaiting) {
    startWith("10.0.0.9/24", ",forced=10.0.0.50/24");
    EXPECT_EQ(second->addressOf(2), "10.0.0.50");
    const long elapsed = timed([&] { EXPECT_EQ(force(mac, "0.0.0.0"), 0u); });
    EXPECT_GE(elapsed, 20); // a pause after each adapter
    EXPECT_LT(elapsed, 1000);
    EXPECT_TRUE(eventually([&] { return second->addressOf(2) == "10.0.0.9"; }));
}

TEST_F(Configuration, OnlyIPv4) {
    const SocketAddress v6("10.0.0.50", 0, AF_INET6);
    const SocketAddress v4("10.0.0.50");
    const auto *to = mac.octets.data();
    for (int bad = 0; bad < 3; ++bad) {
        const auto at = [&](int i) -> const sockaddr * { return i == bad ? v6 : v4; };
        TraceLog traces;
        EXPECT_EQ(Gx::ForceIp(to, at(0), at(1), at(2), 0), 0xE1000009u) << bad;
        EXPECT_EQ(Gx::SetIpConfiguration(to, {}, at(0), at(1), at(2), nullptr, true, 10), 0xE1000009u) << bad;
        EXPECT_EQ(traces.contains("Only IPv4 addressing supported.\n"), bad == 0);
    }
    EXPECT_EQ(Gx::ForceIp(nullptr, v4, v4, v4, 0), 0xE1000006u);
}

TEST_F(Configuration, VendorCommandReachesAForeignSubnetAndLasts) {
    startWith("172.16.0.9/16");
    const long elapsed = timed([&] { EXPECT_EQ(configure(mac, "Left\0\0\0\0\0\0\0\0\0\0\0\0", true, 3000), 0u); });
    EXPECT_LT(elapsed, 2500);
    second->cameras.powerCycle(mac);
    EXPECT_TRUE(eventually([&] { return second->addressOf(2) == "10.0.0.60"; }));
    EXPECT_EQ(second->cameras.status(mac).userName, "Left");
}

TEST_F(Configuration, VendorCommandFailures) {
    const struct {
        const char *settings;
        GXSTATUS status;
        bool waits;
        const char *trace;
    } cases[] = {
        {",vendor-config=not-implemented", 0xE1000007, true, "Camera command Set IP Configuration not implemented"},
        {",vendor-config=error", 0xE1000013, false, "Interface 0 OnReady() returned 0xe1000013."},
        {",vendor-config=silent", 0xE1000007, true, "No responses - collection timed out"},
    };
    for (const auto &row : cases) {
        startWith("172.16.0.9/16", row.settings);
        TraceLog traces;
        const long elapsed = timed([&] { EXPECT_EQ(configure(mac, nullptr, true, 400), row.status) << row.trace; });
        EXPECT_EQ(elapsed >= 400, row.waits) << row.trace;
        EXPECT_TRUE(traces.contains(row.trace)) << traces.all();
        EXPECT_EQ(second->cameras.status(mac).persistent.address.toString(), "172.16.0.9");
    }
}

TEST(Acknowledges, FromOutsideTheSubnetCountOnlyWhenSentByBroadcastIsAllowed) {
    // By its wider mask the camera takes the host for a neighbour and answers by unicast.
    Site site("nic0", "192.168.1.133/25", {cameraAt(1, "192.168.1.20/24")});
    for (const bool broadcastAck : {false, true}) {
        site.cameras.clearRequests();
        TraceLog traces;
        EXPECT_EQ(discover(broadcastAck).size(), broadcastAck ? 1u : 0u);
        EXPECT_EQ(traces.contains("\t==>dropped"), !broadcastAck) << traces.all();
        TraceLog configuring;
        EXPECT_EQ(configure(camera(1).mac, nullptr, broadcastAck, 200), broadcastAck ? 0u : 0xE1000007u);
        EXPECT_EQ(configuring.contains("\t==>dropped"), !broadcastAck) << configuring.all();
        EXPECT_EQ(site.cameras.requests().at(1).bytes[1], broadcastAck ? 0x11 : 0x01);
    }
}

TEST(Acknowledges, MalformedOnesAreIgnored) {
    ScriptedSite site("nic0", "192.168.1.5/24", "192.168.1.20/24", [](const Bytes &request, std::size_t) {
        const auto code = static_cast<std::uint16_t>((request[2] << 8 | request[3]) + 1);
        const Bytes payload(code == TAG_DISCOVERY_ACK ? 248 : 0);
        Bytes cut = acknowledge(request, 0, code, payload);
        cut.pop_back();
        const std::uint16_t status = code == TAG_DISCOVERY_ACK ? 0x8003 : 0; // of no interest there, as the id is
        return std::vector<Bytes>{
            {}, cut, acknowledge(request, 0, 0x7FFF, payload), acknowledge(request, status, code, payload, 1)};
    });
    const struct {
        std::function<std::size_t()> call;
        std::size_t result;
        std::vector<const char *> traces;
    } cases[] = {
        {[] { return discover(0).size(); },
         1,
         {"Invalid discover response size received 255", "Unexpected response during device discovering 0x7fff"}},
        {[] { return force(camera(1).mac, "192.168.1.21"); },
         0,
         {"Invalid force IP response size received 7", "Interface 0 OnReady() returned 0xe100000c.",
          "Unexpected response on force IP 0x7fff", "Interface 0 OnReady() returned 0xe100000b."}},
        {[] { return configure(camera(1).mac, nullptr, false, 3000); },
         0,
         {"Invalid set IP configuration response size received 7",
          "Unexpected response during set IP configuration 0x7fff"}},
    };
    for (const auto &row : cases) {
        TraceLog traces;
        EXPECT_EQ(row.call(), row.result);
        EXPECT_TRUE(traces.contains("Interface 0 OnReady() returned 0xe1000013.")) << traces.all(); // empty
        for (const char *trace : row.traces)
            EXPECT_TRUE(traces.contains(trace)) << trace << "\n" << traces.all();
    }
}

} // namespace
