#include "DeviceFixture.h"

#include "GenApi/IRegister.h"

#include <cstdlib>

using namespace Corvo;
using camsim::Holder;
using testing::ElementsAre;

namespace {

const camsim::Endpoint other{camsim::Ipv4::parse("127.0.0.9"), 4444};

TEST_F(DeviceTest, AccessModesDecidePrivilegeAndRights) {
    Start();
    const struct {
        AccessModeSet modes;
        std::uint32_t privilege; // as the camera shows it: exclusive access wins
        const char *privilegeWrite;
        GenApi::EAccessMode access;
        bool configures;
    } cases[] = {
        {AccessModeSet(), 0, nullptr, GenApi::RO, false},
        {Stream, 0, nullptr, GenApi::RO, false},
        {Control, 2, "0082 00000A0000000002", GenApi::RW, true},
        {Exclusive, 1, "0082 00000A0000000001", GenApi::RO, true},
        {Control | Exclusive, 1, "0082 00000A0000000003", GenApi::RW, true},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.modes.to_string());
        EXPECT_EQ(Feature("Width")->GetAccessMode(), GenApi::NI);
        cameras.clearRequests();
        device->Open(row.modes);
        EXPECT_TRUE(device->IsOpen());
        EXPECT_EQ(device->AccessMode(), row.modes);
        EXPECT_EQ(Privilege(), row.privilege);
        EXPECT_EQ(row.privilegeWrite ? Requests().front() : "", row.privilegeWrite ? row.privilegeWrite : "");
        EXPECT_EQ(Feature("Width")->GetAccessMode(), row.access);
        EXPECT_EQ(Feature("Width")->GetValue(), 1920);
        EXPECT_EQ(Parameter("WriteTimeout")->GetAccessMode(), row.access);
        EXPECT_EQ(
            thrownBy([&] { device->ChangeIpConfiguration(true, false); }),
            row.configures ? "" : "LogicalError: Unsupported mode: Control access is required (ChangeIpConfiguration)");
        device->Close();
        EXPECT_FALSE(device->IsOpen());
        EXPECT_TRUE(device->AccessMode().none());
        EXPECT_EQ(Privilege(), 0u);
        EXPECT_EQ(Parameter("WriteTimeout")->GetAccessMode(), GenApi::RW);
    }
    EXPECT_EQ(device->GetNumStreamGrabberChannels(), 1u);
    EXPECT_EQ(device->GetStreamGrabber(0), nullptr);
}

TEST_F(DeviceTest, MisuseIsRefusedAndChangesNothing) {
    Start();
    String_t text;
    DeviceCallback callback = [](ICorvoDevice *) {};
    EXPECT_EQ(thrownBy([&] { device->Close(); }), "LogicalError: Control channel already closed.");
    EXPECT_EQ(thrownBy([&] { device->RegisterRemovalCallback(callback); }),
              "LogicalError: Camera object must not be closed (RegisterRemovalCallback)");
    EXPECT_EQ(thrownBy([&] { device->DeregisterRemovalCallback(1); }),
              "LogicalError: Camera object must not be closed (DeregisterRemovalCallback)");
    EXPECT_EQ(thrownBy([&] { device->ChangeIpConfiguration(true, true); }),
              "LogicalError: Camera object must not be closed (ChangeIpConfiguration)");
    EXPECT_EQ(thrownBy([&] { device->GetPersistentIpAddress(text, text, text); }),
              "LogicalError: Camera object must not be closed (GetPersistentIpAddress)");
    EXPECT_EQ(thrownBy([&] { device->SetPersistentIpAddress(text, text, text); }),
              "LogicalError: Camera object must not be closed (SetPersistentIpAddress)");
    device->Open(Control);
    EXPECT_EQ(thrownBy([&] { device->Open(Stream); }), "LogicalError: Device '" + Name() + "' already open.");
    EXPECT_TRUE(device->AccessMode().test(Control));
    Feature("Width")->SetValue(640);
    EXPECT_EQ(Register(0xA000), 640u);
}

