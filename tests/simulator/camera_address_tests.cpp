// Discovery, FORCEIP, the vendor command and the IP cycle: what happens before anybody has control.
#include "Conversation.h"
#include "camsim/Scene.h"

#include <gmock/gmock.h>

using namespace camsim;
using namespace std::chrono_literals;

namespace {

const char mac[] = "025AE3010203";

/// A camera at 192.168.1.10/24 but for what the settings, each behind a comma, say.
CameraConfig cameraWith(const std::string &settings = "") {
    return parseCameras("xml=none,ip=192.168.1.10/24 via 192.168.1.254,enabled=persistent+lla" + settings)[0];
}

std::string addressOf(const Camera &camera) { return camera.current() ? camera.current()->address.toString() : "none"; }

TEST(CameraDiscovery, AcknowledgesWithTheDiscoveryBlock) {
    // The serial number fills its field: no terminator.
    Conversation talk(cameraWith(",manufacturer=Maker,version=V1,info=I,serial=1234567890123456,name=left,model=M"));
    const auto replies = talk.send(wire::discovery);
    ASSERT_EQ(replies.size(), 1u);
    EXPECT_EQ(replies[0].source.toString(), "192.168.1.10");
    EXPECT_EQ(replies[0].destination, talk.application);
    const std::string expected = "0000 0003 00F8 FFFF"                // status, code, length, id
                                 "0002 0000"                          // version 2.0
                                 "80000001"                           // big-endian, UTF-8
                                 "0000 025AE3010203"                  // MAC
                                 "00000007 00000005"                  // supported, enabled modes
                                 + wire::zeros(12) + "C0A8010A"       // 192.168.1.10
                                 + wire::zeros(12) + "FFFFFF00"       // mask
                                 + wire::zeros(12) + "C0A801FE"       // gateway 192.168.1.254
                                 + "4D616B6572" + wire::zeros(27)     // "Maker"
                                 + "4D" + wire::zeros(31)             // "M"
                                 + "5631" + wire::zeros(30)           // "V1"
                                 + "49" + wire::zeros(47)             // "I"
                                 + "31323334353637383930313233343536" // serial, full
                                 + "6C656674" + wire::zeros(12);      // "left"
    EXPECT_EQ(wire::text(replies[0].bytes), wire::text(wire::bytes(expected)));
    EXPECT_EQ(wire::text(talk.camera.readMemory(0, 248)),
              wire::text({replies[0].bytes.begin() + 8, replies[0].bytes.end()}));
}

TEST(CameraDiscovery, AnswersWhereACameraCan) {
    const char all[] = "255.255.255.255";
    const char never[] = ",ip=192.168.1.10/24,broadcast-ack=never";
    const struct {
        const char *what, *requester, *destination, *command, *settings;
        std::vector<std::string> answers; ///< destination, "via" gateway
    } cases[] = {
        {"other unicast", "192.168.1.1", "192.168.1.11", wire::discovery, "", {}},
        {"other subnet's broadcast", "192.168.1.1", "192.168.255.255", wire::discovery, ",broadcast-ack=always", {}},
        {"foreign", "10.0.0.1", all, wire::discovery, ",ip=192.168.1.10/24,broadcast-ack=always", {}},
        {"foreign, useless gateway", "10.0.0.1", all, wire::discovery, ",ip=192.168.1.10/24 via 10.0.0.9", {}},
        {"flag, not needed", "192.168.1.1", all, wire::discoveryBroadcastAck, "", {"192.168.1.1"}},
        {"flag, unsupported", "10.0.0.1", all, wire::discoveryBroadcastAck, never, {}},
        {"flag, both", "192.168.1.1", all, wire::discoveryBroadcastAck, ",broadcast-ack=always", {all, "192.168.1.1"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Conversation talk(cameraWith(c.settings));
        talk.application.address = Ipv4::parse(c.requester);
        std::vector<std::string> answers;
        for (const Reply &reply : talk.send(c.command, c.destination)) {
            EXPECT_EQ(reply.destination.port, 40000);
            answers.push_back(reply.destination.address.toString() +
                              (reply.gateway ? " via " + reply.gateway.toString() : ""));
        }
        EXPECT_EQ(answers, c.answers);
    }
}

TEST(CameraDiscovery, IgnoresWhatIsNoCommand) {
    Conversation talk(cameraWith());
    for (const char *hex : {"", "42", "42 01 0002 0000 FF", "43 01 0002 0000 FFFF", "42 01 0002 0001 FFFF",
                            "42 01 0002 0000 FFFF 00", "42 01 0002 0004 FFFF 00000000", "42 00 0002 0000 FFFF",
                            "42 01 0080 0004 0001 00000A00" /* a register command as broadcast */})
        EXPECT_TRUE(talk.send(hex).empty()) << hex;
}

TEST(CameraForceIp, TakesAddressesThatAHostCanHave) {
    const std::string good = wire::forceIp(mac, "C0A80132", "FFFFFF00");
    const struct {
        const char *what;
        std::string request;
        const char *ack, *address;
    } cases[] = {
        {"reserved MAC bytes", std::string(good).replace(21, 4, "FFFF"), "00 00 00 05 00 00 FF FF", "192.168.1.50"},
        {"other MAC", wire::forceIp("025AE3010204", "C0A80132", "FFFFFF00"), "", "192.168.1.10"},
        {"short", good.substr(0, good.size() - 2), "", "192.168.1.10"},
        {"wrong length field", std::string(good).replace(11, 4, "0037"), "", "192.168.1.10"},
        {"subnet broadcast", wire::forceIp(mac, "C0A801FF", "FFFFFF00"), "80 02 00 05 00 00 FF FF", "192.168.1.10"},
        {"multicast", wire::forceIp(mac, "E0000001", "FFFFFF00"), "80 02 00 05 00 00 FF FF", "192.168.1.10"},
        {"mask with a hole", wire::forceIp(mac, "C0A80132", "FF00FF00"), "80 02 00 05 00 00 FF FF", "192.168.1.10"},
        {"no mask", wire::forceIp(mac, "C0A80132", "00000000"), "80 02 00 05 00 00 FF FF", "192.168.1.10"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Conversation talk(cameraWith());
        const auto replies = talk.send(c.request);
        EXPECT_EQ(replies.empty() ? "" : wire::text(replies[0].bytes), c.ack);
        EXPECT_EQ(addressOf(talk.camera), c.address);
    }
}

TEST(CameraForceIp, AcknowledgesFromTheChosenAddressWhereThatIsPossible) {
    const std::pair<const char *, std::vector<std::string>> cases[] = {
        {",ip=10.0.0.5/8,force-ip-ack=new", {"192.168.1.50"}},
        {",ip=10.0.0.5/8,force-ip-ack=old", {}}, // which cannot reach the requester
        {",force-ip-ack=old", {"192.168.1.10"}}};
    for (const auto &[settings, sources] : cases) {
        Conversation talk(cameraWith(settings));
        std::vector<std::string> seen;
        for (const Reply &reply : talk.send(wire::forceIp(mac, "C0A80132", "FFFFFF00")))
            seen.push_back(reply.source.toString());
        EXPECT_EQ(seen, sources) << settings;
        EXPECT_EQ(addressOf(talk.camera), "192.168.1.50");
    }
}

TEST(CameraIpCycle, IsSilentThenTakesTheFirstEnabledSource) {
    const std::string lease = ",dhcp=192.168.1.77/24";
    const struct {
        const char *what;
        std::uint32_t enabled;
        std::string settings;
        const char *address;
    } cases[] = {
        {"persistent first", 7, lease, "192.168.1.10"},
        {"persistent enabled but empty", 7, lease + ",persistent=0.0.0.0/24", "192.168.1.77"},
        {"no DHCP server", 6, "", "169.254.3.3"},
        {"link-local as last resort", 0, lease, "169.254.3.3"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        CameraConfig config = cameraWith(",silence=200,forced=192.168.1.99/24" + c.settings);
        config.ipEnabled = c.enabled;
        Conversation talk(config);
        EXPECT_EQ(addressOf(talk.camera), "192.168.1.99");
        EXPECT_TRUE(talk.send(wire::forceIp(mac, "00000000", "00000000")).empty());
        talk.pass(199ms);
        EXPECT_EQ(addressOf(talk.camera), "none");
        EXPECT_TRUE(talk.send(wire::discoveryBroadcastAck).empty());
        EXPECT_EQ(talk.camera.nextDeadline(), talk.now + 1ms);
        talk.pass(1ms);
        EXPECT_EQ(addressOf(talk.camera), c.address);
        EXPECT_EQ(talk.camera.nextDeadline(), std::nullopt);
    }
}

TEST(CameraIpCycle, PowerCycleKeepsPersistentSettingsOnly) {
    Conversation talk(cameraWith());
    talk.ask("42 01 0082 0010 0001 00000A00 00000002 0000064C C0A80114");
    talk.ask("42 01 0086 0014 0002 000000E8 6E6577 00" + wire::zeros(12));
    talk.ask("42 01 0082 0008 0003 00000938 00002710");
    EXPECT_EQ(wire::text(talk.camera.readMemory(0x0938, 4)), "00 00 27 10");
    EXPECT_EQ(addressOf(talk.camera), "192.168.1.10"); // registers take effect with the next cycle
    talk.camera.powerCycle(talk.now);
    EXPECT_FALSE(talk.camera.status().holder);
    talk.pass(100ms);
    EXPECT_EQ(addressOf(talk.camera), "192.168.1.20");
    EXPECT_EQ(talk.camera.status().userName, "new");
    EXPECT_EQ(wire::text(talk.camera.readMemory(0x0938, 4)), "00 00 0B B8"); // 3000 ms again
}

TEST(CameraVendorCommand, ChangesNoMoreThanItMay) {
    const auto request = [](const char *modes, const char *ip, const char *name) {
        return wire::setIpConfig(mac, modes, ip, "FFFF0000", "C0A80001", name);
    };
    const std::string ok = "00 00 80 05 00 00 FF FF";
    const std::string good = request("00000005", "C0A80014", "6E6577");
    const struct {
        const char *what;
        std::string request, ack;
        std::uint32_t enabled;
    } cases[] = {
        {"mode only", request("00000004", "00000000", ""), ok, 4},
        {"unsupported bits", request("FFFFFFFE", "00000000", ""), ok, 6},
        {"bad address", request("00000005", "FFFFFFFF", "6E6577"), "80 02 80 05 00 00 FF FF", 5},
        {"short", good.substr(0, good.size() - 2), "", 5},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Conversation talk(cameraWith(",name=old"));
        talk.application.address = Ipv4::parse("10.0.0.1");
        const auto replies = talk.send(c.request);
        EXPECT_EQ(replies.empty() ? "" : wire::text(replies[0].bytes), c.ack);
        for (const Reply &reply : replies)
            EXPECT_EQ(reply.destination.toString(), "255.255.255.255:40000");
        const CameraStatus status = talk.camera.status();
        EXPECT_EQ(status.ipEnabled, c.enabled);
        EXPECT_EQ(status.persistent.address.toString(), "192.168.1.10");
        EXPECT_EQ(status.userName, "old");
        EXPECT_EQ(addressOf(talk.camera), "192.168.1.10");
    }
}

} // namespace
