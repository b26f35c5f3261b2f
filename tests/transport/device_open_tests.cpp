#include "DeviceFixture.h"

#include "GenApi/IRegister.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

using namespace Corvo;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

TEST_F(DeviceTest, AccessModesDecidePrivilegeAndRights) {
    Start();
    const struct {
        AccessModeSet modes;
        std::uint32_t privilege; // as the camera shows it: exclusive access wins
        const char *firstRequest;
        GenApi::EAccessMode access;
    } cases[] = {
        {Stream, 0, "80 00000004", GenApi::RO},
        {Control, 2, "82 00000a0000000002", GenApi::RW},
        {Exclusive, 1, "82 00000a0000000001", GenApi::RO},
        {Control | Exclusive, 1, "82 00000a0000000003", GenApi::RW},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.modes.to_string());
        EXPECT_EQ(Feature("Width")->GetAccessMode(), GenApi::NI);
        cameras.clearRequests();
        device->Open(row.modes);
        EXPECT_TRUE(device->IsOpen());
        EXPECT_EQ(device->AccessMode(), row.modes);
        EXPECT_EQ(Privilege(), row.privilege);
        EXPECT_EQ(Requests().front(), row.firstRequest);
        EXPECT_EQ(Feature("Width")->GetAccessMode(), row.access);
        EXPECT_EQ(Feature("Width")->GetValue(), 1920);
        EXPECT_EQ(Parameter("WriteTimeout")->GetAccessMode(), row.access);
        device->Close();
        EXPECT_TRUE(device->AccessMode().none());
        EXPECT_EQ(Privilege(), 0u);
        EXPECT_EQ(Parameter("WriteTimeout")->GetAccessMode(), GenApi::RW);
    }
}

TEST_F(DeviceTest, MisuseIsRefusedAndChangesNothing) {
    Start();
    DeviceCallback callback = [](ICorvoDevice *) {};
    String_t text;
    const std::pair<std::string, std::function<void()>> operations[] = {
        {"(RegisterRemovalCallback)", [&] { device->RegisterRemovalCallback(callback); }},
        {"(DeregisterRemovalCallback)", [&] { device->DeregisterRemovalCallback(1); }},
        {"(ChangeIpConfiguration)", [&] { device->ChangeIpConfiguration(true, true); }},
        {"(GetPersistentIpAddress)", [&] { device->GetPersistentIpAddress(text, text, text); }},
        {"(SetPersistentIpAddress)", [&] { device->SetPersistentIpAddress(text, text, text); }},
    };
    for (const auto &[name, operation] : operations)
        EXPECT_EQ(thrownBy(operation), "LogicalError: Camera object must not be closed " + name);
    EXPECT_EQ(thrownBy([&] { device->Close(); }), "LogicalError: Control channel already closed.");
    device->Open(Stream);
    for (std::size_t i = 2; i < std::size(operations); ++i)
        EXPECT_EQ(thrownBy(operations[i].second),
                  "LogicalError: Unsupported mode: Control access is required " + operations[i].first);
    device->Close();
    EXPECT_EQ(device->GetNumStreamGrabberChannels(), 1u); // though there is none
    device->Open(Control);
    EXPECT_EQ(thrownBy([&] { device->Open(Stream); }), "LogicalError: Device 'NAME' already open.");
    Feature("Width")->SetValue(640);
    EXPECT_EQ(Register(0xA000), 640u);
}

TEST_F(DeviceTest, HeldAndSilentCamerasCannotBeOpened) {
    Start();
    const std::string start = "Runtime: Failed to open 'NAME'. The device is ";
    Hold(GEV_CONTROL_ACCESS);
    EXPECT_EQ(thrownBy([&] { device->Open(Control); }),
              start + "controlled by another application. Err: " + GxStatusText(0xE1018006).c_str() + "\n");
    device->Open(Stream); // reading is not denied
    device->Close();
    Hold(GEV_EXCLUSIVE_CONTROL_ACCESS);
    EXPECT_THAT(thrownBy([&] { device->Open(Stream); }), HasSubstr("(0xE1018006)\n"));
    Silence();
    EXPECT_EQ(thrownBy([&] { device->Open(Control); }),
              start + "not reachable or controlled by another application. Err: " + GxStatusText(0xE101800B).c_str());
    EXPECT_FALSE(device->IsOpen());
    Revive();
    device->Open(Control);
}

