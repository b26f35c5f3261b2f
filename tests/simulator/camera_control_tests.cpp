// The control channel: registers, memory, privileges and heartbeat.
#include "Conversation.h"

#include <gtest/gtest.h>

#include <random>

using namespace camsim;
using namespace std::chrono_literals;

namespace {

const char takeControl[] = "42 01 0082 0008 0001 00000A00 00000002";
const char takeControlAck[] = "00 00 00 83 00 04 00 01 00 00 00 01";
const char readPrivilege[] = "42 01 0080 0004 0009 00000A00";

CameraConfig camera() {
    CameraConfig config;
    config.persistent = {Ipv4::parse("192.168.1.10"), Ipv4::parse("255.255.255.0"), {}};
    config.ipEnabled = GEV_IP_CONFIG_PERSISTENT_IP;
    config.xml = {'<', 'x', '/', '>', '\n'};
    config.memory.push_back({0x8000, std::vector<std::uint8_t>(1024, 0x5A)});
    config.memory.push_back({0x8400, {1, 2, 3, 4, 5, 6, 7, 8}, false});
    config.readOnly.push_back({0x8010, 4});
    return config;
}

struct Exchange {
    const char *what;
    std::string request;
    std::string ack;
};

/// Exchanges that do not depend on one another, as the holder of the privilege.
void expectAcks(const CameraConfig &config, const std::vector<Exchange> &exchanges) {
    for (const Exchange &exchange : exchanges) {
        SCOPED_TRACE(exchange.what);
        Conversation talk(config);
        ASSERT_EQ(talk.ask(takeControl), takeControlAck);
        EXPECT_EQ(talk.ask(exchange.request), exchange.ack);
    }
}

TEST(CameraRegisters, ReadAndWrite) {
    const std::vector<Exchange> exchanges = {
        {"read nothing", "42 01 0080 0000 0007", "80 02 00 81 00 00 00 07"},
        {"read a fraction", "42 01 0080 0006 0007 00000934 0000", "80 02 00 81 00 00 00 07"},
        {"length too long", "42 01 0080 0008 0007 00000934", "80 0E 00 81 00 00 00 07"},
        {"read unaligned", "42 01 0080 0004 0007 00000936", "80 05 00 81 00 00 00 07"},
        {"second missing", "42 01 0080 0008 0007 00000934 00009000", "80 03 00 81 00 04 00 07 C8 00 00 03"},
        {"links and pending timeout", "42 01 0080 0008 0007 00000910 00000958",
         "00 00 00 81 00 08 00 07 00 00 00 01 00 00 00 64"},
        {"holder", "42 01 0080 0008 0007 00000A04 00000A14", "00 00 00 81 00 08 00 07 00 00 9C 40 C0 A8 01 01"},
        {"write without value", "42 01 0082 0004 0007 00008000", "80 02 00 83 00 04 00 07 00 00 00 00"},
        {"write missing", "42 01 0082 0008 0007 00009000 01020304", "80 03 00 83 00 04 00 07 00 00 00 00"},
        {"write unaligned", "42 01 0082 0008 0007 00008001 01020304", "80 05 00 83 00 04 00 07 00 00 00 00"},
        {"second protected", "42 01 0082 0010 0007 00008000 01020304 00000004 00000000",
         "80 04 00 83 00 04 00 07 00 00 00 01"},
        {"protected by range", "42 01 0082 0008 0007 00008010 01020304", "80 04 00 83 00 04 00 07 00 00 00 00"},
        {"unknown command", "42 01 0100 0000 0007", "80 01 01 01 00 00 00 07"},
        {"no acknowledge wanted", "42 00 0082 0008 0007 00008000 01020304", ""},
    };
    expectAcks(camera(), exchanges);
}

TEST(CameraRegisters, NeedTheirCapability) {
    CameraConfig config = camera();
    config.capabilities = GEV_CAPABILITY_WRITEMEM;
    const std::vector<Exchange> exchanges = {
        {"one", "42 01 0080 0004 0007 00000934", "00 00 00 81 00 04 00 07 00 00 00 02"},
        {"holder", "42 01 0080 0004 0007 00000A14", "80 03 00 81 00 00 00 07"},
        {"name", "42 01 0086 0008 0007 000000E8 6C656674", "80 04 00 87 00 04 00 07 00 00 00 00"},
        {"read two", "42 01 0080 0008 0007 00000934 00000938", "80 02 00 81 00 00 00 07"},
        {"write two", "42 01 0082 0010 0007 00008000 00000000 00008004 00000000",
         "80 02 00 83 00 04 00 07 00 00 00 00"},
    };
    expectAcks(config, exchanges);
}

TEST(CameraRegisters, TimestampIsLatchedAndReset) {
    Conversation talk(camera());
    ASSERT_EQ(talk.ask(takeControl), takeControlAck);
    for (const char *control : {"00000003", "00000002"}) { // latch and reset, latch
        talk.pass(1500ms);
        EXPECT_EQ(talk.ask("42 01 0082 0008 0007 00000944" + std::string(control)).substr(0, 5), "00 00");
        EXPECT_EQ(talk.ask("42 01 0080 000C 0008 00000944 00000948 0000094C"),
                  "00 00 00 81 00 0C 00 08 00 00 00 00 00 00 00 00 59 68 2F 00"); // 1,500,000,000 ns
    }
}

TEST(CameraFlash, WritesOfStoredSettingsTakeTheirTime) {
    const std::string writes[] = {"42 01 0082 0008 0007 0000064C C0A8010B", "42 01 0086 0008 0007 000000E8 6C656674",
                                  "42 01 0082 0010 0007 00008000 00000000 00000014 00000005"};
    CameraConfig config = camera();
    config.flashTime = 2500ms;
    for (const std::string &write : writes) {
        Conversation talk(config);
        ASSERT_EQ(talk.ask(takeControl), takeControlAck);
        for (const auto &[left, text] : {std::pair{2500ms, "09 C4"}, {1500ms, "05 DC"}}) { // a re-send, too
            const auto replies = talk.send(write, "192.168.1.10");
            ASSERT_EQ(replies.size(), 2u);
            EXPECT_EQ(replies[0].delay, 0ms);
            EXPECT_EQ(wire::text(replies[0].bytes), "00 00 00 89 00 04 00 07 00 00 " + std::string(text));
            EXPECT_EQ(replies[1].delay, left);
            talk.pass(1000ms);
        }
        EXPECT_EQ(talk.send("42 01 0082 0008 0008 00008000 00000000", "192.168.1.10").at(0).delay, 0ms);
    }
    expectAcks(config, {{"capability", "42 01 0080 0004 0007 00000934", "00 00 00 81 00 04 00 07 C8 00 00 23"}});
    config.sendsPendingAck = false;
    expectAcks(config, {{"capability", "42 01 0080 0004 0007 00000934", "00 00 00 81 00 04 00 07 C8 00 00 03"}});
    Conversation talk(config);
    ASSERT_EQ(talk.ask(takeControl), takeControlAck);
    EXPECT_EQ(talk.send(writes[0], "192.168.1.10").at(0).delay, 2500ms); // just late
}

TEST(CameraMemory, ReadAndWrite) {
    const std::vector<Exchange> exchanges = {
        {"read over two regions", "42 01 0084 0008 0007 000083FC 0000 0008",
         "00 00 00 85 00 0C 00 07 00 00 83 FC 5A 5A 5A 5A 01 02 03 04"},
        {"read past the end", "42 01 0084 0008 0007 00008400 0000 000C", "80 03 00 85 00 00 00 07"},
        {"read past the space", "42 01 0084 0008 0007 FFFFFFFC 0000 0008", "80 03 00 85 00 00 00 07"},
        {"count of 6", "42 01 0084 0008 0007 00008400 0000 0006", "80 02 00 85 00 00 00 07"},
        {"count of 0", "42 01 0084 0008 0007 00008400 0000 0000", "80 02 00 85 00 00 00 07"},
        {"count of 540", "42 01 0084 0008 0007 00008000 0000 021C", "80 02 00 85 00 00 00 07"},
        {"unaligned", "42 01 0084 0008 0007 00008402 0000 0004", "80 05 00 85 00 00 00 07"},
        {"write", "42 01 0086 000C 0007 00008000 0102030405060708", "00 00 00 87 00 04 00 07 00 00 00 08"},
        {"write into protected", "42 01 0086 000C 0007 0000800C 0102030405060708",
         "80 04 00 87 00 04 00 07 00 00 00 04"},
        {"write no address", "42 01 0086 0000 0007", "80 02 00 87 00 04 00 07 00 00 00 00"},
    };
    expectAcks(camera(), exchanges);
    CameraConfig config = camera();
    config.capabilities = GEV_CAPABILITY_CONCATENATION;
    expectAcks(config, {{"no WRITEMEM", "42 01 0086 0008 0007 00008000 01020304", "80 01 00 87 00 00 00 07"}});
    config = camera();
    config.anyMemoryCount = true;
    expectAcks(
        config,
        {{"read 6", "42 01 0084 0008 0007 00008400 0000 0006", "00 00 00 85 00 0A 00 07 00 00 84 00 01 02 03 04 05 06"},
         {"write 6", "42 01 0086 000A 0007 00008000 010203040506", "00 00 00 87 00 04 00 07 00 00 00 06"}});
}

TEST(CameraPrivilege, BelongsToOneAddressAndPort) {
    const std::pair<std::string, std::string> cases[] = {{"00000002", "00 00 00 81 00 04 00 09 00 00 00 02"},
                                                         {"00000001", "80 06 00 81 00 00 00 09"}};
    for (const auto &[privilege, othersRead] : cases) {
        Conversation talk(camera());
        const Endpoint first = talk.application;
        EXPECT_EQ(talk.ask("42 01 0082 0008 0005 00008000 00000000"), "80 06 00 83 00 04 00 05 00 00 00 00"); // nobody
        EXPECT_EQ(talk.ask("42 01 0082 0008 0001 00000A00" + privilege), takeControlAck);
        EXPECT_EQ(talk.ask("42 01 0082 0008 0005 00008000 00000000"), "00 00 00 83 00 04 00 05 00 00 00 01");
        talk.application.port = 40001; // the same host
        EXPECT_EQ(talk.ask(readPrivilege), othersRead);
        EXPECT_EQ(talk.ask("42 01 0084 0008 0009 00000000 0000 0004").substr(0, 5), othersRead.substr(0, 5));
        EXPECT_EQ(talk.ask(takeControl), "80 06 00 83 00 04 00 01 00 00 00 00");
        EXPECT_EQ(talk.ask("42 01 0082 0008 0005 00000A00 00000000"), "80 06 00 83 00 04 00 05 00 00 00 00");
        EXPECT_EQ(talk.ask("42 01 0086 0008 0005 00008000 00000000"), "80 06 00 87 00 04 00 05 00 00 00 00");
        EXPECT_EQ(talk.camera.status().holder->application, first);
        talk.application = first;
        EXPECT_EQ(talk.ask("42 01 0082 0008 0006 00000A00 00000000"), "00 00 00 83 00 04 00 06 00 00 00 01");
        EXPECT_EQ(talk.ask("42 01 0080 0004 0009 00000A14"), "00 00 00 81 00 04 00 09 00 00 00 00"); // nobody's address
    }
}

TEST(CameraPrivilege, ExpiresWithoutHeartbeat) {
    Conversation talk(camera());
    talk.ask(takeControl);
    EXPECT_EQ(talk.ask("42 01 0082 0008 0002 00000938 00000001"), "00 00 00 83 00 04 00 02 00 00 00 01");
    EXPECT_EQ(talk.ask("42 01 0080 0004 0003 00000938"), "00 00 00 81 00 04 00 03 00 00 01 F4"); // never below 500 ms
    talk.pass(400ms);
    talk.ask("42 01 0080 0004 0004 00000938"); // any command of the holder is a heartbeat
    EXPECT_EQ(talk.camera.nextDeadline(), talk.now + 500ms);
    talk.application.port = 1;
    talk.pass(499ms);
    EXPECT_EQ(talk.ask(readPrivilege), "00 00 00 81 00 04 00 09 00 00 00 02"); // that of others is none
    talk.pass(1ms);
    EXPECT_EQ(talk.ask(readPrivilege), "00 00 00 81 00 04 00 09 00 00 00 00");
    EXPECT_EQ(talk.camera.nextDeadline(), std::nullopt);

    talk.camera.setHolder(Holder{{Ipv4::parse("192.168.1.7"), 5000}, GEV_CONTROL_ACCESS, true}, talk.now);
    talk.pass(1h);
    EXPECT_EQ(talk.ask(readPrivilege), "00 00 00 81 00 04 00 09 00 00 00 02"); // an application that lives on
}

TEST(CameraControl, ResentWriteIsAcknowledgedButNotExecutedAgain) {
    Conversation talk(camera());
    talk.ask(takeControl);
    const std::string write = "42 01 0082 0008 0002 00008000 00000001";
    const std::string ack = talk.ask(write);
    talk.camera.writeMemory(0x8000, {0, 0, 0, 9});
    EXPECT_EQ(talk.ask(write), ack);
    EXPECT_EQ(wire::text(talk.camera.readMemory(0x8000, 4)), "00 00 00 09");
    talk.pass(2000ms);
    EXPECT_EQ(talk.ask(write), ack);
    talk.pass(2000ms); // that was a heartbeat
    EXPECT_EQ(talk.ask("42 01 0082 0008 0003 00008000 00000001"), "00 00 00 83 00 04 00 03 00 00 00 01");
    EXPECT_EQ(wire::text(talk.camera.readMemory(0x8000, 4)), "00 00 00 01");
    // After control was lost the same bytes are a new request.
    talk.ask("42 01 0082 0008 0001 00000A00 00000002");
    talk.pass(3000ms);
    EXPECT_FALSE(talk.camera.status().holder);
    EXPECT_EQ(talk.ask(takeControl), takeControlAck);
    EXPECT_TRUE(talk.camera.status().holder);
}

TEST(CameraControl, SurvivesAnyDatagram) {
    std::mt19937 random(20240607);
    const std::string seeds[] = {takeControl, wire::forceIp("025AE3010203", "C0A80132", "FFFFFF00"),
                                 "42 01 0084 0008 0007 00008400 0000 0008",
                                 "42 01 0086 000C 0007 00008000 0102030405060708",
                                 "42 11 8004 004C FFFF 0000025AE3010203 00000005" + wire::zeros(64)};
    CameraConfig config = camera();
    config.anyMemoryCount = true;
    Conversation talk(config);
    for (int round = 0; round < 20000; ++round) {
        auto datagram = wire::bytes(seeds[random() % std::size(seeds)]);
        for (unsigned i = random() % 4; i > 0; --i)
            datagram[random() % datagram.size()] = static_cast<std::uint8_t>(random());
        if (random() % 3 == 0)
            datagram.resize(random() % 700);
        if (datagram.size() >= 8 && random() % 2 == 0) { // mostly with a fitting length, to get past the header
            datagram[4] = static_cast<std::uint8_t>((datagram.size() - 8) >> 8);
            datagram[5] = static_cast<std::uint8_t>(datagram.size() - 8);
        }
        talk.pass(std::chrono::milliseconds(random() % 50));
        const Ipv4 to = talk.camera.current() ? talk.camera.current()->address : Ipv4::limitedBroadcast();
        for (const Reply &reply :
             talk.camera.receive({talk.application, to, datagram.data(), datagram.size()}, talk.now)) {
            ASSERT_GE(reply.bytes.size(), 8u);
            ASSERT_LE(reply.bytes.size(), 8u + 540u);
            ASSERT_EQ(reply.bytes[4] * 256u + reply.bytes[5], reply.bytes.size() - 8);
        }
    }
}

} // namespace
