// Persistent IP settings, by feature or by register.

#include "DeviceFixture.h"

using namespace Corvo;

namespace {

/// The features stand elsewhere than the registers of the standard, so that the way of a setting shows.
TEST_F(DeviceTest, SettingsGoByFeatureOrRegister) {
    const auto features = [](const char *mask, const char *gatewayMode, const char *more) {
        return Document(IntReg("GevCurrentIPConfiguration", "0xA000", "RW", more) +
                        IntReg("GevPersistentIPAddress", "0xA004", "RW", more) +
                        IntReg("GevPersistentSubnetMask", mask, "RW", more) +
                        IntReg("GevPersistentDefaultGateway", "0xA00C", gatewayMode, more));
    };
    const std::string all = features("0xA008", "RW", "");
    const std::string readOnlyGateway = features("0xA008", "RO", "");
    const std::string failingMask = features("0xF0000000", "RW", "");
    const std::string wrongLimits = features("0xA008", "RW", "<Sign>Signed</Sign><Max>0xFFFFFFFFFFFFFFFF</Max>");
    // Whether they are there says a register that the camera refuses.
    const char *const maybe = "<pIsImplemented>Flag</pIsImplemented>";
    const std::string unknown =
        Document(IntReg("Flag", "0xF0000000") + IntReg("GevHeartbeatTimeout", "0x938", "RW", maybe) +
                 IntReg("GevCurrentIPConfiguration", "0xA000", "RW", maybe));
    const std::string modeFeature = "82 0000a00000000007", modeRegister = "82 0000001400000007";
    const std::string stored = "80 0000064c0000065c0000066c", version = "80 00000000";
    const std::string registers = "82 0000064cc000002a0000065cffff00000000066cc0000001";
    const std::vector<std::string> byFeature = {modeFeature, stored, "82 0000a004c000002a", "82 0000a008ffff0000",
                                                "82 0000a00cc0000001"};
    const struct {
        std::string xml;
        AccessModeSet modes;
        std::vector<std::string> requests;
    } cases[] = {
        {all, Control, byFeature},
        {wrongLimits, Control, byFeature},
        {failingMask, Control, {modeFeature, stored, "82 0000a004c000002a", "82 f0000000ffff0000", version, registers}},
        {all, Exclusive, {modeRegister, stored, registers}}, // the port is read-only
        {readOnlyGateway, Control, {modeFeature, stored, registers}},
        {unknown, Control, {"80 f0000000", version, modeRegister, stored, registers}},
        {Document(""), Control, {modeRegister, stored, registers}},
        {"", Control, {modeRegister, stored, registers}},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.xml.size());
        Start(WithXml(row.xml));
        device->Open(row.modes);
        cameras.clearRequests();
        device->ChangeIpConfiguration(true, true);
        device->SetPersistentIpAddress("192.0.0.42", "255.255.0.0", "192.0.0.1");
        EXPECT_EQ(Requests(), row.requests);
    }
    String_t ip, mask, router;
    device->GetPersistentIpAddress(ip, mask, router);
    EXPECT_EQ(Requests().back(), "80 0000064c0000065c0000066c");
    EXPECT_EQ(ip + " " + mask + " " + router, "192.0.0.42 255.255.0.0 192.0.0.1");
}

TEST_F(DeviceTest, SettingsByRegisterShowInFeaturesOverIt) {
    Start(WithXml(Document(IntReg("Mode", "0x14") + IntReg("Mask", "0x65C"))));
    device->Open(Control);
    EXPECT_EQ(Feature("Mask")->GetValue(), 0xFF000000);
    device->SetPersistentIpAddress("127.0.0.1", "255.255.0.0", "0.0.0.0");
    EXPECT_EQ(Feature("Mask")->GetValue(), 0xFFFF0000);
    EXPECT_EQ(Feature("Mode")->GetValue(), 5);
    device->ChangeIpConfiguration(false, true);
    EXPECT_EQ(Feature("Mode")->GetValue(), 6);
}

TEST_F(DeviceTest, AddressModesAreThoseTheCameraSupports) {
    Start();
    const struct {
        std::uint32_t options;
        bool persistent, dhcp;
        std::uint32_t mode;
    } cases[] = {{7, false, true, 6}, {7, true, true, 7}, {5, true, true, 5}, {6, true, false, 4}};
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
    const auto set = [&](const char *mask) {
        return thrownBy([&] { device->SetPersistentIpAddress("127.0.0.2", mask, "0.0.0.0"); });
    };
    const std::string writeProtected = GxStatusText(0xE1018004).c_str();
    EXPECT_EQ(thrownBy([&] { device->ChangeIpConfiguration(true, true); }),
              "Runtime: Failed to change IP configuration: " + writeProtected);
    const std::uint32_t address = Register(0x064C);
    EXPECT_EQ(set("255.0.0.0"), "Runtime: Failed to set persistent IP address: " + writeProtected);
    EXPECT_EQ(Register(0x064C), address) << "half of the settings was stored";
    cameras.clearRequests();
    for (const char *text : {"", "abc", "1.2.3", "1.2.3.4.5", "1.2.3.256"})
        EXPECT_THAT(set(text), testing::StartsWith("Runtime: Failed to set persistent IP address: ")) << text;
    EXPECT_THAT(Requests(), testing::IsEmpty());
    Silence();
    String_t text;
    EXPECT_EQ(set("255.0.0.0"),
              "Runtime: Failed to set persistent IP address: " + std::string(GxStatusText(0xE101800B)))
        << "not that the channel is disconnected";
    EXPECT_THAT(thrownBy([&] { device->GetPersistentIpAddress(text, text, text); }),
                testing::StartsWith("Runtime: Failed to get persistent IP address: "));
}

} // namespace
