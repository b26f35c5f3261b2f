#include "Found.h"
#include "support/Leaks.h"
#include "support/Site.h"
#include "support/SocketAddress.h"
#include "support/TraceLog.h"

#include <algorithm>
#include <gmock/gmock.h>

using Gx::Enumerator;
using testing::ElementsAre;
using namespace testnet;

namespace {

/// Two adapters, each with a camera of its subnet and one of a foreign subnet.
class TwoAdapters : public testing::Test {
protected:
    Site first{"nic0", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24"), cameraAt(2, "169.254.7.7/16")}};
    Site second{"nic1", "10.0.0.7/8", {cameraAt(3, "10.9.8.7/8"), cameraAt(4, "172.16.0.9/16")}};

    const std::string near1 = "1 192.168.1.20 192.168.1.20 192.168.1.5";
    const std::string foreign2 = "2 169.254.7.7 169.254.7.7 192.168.1.5";
    const std::string near3 = "3 10.9.8.7 10.9.8.7 10.0.0.7";
    const std::string foreign4 = "4 172.16.0.9 172.16.0.9 10.0.0.7";
};

TEST_F(TwoAdapters, BroadcastAcknowledgeFindsForeignSubnetsOnTheRightAdapter) {
    EXPECT_THAT(discover(Enumerator::FlagDefault), ElementsAre(near1, near3));
    const auto plain = second.cameras.requests();
    ASSERT_EQ(plain.size(), 1u);
    EXPECT_EQ(plain[0].destination.toString(), "10.255.255.255");
    EXPECT_EQ(plain[0].bytes[1], 0x01);
    for (Site *site : {&first, &second})
        site->cameras.clearRequests();

    const Holdings before = Holdings::now();
    EXPECT_THAT(discover(Enumerator::FlagBroadcastAcknowledge), ElementsAre(near1, foreign2, near3, foreign4));
    EXPECT_EQ(Holdings::now(), before);
    const auto requests = second.cameras.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].destination.toString(), "255.255.255.255");
    EXPECT_EQ(requests[0].bytes[1], 0x19);
    // All adapters answer to one host port.
    EXPECT_EQ(requests[0].source.port, first.cameras.requests().at(0).source.port);

    // With a default route, the kernel's preferred source address for a foreign sender is that route's adapter.
    ip("route add default via 192.168.1.1 dev nic0");
    EXPECT_THAT(discover(Enumerator::FlagBroadcastAcknowledge), ElementsAre(near1, foreign2, near3, foreign4));
}

TEST_F(TwoAdapters, AdapterWithSeveralAddressesIsReportedByTheFittingOne) {
    ip("address add 172.16.0.1/16 brd + dev nic1");
    ip("address add 10.0.0.8/8 brd + dev nic1");
    // Each address has a socket of its own and gets its own answer by unicast; what answers by broadcast is heard once
    // for each of the three requests.
    auto found = discover(Enumerator::FlagBroadcastAcknowledge);
    EXPECT_EQ(std::count(found.begin(), found.end(), "4 172.16.0.9 172.16.0.9 172.16.0.1"), 3);
    ip("route delete 172.16.0.0/16 dev nic1"); // then the kernel prefers that of the default route
    ip("route add default via 192.168.1.1 dev nic0");
    found = discover(Enumerator::FlagBroadcastAcknowledge);
    EXPECT_EQ(std::count(found.begin(), found.end(), "4 172.16.0.9 172.16.0.9 172.16.0.1"), 3);
    EXPECT_EQ(std::count(found.begin(), found.end(), near1), 1);
    EXPECT_EQ(std::count(found.begin(), found.end(), "3 10.9.8.7 10.9.8.7 172.16.0.1"), 0);
}

TEST_F(TwoAdapters, UnicastAsksOneDevice) {
    FoundList list;
    const auto ask = [&](const char *address, std::uint32_t flags, sa_family_t family = AF_INET) {
        list.list.clear();
        return Enumerator::Discover(&list, Timeout_ms, flags, SocketAddress(address, 0, family));
    };
    for (const std::uint32_t flags : {Enumerator::FlagDefault, Enumerator::FlagBroadcastAcknowledge}) {
        EXPECT_EQ(ask("192.168.1.20", flags), 0u);
        EXPECT_THAT(list.list, ElementsAre(near1));
    }
    EXPECT_EQ(ask("169.254.7.7", 0), 0xE1020000u | ENETUNREACH);
    EXPECT_EQ(ask("192.168.1.20", 0, AF_INET6), 0xE1000009u);

    // Over a route of the user's the camera is found, with the adapter it is behind.
    ip("route add 169.254.0.0/16 dev nic0");
    first.adapter.cameraSide().ip("route add 192.168.1.5/32 dev cam src 169.254.7.7");
    EXPECT_EQ(ask("169.254.7.7", Enumerator::FlagBroadcastAcknowledge), 0u);
    EXPECT_THAT(list.list, ElementsAre(foreign2));
}

