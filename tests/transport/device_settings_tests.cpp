// Persistent IP settings, by feature or by register.

#include "DeviceFixture.h"

using namespace Corvo;
using testing::ElementsAre;

namespace {

/// The features stand elsewhere than the registers of the standard, so that the way of a setting shows.
std::string IntReg(const char *name, const char *address, const char *mode = "RW") {
    return std::string("<IntReg Name='") + name + "'><Address>" + address + "</Address><Length>4</Length><AccessMode>" +
           mode + "</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>";
}

TEST_F(DeviceTest, SettingsGoByFeatureOrRegister) {
    const std::string most = IntReg("GevCurrentIPConfiguration", "0xA000") +
                             IntReg("GevPersistentIPAddress", "0xA004") + IntReg("GevPersistentSubnetMask", "0xA008");
    const std::string all = Document(most + IntReg("GevPersistentDefaultGateway", "0xA00C"));
    const std::string readOnlyGateway = Document(most + IntReg("GevPersistentDefaultGateway", "0xA00C", "RO"));
    const std::string modeFeature = "0082 0000A00000000007", modeRegister = "0082 0000001400000007";
    const std::string registers = "0082 0000064C7F00002A0000065CFFFF00000000066C7F000001";
    const struct {
        const char *name;
        std::string xml;
        AccessModeSet modes;
        std::vector<std::string> requests;
    } cases[] = {
        {"features",
         all,
         Control,
         {modeFeature, "0082 0000A0047F00002A", "0082 0000A008FFFF0000", "0082 0000A00C7F000001"}},
        {"features, but the port is read-only", all, Exclusive, {modeRegister, registers}},
        {"one feature is read-only", readOnlyGateway, Control, {modeFeature, registers}},
        {"no such features", Document(""), Control, {modeRegister, registers}},
        {"no description", "", Control, {modeRegister, registers}},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.name);
        Start(WithXml(row.xml));
        device->Open(row.modes);
        cameras.clearRequests();
        device->ChangeIpConfiguration(true, true);
        device->SetPersistentIpAddress("127.0.0.42", "255.255.0.0", "127.0.0.1");
        EXPECT_EQ(Requests(), row.requests);
        device.reset();
        cameras.removeCamera(mac);
    }
}

TEST_F(DeviceTest, PersistentSettingsAreReadFromTheRegisters) {
    Start();
    device->Open(Control);
    device->SetPersistentIpAddress("127.0.0.42", "255.255.0.0", "127.0.0.1");
    cameras.clearRequests();
    String_t ip, mask, router;
    device->GetPersistentIpAddress(ip, mask, router);
    EXPECT_THAT(Requests(), ElementsAre("0080 0000064C0000065C0000066C"));
    EXPECT_EQ(ip + "/" + mask + "/" + router, "127.0.0.42/255.255.0.0/127.0.0.1");
}

TEST_F(DeviceTest, AddressModesAreThoseTheCameraSupports) {
    Start();
    const struct {
        std::uint32_t options;
        bool persistent, dhcp;
        std::uint32_t mode;
    } cases[] = {
        {7, false, false, 4}, {7, false, true, 6}, {7, true, true, 7}, {5, true, true, 5}, {6, true, false, 4}};
    for (const auto &row : cases) {
        device = CreateGigEDevice(Info(row.options));
        device->Open(Control);
        device->ChangeIpConfiguration(row.persistent, row.dhcp);
        EXPECT_EQ(Register(0x0014), row.mode);
    }
}

TEST_F(DeviceTest, FailedSettingsAreReportedAndStoreNothing) {
    camsim::CameraConfig config = WithXml("");
    config.readOnly = {{0x0014, 4}, {0x065C, 4}};
    Start(config);
    device->Open(Control);
    const std::string writeProtected = GxStatusText(0xE1018004).c_str();
    EXPECT_EQ(thrownBy([&] { device->ChangeIpConfiguration(true, true); }),
              "Runtime: Failed to change IP configuration: " + writeProtected);
    EXPECT_EQ(thrownBy([&] { device->SetPersistentIpAddress("127.0.0.2", "255.0.0.0", "0.0.0.0"); }),
              "Runtime: Failed to set persistent IP address: " + writeProtected);
    cameras.clearRequests();
    for (const char *text : {"", "abc", "1.2.3", "1.2.3.4.5", "1.2.3.256"})
        EXPECT_THAT(thrownBy([&] { device->SetPersistentIpAddress("127.0.0.2", text, "0.0.0.0"); }),
                    testing::StartsWith("Runtime: Failed to set persistent IP address: "))
            << text;
    EXPECT_THAT(Requests(), testing::IsEmpty());
    Silence();
    String_t text;
    EXPECT_THAT(thrownBy([&] { device->GetPersistentIpAddress(text, text, text); }),
                testing::StartsWith("Runtime: Failed to get persistent IP address: "));
}

} // namespace
