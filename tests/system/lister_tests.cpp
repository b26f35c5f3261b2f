#include "support/Site.h" // before Qt, which makes a macro of a name in it

#include "Lanvane/DeviceLister.h"
#include "commissioning/DeviceInfos.h"

#include <gtest/gtest.h>

using namespace Corvo;
using namespace testnet;

namespace {

/// The values, with a blank behind each.
std::string valuesOf(const CDeviceInfo &device, const std::vector<const char *> &names) {
    std::string values;
    for (const char *name : names)
        values += std::string(commissioning::propertyOf(device, name)) + " ";
    return values;
}

TEST(Lister, OneEntryForEachMacAndPatches) {
    const Site nic0("nic0", "192.168.10.1/24", {cameraAt(1, "192.168.10.21/24")});
    Site nic1("nic1", "192.168.20.1/24", {cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.20.22/24")});
    nic1.cameras.setFaults(camsim::parseFaults("delay=100")); // to be heard second
    DeviceLister lister;
    lister.discoverAllDevices();
    ASSERT_EQ(2u, lister.devices().size());
    const auto second = [&](const std::vector<const char *> &names) { return valuesOf(lister.devices()[1], names); };
    EXPECT_EQ("192.168.10.1;192.168.20.1 nic0;nic1 1 ",
              valuesOf(lister.devices()[0], {PropInterface, PropIfName, PropAccessible}));
    EXPECT_TRUE(DeviceLister::ValExistsInMultipartPropertyValue("10.0.0.1;10.0.0.12", "10.0.0.12", ";"));
    EXPECT_FALSE(DeviceLister::ValExistsInMultipartPropertyValue("10.0.0.12;10.0.0.13", "10.0.0.1", ";"));
    EXPECT_EQ("192.168.20.1 nic1 1 ", second({PropInterface, PropIfName, PropAccessible}));

    const char *const mac = "025AE3000002";
    EXPECT_EQ(0u, lister.updateDeviceInfo("025AE3000009", "5", nullptr, nullptr, nullptr, false));
    nic1.cameras.setReachable(camera(2).mac, false);
    EXPECT_EQ(1u, lister.updateDeviceInfo(mac, "6", nullptr, "255.255.0.0", "192.168.20.254", false));
    EXPECT_EQ("6 1 ", second({"IpConfigCurrent", PropAccessible}));
    EXPECT_EQ(1u, lister.updateDeviceInfo(mac, nullptr, "192.168.20.22", nullptr, nullptr, true));
    EXPECT_EQ("4 192.168.20.22:3956 255.255.0.0 192.168.20.254 6 ",
              second({PropAccessible, "Address", "SubnetMask", "DefaultGateway", "IpConfigCurrent"}));
}

} // namespace
