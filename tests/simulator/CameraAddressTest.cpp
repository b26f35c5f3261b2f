// Discovery, FORCEIP, the vendor command and the IP cycle: what happens before anybody has control.
#include "WireText.h"

#include <gtest/gtest.h>

#include <optional>

using namespace camsim;
using namespace std::chrono_literals;

namespace {

const char mac[] = "025AE3010203";
const char discovery[] = "42 01 0002 0000 FFFF";
const char discoveryBroadcastAck[] = "42 19 0002 0000 FFFF";

IpSettings settings(const std::string &address, const std::string &mask, const std::string &gateway = "0.0.0.0") {
    return {Ipv4::parse(address), Ipv4::parse(mask), Ipv4::parse(gateway)};
}

CameraConfig cameraAt(const IpSettings &persistent) {
    CameraConfig config;
    config.persistent = persistent;
    config.ipEnabled = GEV_IP_CONFIG_PERSISTENT_IP | GEV_IP_CONFIG_LLA;
    return config;
}

CameraConfig localCamera() { return cameraAt(settings("192.168.1.10", "255.255.255.0", "192.168.1.254")); }

std::string addressOf(const Camera &camera) { return camera.current() ? camera.current()->address.toString() : "none"; }

TEST(CameraDiscovery, AcknowledgesWithTheDiscoveryBlock) {
    CameraConfig config = localCamera();
    config.manufacturer = "Maker";
    config.model = std::string(32, 'M'); // fills its field: no terminator
    config.deviceVersion = "V1";
    config.manufacturerInfo = "I";
    config.serial = "1234567890123456";
    config.userName = "left";
    Conversation talk(config);
    const auto replies = talk.send(discovery);
    ASSERT_EQ(replies.size(), 1u);
    EXPECT_EQ(replies[0].source.toString(), "192.168.1.10");
    EXPECT_EQ(replies[0].destination, talk.application);
    std::string models;
    for (int i = 0; i < 32; ++i)
        models += "4D";
    const std::string expected = "0000 0003 00F8 FFFF"                // status, code, length, id
                                 "0002 0000"                          // version 2.0
                                 "80000001"                           // big-endian, UTF-8
                                 "0000 025AE3010203"                  // MAC
                                 "00000007 00000005"                  // supported, enabled modes
                                 + wire::zeros(12) + "C0A8010A"       // 192.168.1.10
                                 + wire::zeros(12) + "FFFFFF00"       // mask
                                 + wire::zeros(12) + "C0A801FE"       // gateway 192.168.1.254
                                 + "4D616B6572" + wire::zeros(27)     // "Maker"
                                 + models                             //
                                 + "5631" + wire::zeros(30)           // "V1"
                                 + "49" + wire::zeros(47)             // "I"
                                 + "31323334353637383930313233343536" // serial, full
                                 + "6C656674" + wire::zeros(12);      // "left"
    EXPECT_EQ(wire::text(replies[0].bytes), wire::text(wire::bytes(expected)));
    EXPECT_EQ(wire::text(talk.camera.readMemory(0, 248)),
              wire::text({replies[0].bytes.begin() + 8, replies[0].bytes.end()}));
}

TEST(CameraDiscovery, AnswersWhereACameraCan) {
    struct Case {
        const char *what;
        const char *requester;
        const char *destination;
        const char *command;
        BroadcastAck broadcastAck;
        const char *gateway;
        std::vector<std::string> answers; ///< destination, "via" gateway
    };
    const Case cases[] = {
        {"local", "192.168.1.1", "255.255.255.255", discovery, BroadcastAck::WhenNeeded, "0.0.0.0", {"192.168.1.1"}},
        {"directed", "192.168.1.1", "192.168.1.255", discovery, BroadcastAck::WhenNeeded, "0.0.0.0", {"192.168.1.1"}},
        {"unicast", "192.168.1.1", "192.168.1.10", discovery, BroadcastAck::WhenNeeded, "0.0.0.0", {"192.168.1.1"}},
        {"other unicast", "192.168.1.1", "192.168.1.11", discovery, BroadcastAck::WhenNeeded, "0.0.0.0", {}},
        {"other subnet's broadcast", "192.168.1.1", "192.168.255.255", discovery, BroadcastAck::Always, "0.0.0.0", {}},
        {"foreign", "10.0.0.1", "255.255.255.255", discovery, BroadcastAck::Always, "0.0.0.0", {}},
        {"foreign, gateway",
         "10.0.0.1",
         "255.255.255.255",
         discovery,
         BroadcastAck::WhenNeeded,
         "192.168.1.254",
         {"10.0.0.1 via 192.168.1.254"}},
        {"foreign, useless gateway",
         "10.0.0.1",
         "255.255.255.255",
         discovery,
         BroadcastAck::WhenNeeded,
         "10.0.0.9",
         {}},
        {"flag, not needed",
         "192.168.1.1",
         "255.255.255.255",
         discoveryBroadcastAck,
         BroadcastAck::WhenNeeded,
         "0.0.0.0",
         {"192.168.1.1"}},
        {"flag, needed",
         "10.0.0.1",
         "255.255.255.255",
         discoveryBroadcastAck,
         BroadcastAck::WhenNeeded,
         "0.0.0.0",
         {"255.255.255.255"}},
        {"flag, unsupported", "10.0.0.1", "255.255.255.255", discoveryBroadcastAck, BroadcastAck::Never, "0.0.0.0", {}},
        {"flag, both",
         "192.168.1.1",
         "255.255.255.255",
         discoveryBroadcastAck,
         BroadcastAck::Always,
         "0.0.0.0",
         {"255.255.255.255", "192.168.1.1"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        CameraConfig config = cameraAt(settings("192.168.1.10", "255.255.255.0", c.gateway));
        config.broadcastAck = c.broadcastAck;
        Conversation talk(config);
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
    Conversation talk(localCamera());
    for (const char *hex : {"", "42", "42 01 0002 0000 FF", "43 01 0002 0000 FFFF", "42 01 0002 0001 FFFF",
                            "42 01 0002 0000 FFFF 00", "42 01 0002 0004 FFFF 00000000", "42 00 0002 0000 FFFF",
                            "42 01 0080 0004 0001 00000A00" /* a register command as broadcast */})
        EXPECT_TRUE(talk.send(hex).empty()) << hex;
}

TEST(CameraDiscovery, UnreachableCameraHearsBroadcastsOnly) {
    CameraConfig config = localCamera();
    config.reachable = false;
    Conversation talk(config);
    EXPECT_EQ(talk.send(discovery).size(), 1u);
    EXPECT_EQ(talk.ask(discovery), "");
    talk.camera.setReachable(true);
    EXPECT_NE(talk.ask(discovery), "");
}

TEST(CameraForceIp, TakesAddressesThatAHostCanHave) {
    struct Case {
        const char *what;
        std::string request;
        const char *ack;
        const char *address;
    };
    const std::string good = wire::forceIp(mac, "C0A80132", "FFFFFF00");
    const Case cases[] = {
        {"good", good, "00 00 00 05 00 00 FF FF", "192.168.1.50"},
        {"reserved MAC bytes", std::string(good).replace(21, 4, "FFFF"), "00 00 00 05 00 00 FF FF", "192.168.1.50"},
        {"other MAC", wire::forceIp("025AE3010204", "C0A80132", "FFFFFF00"), "", "192.168.1.10"},
        {"short", good.substr(0, good.size() - 2), "", "192.168.1.10"},
        {"long", good + "00", "", "192.168.1.10"},
        {"wrong length field", std::string(good).replace(11, 4, "0037"), "", "192.168.1.10"},
        {"limited broadcast", wire::forceIp(mac, "FFFFFFFF", "FFFFFF00"), "80 02 00 05 00 00 FF FF", "192.168.1.10"},
        {"subnet broadcast", wire::forceIp(mac, "C0A801FF", "FFFFFF00"), "80 02 00 05 00 00 FF FF", "192.168.1.10"},
        {"multicast", wire::forceIp(mac, "E0000001", "FFFFFF00"), "80 02 00 05 00 00 FF FF", "192.168.1.10"},
        {"mask with a hole", wire::forceIp(mac, "C0A80132", "FF00FF00"), "80 02 00 05 00 00 FF FF", "192.168.1.10"},
        {"no mask", wire::forceIp(mac, "C0A80132", "00000000"), "80 02 00 05 00 00 FF FF", "192.168.1.10"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        Conversation talk(localCamera());
        const auto replies = talk.send(c.request);
        EXPECT_EQ(replies.empty() ? "" : wire::text(replies[0].bytes), c.ack);
        EXPECT_EQ(addressOf(talk.camera), c.address);
    }
}

TEST(CameraForceIp, AcknowledgesFromTheChosenAddressWhereThatIsPossible) {
    const std::string force = wire::forceIp(mac, "C0A80132", "FFFFFF00"); // into the requester's subnet
    for (const ForceIpAck from : {ForceIpAck::FromNewAddress, ForceIpAck::FromOldAddress}) {
        CameraConfig config = cameraAt(settings("10.0.0.5", "255.0.0.0"));
        config.forceIpAck = from;
        Conversation talk(config);
        const auto replies = talk.send(force);
        ASSERT_EQ(replies.size(), from == ForceIpAck::FromNewAddress ? 1u : 0u); // the old one cannot reach it
        for (const Reply &reply : replies)
            EXPECT_EQ(reply.source.toString(), "192.168.1.50");
        EXPECT_EQ(addressOf(talk.camera), "192.168.1.50");
    }
    CameraConfig config = localCamera();
    config.forceIpAck = ForceIpAck::FromOldAddress;
    Conversation talk(config);
    const auto replies = talk.send(force);
    ASSERT_EQ(replies.size(), 1u);
    EXPECT_EQ(replies[0].source.toString(), "192.168.1.10");
}

TEST(CameraForceIp, WhileControlled) {
    struct Case {
        WhileControlled policy;
        const char *ack;
        const char *address;
    };
    const Case cases[] = {{WhileControlled::Accept, "00 00 00 05 00 00 FF FF", "192.168.1.50"},
                          {WhileControlled::Refuse, "80 06 00 05 00 00 FF FF", "192.168.1.10"},
                          {WhileControlled::Ignore, "", "192.168.1.10"}};
    for (const Case &c : cases) {
        CameraConfig config = localCamera();
        config.whileControlled = c.policy;
        config.heldBy = Holder{{Ipv4::parse("192.168.1.7"), 5000}};
        Conversation talk(config);
        EXPECT_EQ(talk.ask(wire::forceIp(mac, "C0A80132", "FFFFFF00")), c.ack);
        EXPECT_EQ(addressOf(talk.camera), c.address);
    }
}

TEST(CameraIpCycle, IsSilentThenTakesTheFirstEnabledSource) {
    struct Case {
        const char *what;
        std::uint32_t enabled;
        bool persistent;
        bool lease;
        const char *address;
    };
    const Case cases[] = {
        {"persistent first", 7, true, true, "192.168.1.10"},
        {"persistent enabled but empty", 7, false, true, "192.168.1.77"},
        {"persistent disabled", 6, true, true, "192.168.1.77"},
        {"no DHCP server", 6, true, false, "169.254.3.3"},
        {"DHCP disabled", 4, true, true, "169.254.3.3"},
        {"link-local as last resort", 0, true, true, "169.254.3.3"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        CameraConfig config;
        config.ipEnabled = c.enabled;
        config.restartSilence = 200ms;
        if (c.persistent)
            config.persistent = settings("192.168.1.10", "255.255.255.0");
        if (c.lease)
            config.dhcpLease = settings("192.168.1.77", "255.255.255.0");
        config.forced = settings("192.168.1.99", "255.255.255.0");
        Conversation talk(config);
        EXPECT_EQ(addressOf(talk.camera), "192.168.1.99");
        EXPECT_TRUE(talk.send(wire::forceIp(mac, "00000000", "00000000")).empty());
        talk.pass(199ms);
        EXPECT_EQ(addressOf(talk.camera), "none");
        EXPECT_TRUE(talk.send(discoveryBroadcastAck).empty());
        EXPECT_EQ(talk.camera.nextDeadline(), talk.now + 1ms);
        talk.pass(1ms);
        EXPECT_EQ(addressOf(talk.camera), c.address);
        EXPECT_EQ(talk.camera.nextDeadline(), std::nullopt);
    }
}

TEST(CameraIpCycle, PowerCycleKeepsPersistentSettingsOnly) {
    CameraConfig config = localCamera();
    Conversation talk(config);
    EXPECT_EQ(talk.ask("42 01 0082 0010 0001 00000A00 00000002 0000064C C0A80114"),
              "00 00 00 83 00 04 00 01 00 00 00 02");
    EXPECT_EQ(talk.ask("42 01 0086 0014 0002 000000E8 6E6577 00" + wire::zeros(12)),
              "00 00 00 87 00 04 00 02 00 00 00 10");
    EXPECT_EQ(talk.ask("42 01 0082 0008 0003 00000938 00002710"), "00 00 00 83 00 04 00 03 00 00 00 01");
    EXPECT_EQ(addressOf(talk.camera), "192.168.1.10"); // registers take effect with the next cycle
    talk.camera.powerCycle(talk.now);
    EXPECT_FALSE(talk.camera.status().holder);
    talk.pass(100ms);
    EXPECT_EQ(addressOf(talk.camera), "192.168.1.20");
    EXPECT_EQ(talk.camera.status().userName, "new");
    EXPECT_EQ(wire::text(talk.camera.readMemory(0x0938, 4)), "00 00 0B B8"); // 3000 ms again
}

TEST(CameraVendorCommand, StoresOrRefuses) {
    const auto request = [](const std::string &flags, const std::string &to, const std::string &word,
                            const std::string &ip, const std::string &name) {
        return "42" + flags + "8004 004C FFFF 0000" + to + word + wire::zeros(12) + ip + wire::zeros(12) + "FFFF0000" +
               wire::zeros(12) + "C0A80001" + name + wire::zeros(16 - name.size() / 2);
    };
    const std::string ok = "00 00 80 05 00 00 FF FF";
    const std::string good = request("11", mac, "00000005", "C0A80014", "6E6577");
    struct Case {
        const char *what;
        VendorIpConfig behaviour;
        std::string request;
        std::string ack;
        std::uint32_t enabled;
        const char *persistent;
        const char *name;
    };
    const Case cases[] = {
        {"all", VendorIpConfig::Supported, good, ok, 5, "192.168.0.20", "new"},
        {"mode only", VendorIpConfig::Supported, request("11", mac, "00000004", "00000000", ""), ok, 4, "192.168.1.10",
         "old"},
        {"unsupported bits", VendorIpConfig::Supported, request("11", mac, "FFFFFFFE", "00000000", ""), ok, 6,
         "192.168.1.10", "old"},
        {"bad address", VendorIpConfig::Supported, request("11", mac, "00000005", "FFFFFFFF", "6E6577"),
         "80 02 80 05 00 00 FF FF", 5, "192.168.1.10", "old"},
        {"other MAC", VendorIpConfig::Supported, request("11", "025AE3010204", "00000006", "00000000", ""), "", 5,
         "192.168.1.10", "old"},
        {"short", VendorIpConfig::Supported, good.substr(0, good.size() - 2), "", 5, "192.168.1.10", "old"},
        {"not implemented", VendorIpConfig::NotImplemented, good, "80 01 80 05 00 00 FF FF", 5, "192.168.1.10", "old"},
        {"error", VendorIpConfig::Error, good, "8F FF 80 05 00 00 FF FF", 5, "192.168.1.10", "old"},
        {"silent", VendorIpConfig::Silent, good, "", 5, "192.168.1.10", "old"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        CameraConfig config = localCamera();
        config.vendorIpConfig = c.behaviour;
        config.userName = "old";
        Conversation talk(config);
        talk.application.address = Ipv4::parse("10.0.0.1");
        const auto replies = talk.send(c.request);
        EXPECT_EQ(replies.empty() ? "" : wire::text(replies[0].bytes), c.ack);
        for (const Reply &reply : replies)
            EXPECT_EQ(reply.destination.toString(), "255.255.255.255:40000");
        const CameraStatus status = talk.camera.status();
        EXPECT_EQ(status.ipEnabled, c.enabled);
        EXPECT_EQ(status.persistent.address.toString(), c.persistent);
        EXPECT_EQ(status.userName, c.name);
        EXPECT_EQ(addressOf(talk.camera), "192.168.1.10");
    }
}

TEST(CameraConfigCheck, NamesTheCameraAndTheMember) {
    const auto complaint = [](void (*spoil)(CameraConfig &)) -> std::string {
        CameraConfig config = localCamera();
        spoil(config);
        try {
            const Camera camera(config, {});
        } catch (const std::invalid_argument &error) {
            return error.what();
        }
        return "accepted";
    };
    const std::pair<void (*)(CameraConfig &), const char *> cases[] = {
        {[](CameraConfig &c) { c.serial = "12345678901234567"; }, "serial number"},
        {[](CameraConfig &c) { c.secondUrl.assign(513, 'x'); }, "second URL"},
        {[](CameraConfig &c) { c.forced = settings("10.0.0.0", "255.0.0.0"); }, "forced address"},
        {[](CameraConfig &c) {
             c.memory.push_back({0x0A00, {1, 2, 3, 4}});
         },
         "overlaps"},
        {[](CameraConfig &c) {
             c.memory.push_back({0xFFFFFFFC, {1, 2, 3, 4, 5}});
         },
         "address space"},
        {[](CameraConfig &c) {
             c.memory.push_back({0x8002, {1}});
         },
         "aligned"},
        {[](CameraConfig &c) {
             c.heldBy = Holder{{}, 3};
         },
         "privilege"},
    };
    for (const auto &[spoil, word] : cases) {
        const std::string text = complaint(spoil);
        EXPECT_NE(text.find(word), std::string::npos) << text;
        EXPECT_NE(text.find("02:5A:E3:01:02:03"), std::string::npos) << text;
    }
}

} // namespace