/// Whether its timeout is implemented says a register that nobody may read.
TEST_F(DeviceTest, IsNotOpenWhenLostMeanwhile) {
    Start(WithXml(Document(IntReg("Flag", "0xA000") + "<Integer Name='GevHeartbeatTimeout'><pIsImplemented>Flag"
                                                      "</pIsImplemented><Value>1</Value></Integer>")));
    cameras.setFaults(camsim::parseFaults("silent-after=4")); // privilege, mode, capability and heartbeat
    EXPECT_THAT(thrownBy([&] { device->Open(Control); }), HasSubstr("Failed to read memory at 0xa000, 0x4 bytes. "));
    EXPECT_FALSE(device->IsOpen());
}

TEST_F(DeviceTest, ReportsAMissingPortAfterClosing) {
    Start(WithXml(Document("", "Other")));
    device->Open(Control);
    EXPECT_EQ(thrownBy([&] { device->Close(); }),
              "Access: Cannot invalidate Device node. Reference not set for 'NAME'.");
    EXPECT_FALSE(device->IsOpen());
    EXPECT_EQ(Privilege(), 0u);
}

TEST_F(DeviceTest, HeartbeatTimeoutsFollowEachOther) {
    setenv("CORVO_GIGE_HEARTBEAT", "8000", 1);
    Start();
    unsetenv("CORVO_GIGE_HEARTBEAT");
    device->Open(Control);
    const auto expect = [this](std::uint32_t timeout) {
        EXPECT_EQ(Parameter("HeartbeatTimeout")->GetValue(), timeout);
        EXPECT_EQ(Feature("GevHeartbeatTimeout")->GetValue(), timeout);
        EXPECT_EQ(Register(0x0938), timeout);
    };
    expect(8000);
    cameras.clearRequests();
    Feature("GevHeartbeatTimeout")->SetValue(5000);
    expect(5000);
    Parameter("HeartbeatTimeout")->SetValue(7000);
    expect(7000);
    // Each change is written by the feature and by the channel; were there more, they would go back and forth.
    EXPECT_LE(cameras.requests().size(), 6u);
    Feature("GevHeartbeatTimeout")->SetValue(100); // which no channel accepts
    EXPECT_EQ(Parameter("HeartbeatTimeout")->GetValue(), 7000);
    Parameter("HeartbeatTimeout")->SetValue(7500);
    device->Close();
    EXPECT_EQ(Register(0x0938), 7500u) << "what was set last stays in the camera";
    Parameter("HeartbeatTimeout")->SetValue(6000);
    device->Open(Control);
    expect(6000);
}

TEST_F(DeviceTest, ATimeoutThatTheChannelRefusesReachesTheCamera) {
    Start(WithXml(Document(IntReg("GevHeartbeatTimeout", "0xA000"))));
    device->Open(Control);
    Parameter("HeartbeatTimeout")->SetValue(400, false);
    EXPECT_EQ(Register(0xA000), 400u);
}

/// The camera never waits longer than 900 ms.
TEST_F(DeviceTest, ACoercedHeartbeatTimeoutReachesTheChannel) {
    Start(WithXml(Document("<IntConverter Name='GevHeartbeatTimeout'><FormulaTo>FROM &gt; 900 ? 900 : FROM</FormulaTo>"
                           "<FormulaFrom>TO</FormulaFrom><pValue>Timeout</pValue></IntConverter>"
                           "<IntReg Name='Timeout'><Address>0x938</Address><Length>4</Length><AccessMode>RW"
                           "</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable></IntReg>")));
    device->Open(Control);
    Parameter("HeartbeatTimeout")->SetValue(60000);
    EXPECT_EQ(Parameter("HeartbeatTimeout")->GetValue(), 900);
    cameras.clearRequests();
    EXPECT_TRUE(eventually([this] { return !cameras.requests().empty(); })); // a heartbeat
}

