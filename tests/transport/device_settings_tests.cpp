// Persistent IP settings, checked by what the camera does after a power cycle.

#include "DeviceFixture.h"

using namespace Corvo;
using testing::Contains;
using testing::ElementsAre;

namespace {

class DeviceSettings : public DeviceTest {
protected:
    void Close() {
        device->Close();
        cameras.powerCycle(mac);
        EXPECT_TRUE(eventually([&] { return Status().current.has_value(); }));
    }
    camsim::CameraStatus Status() const { return cameras.status(mac); }
    std::string Current() const { return Status().current->address.toString(); }
};

const char registers[] = "0082 0000064C7F00002A0000065CFFFF00000000066C7F000001";

TEST_F(DeviceSettings, GoByFeatureOrRegister) {
    const std::string defaultXml = [] {
        const auto bytes = camsim::defaultXml();
        return std::string(bytes.begin(), bytes.end());
    }();
    std::string readOnlyGateway = defaultXml;
    const std::size_t gateway = readOnlyGateway.find("<Address>0x66C");
    readOnlyGateway.replace(readOnlyGateway.find("RW", gateway), 2, "RO");
    const struct {
        const char *name;
        std::string xml;
        AccessModeSet modes;
        bool modeByFeature, addressByFeature;
    } cases[] = {
        {"features", defaultXml, Control, true, true},
        {"features, but the port is read-only", defaultXml, Exclusive, false, false},
        {"one feature is read-only", readOnlyGateway, Control, true, false},
        {"no such features", Document(""), Control, false, false},
        {"no description", "", Control, false, false},
    };
    unsigned number = 0;
    cameras.start();
    for (const auto &row : cases) {
        SCOPED_TRACE(row.name);
        camsim::CameraConfig config = WithXml(row.xml);
        config.mac = camsim::MacAddress::fromNumber(0x025AE3000010 + number++);
        Start(config);
        device->Open(row.modes);
        cameras.clearRequests();
        device->ChangeIpConfiguration(true, true);
        device->SetPersistentIpAddress("127.0.0.42", "255.255.0.0", "127.0.0.1");
        EXPECT_THAT(Requests(), Contains("0082 0000001400000007"));
        EXPECT_THAT(Requests(), Contains(registers).Times(row.addressByFeature ? 0 : 1));
        String_t ip, mask, router;
        cameras.clearRequests();
        device->GetPersistentIpAddress(ip, mask, router);
        EXPECT_THAT(Requests(), ElementsAre("0080 0000064C0000065C0000066C"));
        EXPECT_EQ(ip + "/" + mask + "/" + router, "127.0.0.42/255.255.0.0/127.0.0.1");
        if (row.modeByFeature) {
            EXPECT_EQ(Feature("GevCurrentIPConfiguration")->GetValue(), 7);
        }
        Close();
        EXPECT_EQ(Current(), "127.0.0.42");
        EXPECT_EQ(Status().current->mask.toString(), "255.255.0.0");
        cameras.removeCamera(mac);
    }
}

TEST_F(DeviceSettings, ModesAreThoseTheCameraSupports) {
    const struct {
        std::uint32_t options;
        bool persistent, dhcp;
        std::uint32_t mode;
        const char *addressAfterwards;
    } cases[] = {
        {7, false, false, 4, "169.254.7.7"}, {7, false, true, 6, "127.0.0.88"},  {7, true, true, 7, "127.0.0.1"},
        {5, true, true, 5, "127.0.0.1"},     {6, true, false, 4, "169.254.7.7"},
    };
    cameras.start();
    unsigned number = 0;
    for (const auto &row : cases) {
        camsim::CameraConfig config = Config();
        config.mac = camsim::MacAddress::fromNumber(0x025AE3000020 + number++);
        config.forced = config.persistent;
        config.dhcpLease = {camsim::Ipv4::parse("127.0.0.88"), camsim::Ipv4::maskOf(8), {}};
        config.linkLocal = camsim::Ipv4::parse("169.254.7.7");
        config.ipOptions = row.options;
        Start(config);
        device->Open(Control);
        device->ChangeIpConfiguration(row.persistent, row.dhcp);
        EXPECT_EQ(Register(0x0014), row.mode);
        Close();
        EXPECT_EQ(Status().ipEnabled, row.mode);
        EXPECT_EQ(Current(), row.addressAfterwards) << row.mode;
        cameras.removeCamera(mac);
    }
}

TEST_F(DeviceSettings, FailuresAreReportedAndStoreNothing) {
    camsim::CameraConfig config = WithXml("");
    config.readOnly = {{0x0014, 4}, {0x065C, 4}};
    Start(config);
    device->Open(Control);
    const std::string writeProtected = GxStatusText(0xE1018004).c_str();
    EXPECT_EQ(Failure([&] { device->ChangeIpConfiguration(true, true); }),
              "Runtime: Failed to change IP configuration: " + writeProtected);
    EXPECT_EQ(Failure([&] { device->SetPersistentIpAddress("127.0.0.2", "255.0.0.0", "0.0.0.0"); }),
              "Runtime: Failed to set persistent IP address: " + writeProtected);
    cameras.clearRequests();
    for (const char *text : {"", "abc", "1.2.3", "1.2.3.4.5", "1.2.3.256"})
        EXPECT_THAT(Failure([&] { device->SetPersistentIpAddress("127.0.0.2", text, "0.0.0.0"); }),
                    testing::StartsWith("Runtime: Failed to set persistent IP address: "))
            << text;
    EXPECT_THAT(Requests(), testing::IsEmpty());
    Silence();
    String_t text;
    EXPECT_THAT(Failure([&] { device->GetPersistentIpAddress(text, text, text); }),
                testing::StartsWith("Runtime: Failed to get persistent IP address: "));
}

TEST_F(DeviceSettings, SurviveALossyLink) {
    camsim::FaultConfig lossy;
    lossy.lossFromCamera = 20;
    lossy.duplicate = 5;
    cameras.setFaults(lossy);
    Start();
    // One transaction in a hundred loses all three attempts, and then the user tries again. The download is more
    // patient.
    for (int i = 0; i < 5 && device->GetNodeMap() == nullptr; ++i)
        device = CreateGigEDevice(Info());
    ASSERT_NE(device->GetNodeMap(), nullptr) << "fault seed " << cameras.seed();
    const auto configure = [&] {
        device->Open(Control);
        device->ChangeIpConfiguration(true, false);
        device->SetPersistentIpAddress("127.0.0.43", "255.0.0.0", "0.0.0.0");
    };
    int attempts = 1;
    for (; !Failure(configure).empty() && attempts < 10; ++attempts) {
        if (device->IsOpen())
            device->Close();
        cameras.setHolder(mac, std::nullopt);
    }
    EXPECT_LT(attempts, 10) << "fault seed " << cameras.seed();
    cameras.setFaults(camsim::FaultConfig());
    Close();
    EXPECT_EQ(Current(), "127.0.0.43");
    EXPECT_EQ(Status().ipEnabled, 5u);
}

} // namespace