TEST_F(DeviceTest, HeldAndSilentCamerasCannotBeOpened) {
    Start();
    cameras.setHolder(mac, Holder{other, GEV_CONTROL_ACCESS});
    EXPECT_EQ(thrownBy([&] { device->Open(Control); }),
              "Runtime: Failed to open '" + Name() + "'. The device is controlled by another application. Err: " +
                  GxStatusText(0xE1018006).c_str() + "\n");
    device->Open(Stream); // reading is not denied
    device->Close();
    cameras.setHolder(mac, Holder{other, GEV_EXCLUSIVE_CONTROL_ACCESS});
    EXPECT_THAT(thrownBy([&] { device->Open(Stream); }), testing::HasSubstr("(0xE1018006)\n"));
    Silence();
    EXPECT_EQ(thrownBy([&] { device->Open(Control); }),
              "Runtime: Failed to open '" + Name() +
                  "'. The device is not reachable or controlled by another application. Err: " +
                  GxStatusText(0xE101800B).c_str());
    EXPECT_FALSE(device->IsOpen());
    // Nothing of the failed attempts is left: the parameter reaches no channel, and the next opening works.
    Revive();
    cameras.clearRequests();
    Parameter("HeartbeatTimeout")->SetValue(4000);
    EXPECT_THAT(Requests(), testing::IsEmpty());
    device->Open(Control);
    EXPECT_EQ(Register(0x0938), 4000u);
}

/// Whether the heartbeat feature is there says a register that the camera does not have.
TEST_F(DeviceTest, FailureHalfwayThroughOpeningLeavesTheDeviceClosed) {
    Start(WithXml(Document("<IntReg Name='GevHeartbeatTimeout'><pIsImplemented>Flag</pIsImplemented><Address>0x938"
                           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
                           "<IntReg Name='Flag'><Address>0xF0000000</Address><Length>4</Length><AccessMode>RO"
                           "</AccessMode><pPort>Device</pPort></IntReg>")));
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(thrownBy([&] { device->Open(Stream); }), testing::HasSubstr("memory at 0xf0000000, 0x4 bytes. "));
        EXPECT_FALSE(device->IsOpen());
        EXPECT_EQ(Parameter("WriteTimeout")->GetAccessMode(), GenApi::RW);
    }
    EXPECT_EQ(thrownBy([&] { device->Open(Control); }).find("Runtime: "), 0u);
    EXPECT_EQ(Privilege(), 0u);
    cameras.clearRequests();
    Parameter("HeartbeatTimeout")->SetValue(4000);
    EXPECT_THAT(Requests(), testing::IsEmpty());
}

TEST_F(DeviceTest, ReportsAMissingPortAfterClosing) {
    Start(WithXml(Document("", "Other")));
    device->Open(Control);
    EXPECT_EQ(thrownBy([&] { device->Close(); }),
              "Access: Cannot invalidate Device node. Reference not set for '" + Name() + "'.");
    EXPECT_FALSE(device->IsOpen());
    EXPECT_EQ(Privilege(), 0u);
}

TEST_F(DeviceTest, HeartbeatTimeoutsFollowEachOther) {
    Start();
    EXPECT_EQ(Parameter("HeartbeatTimeout")->GetValue(), 300000);
    device->Open(Control);
    EXPECT_EQ(Feature("GevHeartbeatTimeout")->GetValue(), 300000);
    cameras.clearRequests();
    Feature("GevHeartbeatTimeout")->SetValue(5000);
    EXPECT_EQ(Parameter("HeartbeatTimeout")->GetValue(), 5000);
    EXPECT_EQ(Register(0x0938), 5000u);
    Parameter("HeartbeatTimeout")->SetValue(7000);
    EXPECT_EQ(Feature("GevHeartbeatTimeout")->GetValue(), 7000);
    EXPECT_EQ(Register(0x0938), 7000u);
    // Each change is written by the feature and by the channel; were there more, they would go back and forth.
    EXPECT_LE(cameras.requests().size(), 6u);
    // A value that the channel refuses stays on the camera's side.
    Feature("GevHeartbeatTimeout")->SetValue(100);
    EXPECT_EQ(Parameter("HeartbeatTimeout")->GetValue(), 7000);
    device->Close();
    Parameter("HeartbeatTimeout")->SetValue(6000);
    device->Open(Control);
    EXPECT_EQ(Register(0x0938), 6000u);
    EXPECT_EQ(Feature("GevHeartbeatTimeout")->GetValue(), 6000);
}

TEST_F(DeviceTest, HeartbeatTimeoutComesFromTheEnvironment) {
    Start();
    const struct {
        const char *text;
        int timeout;
        const char *failure;
    } cases[] = {{"5000", 5000, ""}, {"4294967296", 300000, ""}, {"100", 100, "(0xE1000018)"}};
    for (const auto &row : cases) {
        setenv("CORVO_GIGE_HEARTBEAT", row.text, 1);
        device = CreateGigEDevice(Info());
        EXPECT_EQ(Parameter("HeartbeatTimeout")->GetValue(), row.timeout);
        EXPECT_THAT(thrownBy([&] { device->Open(Control); }), testing::EndsWith(row.failure));
        EXPECT_EQ(device->IsOpen(), *row.failure == 0) << row.text;
    }
    unsetenv("CORVO_GIGE_HEARTBEAT");
}

