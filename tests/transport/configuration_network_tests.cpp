#include "Layer.h"
#include "MinimalCorvo/Utilities.h"
#include "support/Leaks.h"
#include "support/Site.h"

using namespace Corvo;
using namespace testnet;

namespace {

constexpr char MAC[] = "025AE3000002"; // of camera 2

/// A camera in a foreign subnet behind the second of two adapters.
class LayerConfiguration : public LayerTest {
protected:
    /// Of the last request, in hexadecimal.
    std::string sent(std::size_t from, std::size_t count = 4) const {
        return HexEncodeString(second.cameras.requests().back().bytes.data() + from, count).c_str();
    }

    Site first{"nic0", "192.168.1.5/24", {cameraAt(1, "192.168.1.20/24")}};
    Site second{"nic1", "10.0.0.7/24", {cameraAt(2, "172.16.0.9/16")}};
    const camsim::MacAddress mac = camera(2).mac;
};

TEST_F(LayerConfiguration, ForcesATemporaryAddress) {
    layer();
    const Holdings before = Holdings::now();
    layer().ForceIp("025ae3000002", "10.0.0.50:99", "255.255.255.0", "10.0.0.1");
    EXPECT_EQ(before, Holdings::now());
    EXPECT_TRUE(second.cameras.requests().at(0).isBroadcast()); // on both adapters, to the limited broadcast address
    EXPECT_EQ(first.cameras.requests().at(0).bytes, second.cameras.requests()[0].bytes);
    const camsim::IpSettings forced = second.cameras.status(mac).current.value();
    EXPECT_EQ("10.0.0.50 255.255.255.0 10.0.0.1",
              forced.address.toString() + " " + forced.mask.toString() + " " + forced.gateway.toString());

    layer().RestartIpConfiguration(MAC);
    EXPECT_TRUE(eventually([&] { return second.addressOf(2) == "172.16.0.9"; }));
    EXPECT_EQ(1u, second.cameras.status(mac).ipCycles);
    EXPECT_EQ("192.168.1.20", first.addressOf(1));

    layer().RestartIpConfiguration("02A1B2C3D4E5"); // no such device: nobody is waited for
    EXPECT_EQ("Runtime: Failed to issue the ForceIp command. Some possible reasons are: Invalid IP address; device is "
              "controlled by another application.: The requested operation timed out. (0xE1000007)",
              thrownBy([] { layer().ForceIp("02:5A:E3:00:00:02", "abc", "", "0.0.0.0"); }));
    EXPECT_EQ("000000000002", sent(10, 6)); // the number ends at the first separator
    EXPECT_EQ("ffffffff ffffffff 00000000", sent(28) + " " + sent(44) + " " + sent(60));
}

TEST_F(LayerConfiguration, StoresEachAddressMode) {
    const struct {
        bool persistent, dhcp;
        std::uint8_t word;
    } cases[] = {{false, false, 4}, {true, false, 5}, {false, true, 6}, {true, true, 7}};
    for (const auto &row : cases) {
        EXPECT_TRUE(layer().BroadcastIpConfiguration(MAC, row.persistent, row.dhcp, "10.0.0.60", "255.255.255.0",
                                                     "10.0.0.1", "A name of 20 chars!!"));
        EXPECT_EQ(row.persistent ? "0a00003c ffffff00 0a000001" : "00000000 00000000 00000000",
                  sent(32) + " " + sent(48) + " " + sent(64));
        EXPECT_EQ(row.word, second.cameras.status(mac).ipEnabled);
        EXPECT_EQ("A name of 20 cha", second.cameras.status(mac).userName);
    }
}

TEST_F(LayerConfiguration, FailuresOfTheBroadcastAreToldByFalse) {
    EXPECT_FALSE(layer().BroadcastIpConfiguration("02A1B2C3D4E5", false, false, "", "", "", "")); // no such device
    second.cameras.removeCamera(mac);
    second.cameras.addCamera(cameraAt(2, "172.16.0.9/16", ",vendor-config=error"));
    EXPECT_FALSE(layer().BroadcastIpConfiguration(MAC, true, true, "10.0.0.60", "255.0.0.0", "0.0.0.0", ""));
    EXPECT_EQ(std::string(32, '0'), sent(68, 16)); // no name
}

} // namespace