TEST_F(DeviceTest, ParametersReachTheChannel) {
    const auto requestsOf = [this](std::uint16_t command) {
        std::vector<camsim::ReceivedRequest> requests = cameras.requests();
        requests.erase(std::remove_if(requests.begin(), requests.end(),
                                      [command](const auto &request) { return request.command() != command; }),
                       requests.end());
        return requests;
    };
    Start();
    Parameter("MaxRetryCountRead")->SetValue(4); // while closed, for the next opening
    device->Open(Control);
    Parameter("ReadTimeout")->SetValue(20);
    GenApi::CBooleanPtr(device->GetTLNodeMap()->GetNode("CommandDuplicationEnable"))->SetValue(true);
    Silence();
    cameras.clearRequests();
    std::uint8_t bytes[16];
    EXPECT_EQ(thrownBy([&] { GenApi::CRegisterPtr(device->GetNodeMap()->GetNode("DeviceID"))->Get(bytes, 16); }),
              std::string("Runtime: Failed to read memory at 0xd8, 0x10 bytes. ") + GxStatusText(0xE101800B).c_str());
    const auto attempts = requestsOf(TAG_READMEM_CMD);
    EXPECT_EQ(attempts.size(), 10u); // 5 attempts, each sent twice
    EXPECT_LT(attempts.back().time - attempts.front().time, std::chrono::milliseconds(190)); // not 4 times 200 ms
    const GenApi::CIntegerPtr count = Parameter("ReadWriteTimeoutCount");
    EXPECT_EQ(count->GetValue(), 5);
    device->Close();
    EXPECT_EQ(count->GetAccessMode(), GenApi::NA);

    Revive();
    device->Open(Control);
    Parameter("WriteTimeout")->SetValue(20);
    Parameter("MaxRetryCountWrite")->SetValue(3);
    Silence();
    cameras.clearRequests();
    thrownBy([&] { Feature("Width")->SetValue(640); });
    const auto writes = requestsOf(TAG_WRITEREG_CMD);
    EXPECT_GE(writes.size(), 8u); // and then the privilege is given back, perhaps still to come
    EXPECT_LE(writes.size(), 9u);
    EXPECT_LT(writes.back().time - writes.front().time, std::chrono::milliseconds(190)); // not 3 times 200 ms
}

TEST_F(DeviceTest, PortUsesRegisterAndMemoryCommands) {
    Start();
    CGxPort port;
    std::uint8_t bytes[8] = {};
    EXPECT_EQ(thrownBy([&] { port.Read(bytes, 0, 4); }), "LogicalError: Control channel not open.");
    EXPECT_EQ(thrownBy([&] { port.Write(bytes, 0, 4); }), "LogicalError: Control channel not open.");
    ControlChannelPtr channel;
    ASSERT_EQ(OpenControlChannel(Info(), GEV_CONTROL_ACCESS, &channel), 0u);
    port.AttachControlChannel(*channel, Control);
    cameras.clearRequests();
    const std::uint8_t word[] = {0x12, 0x34, 0x56, 0x78};
    port.Write(word, 0xA000, 4);
    port.Read(bytes + 4, 0xA004, 4);
    EXPECT_THAT(bytes, ElementsAre(0, 0, 0, 0, 0, 0, 0x04, 0xB0));
    port.Read(bytes, 0xA000, 8);
    EXPECT_THAT(bytes, ElementsAre(0x12, 0x34, 0x56, 0x78, 0, 0, 0x04, 0xB0));
    port.Write(bytes, 0xA008, 8);
    EXPECT_THAT(Requests(), ElementsAre("82 0000a00012345678", "80 0000a004", "84 0000a00000000008",
                                        "86 0000a00812345678000004b0"));
    for (const std::int64_t address : {0x100000000L, -7L, 0xFFFFFFFCL})
        EXPECT_THAT(thrownBy([&] { port.Read(bytes, address, 8); }), HasSubstr("(0xE1000006)"));
    Silence(); // so that a transfer takes three times 200 ms
    std::thread reader([&] { thrownBy([&] { port.Read(bytes, 0xA000, 4); }); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const auto start = std::chrono::steady_clock::now();
    port.DetachControlChannel();
    EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300)) << "the channel was in use";
    reader.join();

    CControlChannelStatisticPort statistics;
    EXPECT_EQ(thrownBy([&] { statistics.Read(bytes, 8, 4); }),
              "Access: Control channel statistic port is not readable.");
    statistics.AttachControlChannel(*channel);
    EXPECT_EQ(thrownBy([&] { statistics.Read(bytes, 8, 8); }), "Access: Control channel statistic port read failed.");
    EXPECT_EQ(thrownBy([&] { statistics.Write(bytes, 8, 4); }),
              "Access: Control channel statistic port is not writable.");
}

} // namespace