TEST_F(DeviceTest, ParametersReachTheChannel) {
    Start();
    Parameter("MaxRetryCountRead")->SetValue(4); // while closed, for the next opening
    device->Open(Control);
    Parameter("ReadTimeout")->SetValue(20);
    Parameter("WriteTimeout")->SetValue(30);
    Parameter("MaxRetryCountWrite")->SetValue(1);
    GenApi::CBooleanPtr(device->GetTLNodeMap()->GetNode("CommandDuplicationEnable"))->SetValue(true);
    const GenApi::CRegisterPtr name = device->GetNodeMap()->GetNode("DeviceID");
    std::uint8_t bytes[16];
    Silence();
    cameras.clearRequests();
    EXPECT_EQ(thrownBy([&] { name->Get(bytes, sizeof bytes); }),
              std::string("Runtime: Failed to read memory at 0xd8, 0x10 bytes. ") + GxStatusText(0xE101800B).c_str());
    EXPECT_EQ(Requests().size(), 10u); // 5 attempts, each sent twice
    const auto attempts = cameras.requests();
    EXPECT_LT(attempts.back().time - attempts.front().time, std::chrono::milliseconds(190)); // not 4 times 200 ms
    const GenApi::CIntegerPtr count = Parameter("ReadWriteTimeoutCount");
    EXPECT_EQ(count->GetValue(), 5);
    device->Close();
    EXPECT_EQ(count->GetAccessMode(), GenApi::NA);

    Revive();
    device->Open(Control);
    Silence();
    cameras.clearRequests();
    EXPECT_THAT(thrownBy([&] { Feature("Width")->SetValue(640); }), testing::HasSubstr("(0xE101800B)"));
    EXPECT_EQ(Requests().size(), 4u); // the parameters count for the next opening, too
}

TEST_F(DeviceTest, PortUsesRegisterAndMemoryCommands) {
    Start();
    CGxPort port;
    std::uint8_t bytes[8] = {};
    EXPECT_EQ(thrownBy([&] { port.Read(bytes, 0, 4); }), "LogicalError: Control channel not open.");
    EXPECT_EQ(thrownBy([&] { port.Write(bytes, 0, 4); }), "LogicalError: Control channel not open.");
    ControlChannelPtr channel;
    ASSERT_EQ(OpenControlChannel(Info(), GEV_CONTROL_ACCESS, &channel), 0u);
    cameras.writeRegister(mac, 0xA004, 0x00000102);
    port.AttachControlChannel(*channel, Control);
    cameras.clearRequests();
    const std::uint8_t word[] = {0x12, 0x34, 0x56, 0x78};
    port.Write(word, 0xA000, 4);
    port.Read(bytes, 0xA004, 4);
    EXPECT_THAT(std::vector<int>(bytes, bytes + 4), ElementsAre(0, 0, 1, 2));
    port.Read(bytes, 0xA000, 8);
    EXPECT_THAT(bytes, ElementsAre(0x12, 0x34, 0x56, 0x78, 0, 0, 1, 2));
    port.Write(bytes, 0xA008, 8);
    EXPECT_EQ(Register(0xA008), 0x12345678u);
    EXPECT_THAT(Requests(), ElementsAre("0082 0000A00012345678", "0080 0000A004", "0084 0000A00000000008",
                                        "0086 0000A0081234567800000102"));
    for (const auto &[address, length] :
         {std::pair<std::int64_t, std::int64_t>(0x100000000, 4), {-4, 4}, {0xFFFFFFFC, 8}})
        EXPECT_THAT(thrownBy([&] { port.Read(bytes, address, length); }), testing::HasSubstr("(0xE1000006)"));
    port.DetachControlChannel();
    EXPECT_EQ(port.GetAccessMode(), GenApi::NI);

    CControlChannelStatisticPort statistics;
    EXPECT_EQ(thrownBy([&] { statistics.Read(bytes, 8, 4); }),
              "Access: Control channel statistic port is not readable.");
    statistics.AttachControlChannel(*channel);
    EXPECT_EQ(thrownBy([&] { statistics.Read(bytes, 8, 8); }), "Access: Control channel statistic port read failed.");
    EXPECT_EQ(thrownBy([&] { statistics.Write(bytes, 8, 4); }),
              "Access: Control channel statistic port is not writable.");
}

} // namespace