TEST(Unicast, HearsACameraThatAnswersByBroadcast) {
    const ScriptedSite site("nic0", "192.168.1.5/24", "192.168.1.20/24", [](const Bytes &request, std::size_t) {
        return std::vector<Bytes>{acknowledge(request, 0, 0x0003, Bytes(sizeof(GEV_DISCOVERY_INFO)))};
    });
    site.adapter.cameraSide().ip("route add 255.255.255.255/32 dev cam");
    site.peer->answerByBroadcast();
    for (const std::uint32_t flags : {Enumerator::FlagDefault, Enumerator::FlagBroadcastAcknowledge}) {
        FoundList found;
        EXPECT_EQ(Enumerator::Discover(&found, Timeout_ms, flags, SocketAddress("192.168.1.20")), 0u);
        EXPECT_THAT(found.list, ElementsAre(" 0.0.0.0 192.168.1.20 192.168.1.5"));
    }
}

TEST_F(TwoAdapters, FailedSendLeavesTheOtherAdapter) {
    const auto breakRoutes = [](const std::string &adapter, const std::string &broadcast, const std::string &subnet) {
        ip("route delete broadcast " + broadcast + " dev " + adapter + " table local");
        ip("route delete " + subnet + " dev " + adapter);
    };
    TraceLog traces;
    breakRoutes("nic0", "192.168.1.255", "192.168.1.0/24");
    EXPECT_THAT(discover(Enumerator::FlagDefault), ElementsAre(near3));
    EXPECT_TRUE(traces.contains("Error sending broadcast, Status 0xe1020065.")) << traces.all();
    breakRoutes("nic1", "10.255.255.255", "10.0.0.0/8");
    EXPECT_EQ(Enumerator::Discover(nullptr, 10, Enumerator::FlagDefault, nullptr), 0x21000001u);
}

TEST(Adapters, UnusableOnesAreLeftOut) {
    TraceLog traces;
    FoundList found;
    Site down("nic2", "10.2.0.1/24", {cameraAt(3, "10.2.0.9/24")});
    ip("link set nic2 down");
    EXPECT_TRUE(GxFailed(Enumerator::Discover(&found, 10, Enumerator::FlagDefault, nullptr))); // else only loopback
    EXPECT_TRUE(traces.contains("Failed create socket collection"));
    EXPECT_EQ(Enumerator::Discover(&found, 10, Enumerator::FlagBroadcastAcknowledge, nullptr), 0xE1020000u | ENODEV);

    Site noAddress("nic0", "", {cameraAt(1, "192.168.1.20/24")});
    Site noBroadcast("nic1", "", {cameraAt(2, "10.0.0.9/24")});
    ip("address add 10.0.0.1/24 dev nic1"); // without brd
    const std::string near = "2 10.0.0.9 10.0.0.9 10.0.0.1";
    EXPECT_THAT(discover(Enumerator::FlagDefault), ElementsAre(near));
    EXPECT_THAT(discover(Enumerator::FlagBroadcastAcknowledge), ElementsAre(near));
    EXPECT_EQ(noBroadcast.cameras.requests().at(0).destination.toString(), "10.0.0.255");
}

TEST(Gateway, CameraReachesForeignSubnetsAgainAfterAnIpCycle) {
    Site site("nic0", "10.0.0.5/8", {cameraAt(1, "192.168.1.20/24 via 192.168.1.1", ",broadcast-ack=never")});
    ip("address add 192.168.1.1/32 dev nic0"); // the gateway's; no broadcasts from it
    const std::string overGateway = "1 192.168.1.20 192.168.1.20 10.0.0.5";
    EXPECT_THAT(discover(Enumerator::FlagBroadcastAcknowledge), testing::Contains(overGateway));
    site.cameras.powerCycle(camera(1).mac);
    EXPECT_TRUE(eventually([&] { return !site.addressOf(1).empty(); }));
    // Without a route the kernel would look for the host on the link.
    site.adapter.cameraSide().ip("neighbour replace 10.0.0.5 lladdr 02:00:00:00:00:01 dev cam");
    EXPECT_THAT(discover(Enumerator::FlagBroadcastAcknowledge), testing::Contains(overGateway));
    ip("route add 192.168.1.0/24 dev nic0 src 10.0.0.5");
    FoundList asked;
    EXPECT_EQ(Enumerator::Discover(&asked, Timeout_ms, Enumerator::FlagDefault, SocketAddress("192.168.1.20")), 0u);
    EXPECT_THAT(asked.list, ElementsAre(overGateway));
}

} // namespace
