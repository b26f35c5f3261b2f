#include "Layer.h"

#include <cstring>

namespace {

using namespace Corvo;

GEV_DISCOVERY_INFO record(const char *userDefinedName) {
    GEV_DISCOVERY_INFO info{};
    info.DeviceMacAddress = {0xFFFF02A1, 0xB2C3D4E5}; // the upper half of the first word is reserved
    info.CurrentIP.IPv4.Address = 0xC0A80114;
    info.CurrentSubnetMask.IPv4.Address = 0xFFFFFF00;
    info.DefaultGateway.IPv4.Address = 0xC0A80101;
    info.IPConfigOptions.PersistentIP = info.IPConfigOptions.DHCP = info.IPConfigOptions.LLA = 1;
    info.IPConfigOptions.Reserved = 0x10000000;
    info.IPConfigCurrent.PersistentIP = info.IPConfigCurrent.LLA = 1;
    std::strcpy(info.Description.ManufacturerName, "Maker");
    std::strcpy(info.Description.ModelName, "Model");
    std::strcpy(info.Description.DeviceVersion, "1.2");
    std::memcpy(info.Description.SerialNumber, "1234567890123456x", 16); // fills the field
    std::strncpy(info.Description.UserDefinedName, userDefinedName, 15);
    return info;
}

TEST(DeviceInfo, HoldsADiscoveryAnswer) {
    const GEV_DISCOVERY_INFO answer = record(" \t ");
    const CQuorelGigEDeviceInfoImpl impl(socketAddress("192.168.1.20:3957"), &answer,
                                         socketAddress("192.168.1.5:50000"));
    const CDeviceInfo stored = impl; // as lists hold it
    EXPECT_FALSE(stored.IsUserProvided());
    EXPECT_FALSE(stored.IsModified());

    EXPECT_EQ("Address=192.168.1.20:3957,DefaultGateway=192.168.1.1,DeviceClass=QuorelGigE,"
              "DeviceFactory=GigE/QuorelGigE 5.0.11.4711,DeviceVersion=1.2,"
              "FriendlyName=Maker Model (1234567890123456),FullName=Maker Model#02A1B2C3D4E5#192.168.1.20:3957,"
              "Interface=192.168.1.5,IpAddress=192.168.1.20,IpConfigCurrent=5,IpConfigOptions=2147483655,"
              "MacAddress=02A1B2C3D4E5,ModelName=Model,PortNr=3957,SerialNumber=1234567890123456,"
              "SubnetAddress=192.168.1.255,SubnetMask=255.255.255.0,UserDefinedName= \t ,VendorName=Maker,",
              propertiesOf(stored));

    const CQuorelGigEDeviceInfo view(stored);
    EXPECT_EQ(std::make_tuple(true, false, true),
              std::make_tuple(view.IsPersistentIpActive(), view.IsDhcpActive(), view.IsAutoIpActive()));
    EXPECT_TRUE(view.IsPersistentIpSupported() && view.IsDhcpSupported() && view.IsAutoIpSupported());
    String_t portable;
    EXPECT_TRUE(view.GetPropertyValue("_PortableIpConfigCurrent", portable));
    EXPECT_EQ("1280", portable);
    EXPECT_EQ("Cam 1 (1234567890123456)", CQuorelGigEDeviceInfoImpl::FriendlyName(record("Cam 1")));
}

TEST(DeviceInfo, MadeByTheCaller) {
    CQuorelGigEDeviceInfo info;
    EXPECT_TRUE(info.IsUserProvided());
    EXPECT_EQ("N/A", info.GetMacAddress());
    EXPECT_EQ("3956", info.GetPortNr());
    EXPECT_EQ("InvalidArgument: Device info object doesn't contain information about the IP configuration",
              thrownBy([&] { info.IsDhcpActive(); }));
    info.SetIpAddress("1.2.3.4");
    EXPECT_TRUE(info.IsSubset(infoWith({{"IpAddress", "0x1.2.3.4"}})));
    EXPECT_FALSE(CDeviceInfo(info).IsSubset(infoWith({{"IpAddress", "0x1.2.3.4"}})));
}

} // namespace
