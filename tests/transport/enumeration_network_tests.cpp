#include "Layer.h"
#include "support/Leaks.h"
#include "support/Site.h"

using namespace Corvo;
using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

namespace {

std::vector<std::string> seen(const DeviceInfoList &list) {
    std::vector<std::string> result;
    for (const CDeviceInfo &device : list)
        result.push_back(std::string(device.GetSerialNumber()) + "@" +
                         CQuorelGigEDeviceInfo(device).GetInterface().c_str());
    return result;
}

/// Two adapters; camera 100 stands in a foreign subnet and is cabled to both of them.
class Enumeration : public LayerTest {
protected:
    Site first{"nic0",
               "192.168.1.5/24",
               {cameraAt(21, "192.168.1.20/24", ",broadcast-ack=always"), cameraAt(3, "192.168.1.30/24"),
                cameraAt(100, "172.16.0.9/16")}};
    Site second{"nic1", "10.0.0.7/8", {cameraAt(7, "10.9.8.7/8"), cameraAt(100, "172.16.0.9/16")}};
    DeviceInfoList list;
};

TEST_F(Enumeration, FindsForeignSubnetsOncePerAdapter) {
    list.resize(1);
    layer();
    const Holdings before = Holdings::now();
    EXPECT_EQ(5, layer().EnumerateAllDevices(list));
    EXPECT_EQ(Holdings::now(), before);
    EXPECT_THAT(seen(list), UnorderedElementsAre("21@192.168.1.5", "3@192.168.1.5", "100@192.168.1.5", "7@10.0.0.7",
                                                 "100@10.0.0.7"));
    EXPECT_FALSE(list[0].IsUserProvided());
    EXPECT_THAT(trace(), HasSubstr("DEBUG Corvo.GigE.TL Adding discovered device 'Ostra Virtual Camera#025AE3000064#"
                                   "172.16.0.9:3956' discovered on interface '10.0.0.7'"));
    EXPECT_THAT(trace(), HasSubstr("DEBUG Corvo.GigE.Gx indication from 192.168.1.20:3956"));
    EXPECT_EQ(0, layer().EnumerateAllDevices(list, true)); // nothing new
    EXPECT_EQ(5u, list.size());
}

TEST_F(Enumeration, SortsAndCountsTheAdaptersSubnets) {
    EXPECT_EQ(3, layer().EnumerateDevices(list));
    EXPECT_THAT(seen(list), ElementsAre("3@192.168.1.5", "7@10.0.0.7", "21@192.168.1.5"));
    list = listOf({infoWith({{"SerialNumber", "99"}})});
    EXPECT_EQ(4, layer().EnumerateDevices(list, true)); // counts the whole list when nothing is filtered
    EXPECT_THAT(seen(list), ElementsAre("99@N/A", "3@192.168.1.5", "7@10.0.0.7", "21@192.168.1.5"));
    EXPECT_EQ(0, factory().EnumerateDevices(list, true)); // nothing new
    EXPECT_EQ(3, factory().EnumerateDevices(list));
}

TEST_F(Enumeration, Filters) {
    const CDeviceInfo other = infoWith({{"DeviceClass", "QuorelUsb"}});
    EXPECT_EQ(0, layer().EnumerateDevices(list, listOf({other})));
    EXPECT_TRUE(first.cameras.requests().empty());
    const CDeviceInfo third = infoWith({{"DeviceClass", "QuorelGigE"}, {"IpAddress", "0xC0.168.1.036"}});
    const DeviceInfoList filter = listOf({other, third, infoWith({{"SerialNumber", "7"}})});
    EXPECT_EQ(2, layer().EnumerateDevices(list, filter));
    EXPECT_THAT(seen(list), ElementsAre("3@192.168.1.5", "7@10.0.0.7"));
    EXPECT_THAT(trace(), HasSubstr("DEBUG corvo.base.TL Filter applied to device list, count of devices before filter "
                                   "step = 3, after filter step = 2."));
    EXPECT_EQ(2, layer().EnumerateDevices(list, filter, true));
    EXPECT_EQ(0, factory().EnumerateDevices(list, listOf({infoWith({{"IpAddress", "x"}})})));
    EXPECT_THAT(trace(), HasSubstr("Exception while enumerating GigE devices. Error: 'Invalid address: x'"));
    const DeviceInfoList broken = listOf({third, infoWith({{"Address", "10.9.8.7:3956"}, {"IpAddress", "x"}})});
    EXPECT_EQ("Runtime: Invalid address: x", thrownBy([&] { layer().EnumerateDevices(list, broken); }));
    EXPECT_THAT(seen(list), testing::IsEmpty());
}

TEST_F(Enumeration, FilterOfTheEnvironmentComesFirst) {
    // No camera has an address that is none, and a hidden key alone is no condition.
    setenv("CORVO_DEVICE_FILTER",
           "SerialNumber=21 || SerialNumber=7 || SerialNumber=3 && IpAddress=192.168.1.* || _a=b", 1);
    EXPECT_EQ(2, layer().EnumerateDevices(list));
    EXPECT_THAT(seen(list), ElementsAre("7@10.0.0.7", "21@192.168.1.5"));
    const CDeviceInfo hidden = infoWith({{"SerialNumber", "3"}}), shown = infoWith({{"SerialNumber", "21"}});
    EXPECT_EQ(1, layer().EnumerateDevices(list, listOf({hidden, shown})));
    EXPECT_THAT(seen(list), ElementsAre("21@192.168.1.5"));
    EXPECT_EQ(5, layer().EnumerateAllDevices(list)); // not filtered
}

TEST_F(Enumeration, LayerSwitchedOffByTheEnvironment) {
    setenv("CORVO_USE_TL", "QuorelUsb", 1);
    list.resize(1);
    EXPECT_EQ(0, layer().EnumerateDevices(list, true));
    EXPECT_EQ(0, layer().EnumerateAllDevices(list, true));
    EXPECT_EQ(1u, list.size());
    EXPECT_EQ(0, layer().EnumerateAllDevices(list));
    EXPECT_TRUE(list.empty());
    EXPECT_TRUE(first.cameras.requests().empty());
    EXPECT_EQ("Runtime: Device not accessible. Transport layer is restricted by the environment", thrownBy([] {
                  layer().IsDeviceAccessible(infoWith({{"SerialNumber", "3"}}));
              }));
}

TEST_F(LayerTest, EnumerationWithoutAnyAdapterIsTracedOnly) {
    DeviceInfoList list;
    EXPECT_EQ(0, layer().EnumerateDevices(list));
    EXPECT_THAT(trace(), testing::ContainsRegex("ERROR Corvo.GigE.TL Failed to enumerate GigE devices: .* \\(0xE102"));
    EXPECT_THAT(trace(), HasSubstr("ERROR Corvo.GigE.Gx Failed create socket collection\n"));
    EXPECT_EQ(0, layer().EnumerateAllDevices(list));
}

} // namespace
