// Persistent IP settings, checked by what the camera does after a power cycle.

#include "DeviceFixture.h"

using namespace Corvo;
using testing::Contains;

namespace {

class DeviceSettings : public DeviceTest {
protected:
    /// \returns "ADDRESS/MASK MODES" after a power cycle.
    std::string AfterRestart() {
        device->Close();
        cameras.powerCycle(mac);
        EXPECT_TRUE(eventually([&] { return cameras.status(mac).current.has_value(); }));
        const camsim::CameraStatus status = cameras.status(mac);
        return status.current->address.toString() + "/" + status.current->mask.toString() + " " +
               std::to_string(status.ipEnabled);
    }
};

TEST_F(DeviceSettings, GoByFeatureOrRegister) {
    const std::vector<std::uint8_t> bytes = camsim::defaultXml();
    const std::string features(bytes.begin(), bytes.end());
    std::string readOnlyGateway = features;
    readOnlyGateway.replace(readOnlyGateway.find("RW", readOnlyGateway.find("<Address>0x66C")), 2, "RO");
    const struct {
        std::string xml;
        AccessModeSet modes;
        int registerWrites; // of all three settings
    } cases[] = {
        {features, Control, 0},     {features, Exclusive, 1}, {readOnlyGateway, Control, 1},
        {Document(""), Control, 1}, {"", Control, 1},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.xml.size());
        Start(WithXml(row.xml));
        device->Open(row.modes);
        device->ChangeIpConfiguration(true, true);
        device->SetPersistentIpAddress("127.0.0.42", "255.255.0.0", "127.0.0.1");
        EXPECT_THAT(Requests(), Contains("82 0000001400000007"));
        EXPECT_THAT(Requests(),
                    Contains("82 0000064c7f00002a0000065cffff00000000066c7f000001").Times(row.registerWrites));
        String_t ip, mask, router;
        device->GetPersistentIpAddress(ip, mask, router);
        EXPECT_EQ(Requests().back(), "80 0000064c0000065c0000066c");
        EXPECT_EQ(ip + " " + mask + " " + router, "127.0.0.42 255.255.0.0 127.0.0.1");
        EXPECT_EQ(AfterRestart(), "127.0.0.42/255.255.0.0 7");
    }
}

TEST_F(DeviceSettings, ModesAreThoseTheCameraSupports) {
    const struct {
        std::uint32_t options;
        bool persistent, dhcp;
        const char *afterwards;
    } cases[] = {
        {7, false, false, "169.254.7.7/255.255.0.0 4"}, {7, false, true, "127.0.0.88/255.0.0.0 6"},
        {7, true, true, "127.0.0.1/255.0.0.0 7"},       {5, true, true, "127.0.0.1/255.0.0.0 5"},
        {6, true, false, "169.254.7.7/255.255.0.0 4"},
    };
    for (const auto &row : cases) {
        camsim::CameraConfig config = Config();
        config.forced = config.persistent;
        config.dhcpLease = {camsim::Ipv4::parse("127.0.0.88"), camsim::Ipv4::maskOf(8), {}};
        config.linkLocal = camsim::Ipv4::parse("169.254.7.7");
        config.ipOptions = row.options;
        Start(config);
        device->Open(Control);
        device->ChangeIpConfiguration(row.persistent, row.dhcp);
        EXPECT_EQ(AfterRestart(), row.afterwards);
    }
}

TEST_F(DeviceSettings, FailuresAreReportedAndStoreNothing) {
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
    EXPECT_EQ(set("255.0.0.0"), "Runtime: Failed to set persistent IP address: " + writeProtected);
    cameras.clearRequests();
    for (const char *text : {"", "abc", "1.2.3", "1.2.3.4.5", "1.2.3.256"})
        EXPECT_THAT(set(text), testing::StartsWith("Runtime: Failed to set persistent IP address: ")) << text;
    EXPECT_THAT(Requests(), testing::IsEmpty());
    Silence();
    String_t text;
    EXPECT_THAT(thrownBy([&] { device->GetPersistentIpAddress(text, text, text); }),
                testing::StartsWith("Runtime: Failed to get persistent IP address: "));
}

TEST_F(DeviceSettings, SurviveALossyLink) {
    camsim::FaultConfig lossy;
    lossy.lossFromCamera = 20;
    lossy.duplicate = 5;
    cameras.setFaults(lossy);
    SCOPED_TRACE("fault seed " + std::to_string(cameras.seed()));
    Start();
    // One transaction in a hundred loses all three attempts, and then the user tries again. The download is more
    // patient.
    for (int i = 0; i < 5 && device->GetNodeMap() == nullptr; ++i)
        device = CreateGigEDevice(Info());
    EXPECT_NE(device->GetNodeMap(), nullptr);
    const auto configure = [&] {
        device->Open(Control);
        device->ChangeIpConfiguration(true, false);
        device->SetPersistentIpAddress("127.0.0.43", "255.0.0.0", "0.0.0.0");
    };
    std::string failure = thrownBy(configure);
    for (int i = 0; i < 10 && !failure.empty(); ++i) {
        device = CreateGigEDevice(Info());
        cameras.setHolder(mac, std::nullopt);
        failure = thrownBy(configure);
    }
    EXPECT_EQ(failure, "");
    cameras.setFaults(camsim::FaultConfig());
    EXPECT_EQ(AfterRestart(), "127.0.0.43/255.0.0.0 5");
}

} // namespace
