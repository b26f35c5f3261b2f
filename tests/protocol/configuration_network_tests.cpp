#include "gxapi/ForceIp.h"
#include "gxapi/SetIpConfiguration.h"
#include "support/Leaks.h"
#include "support/Site.h"
#include "support/SocketAddress.h"

#include <gtest/gtest.h>
#include <optional>

using namespace testnet;
using camsim::CameraConfig;

namespace {

GXSTATUS force(const camsim::MacAddress &mac, const char *ip) {
    return Gx::ForceIp(mac.octets.data(), SocketAddress(ip), SocketAddress("255.255.255.0"), SocketAddress("0.0.0.0"),
                       0);
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
    EXPECT_EQ(force(mac, "10.0.0.50"), 0u);
    EXPECT_EQ(Holdings::now(), before);
    EXPECT_EQ(second->addressOf(2), "10.0.0.50");
    EXPECT_EQ(first.addressOf(1), "192.168.1.20");

    // Sent on both adapters, to the limited broadcast address.
    const auto there = second->cameras.requests();
    EXPECT_TRUE(there.at(0).isBroadcast());
    EXPECT_EQ(first.cameras.requests().at(0).bytes, there[0].bytes);
}

TEST_F(Configuration, ForceIpToZeroRestartsTheIpCycle) {
    startWith("10.0.0.9/24", ",forced=10.0.0.50/24");
    EXPECT_EQ(second->addressOf(2), "10.0.0.50");
    EXPECT_EQ(force(mac, "0.0.0.0"), 0u);
    EXPECT_TRUE(eventually([&] { return second->addressOf(2) == "10.0.0.9"; }));
}

TEST_F(Configuration, VendorCommandReachesAForeignSubnetAndLasts) {
    startWith("172.16.0.9/16");
    GEV_IP_CONFIG modes{};
    modes.PersistentIP = 1;
    modes.LLA = 1;
    EXPECT_EQ(Gx::SetIpConfiguration(mac.octets.data(), modes, SocketAddress("10.0.0.60"),
                                     SocketAddress("255.255.255.0"), nullptr, "Left\0\0\0\0\0\0\0\0\0\0\0\0", true,
                                     3000),
              0u);
    second->cameras.powerCycle(mac);
    EXPECT_TRUE(eventually([&] { return second->addressOf(2) == "10.0.0.60"; }));
    EXPECT_EQ(second->cameras.status(mac).userName, "Left");
}

} // namespace
