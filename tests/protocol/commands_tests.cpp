#include "GvcpCommands.h"
#include "support/SocketAddress.h"
#include "support/TraceLog.h"

#include <gtest/gtest.h>
#include <vector>

using namespace GxImp;

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t CameraMac[] = {0x02, 0x5A, 0xE3, 0x01, 0x02, 0x03};

Bytes bytesOf(const GXBUF &request) {
    const auto *begin = static_cast<const std::uint8_t *>(request.iov_base);
    return {begin, begin + request.iov_len};
}

TEST(Commands, Discovery) {
    DiscoveryCommand command;
    EXPECT_EQ(command.FormatRequest(0), 0u);
    EXPECT_EQ(bytesOf(command.GetRequest()), (Bytes{0x42, 0x01, 0x00, 0x02, 0x00, 0x00, 0xFF, 0xFF}));
    EXPECT_EQ(command.FormatRequest(1), 0u);
    EXPECT_EQ(bytesOf(command.GetRequest()), (Bytes{0x42, 0x19, 0x00, 0x02, 0x00, 0x00, 0xFF, 0xFF}));
}

TEST(Commands, ForceIp) {
    ForceIpCommand command;
    EXPECT_EQ(command.FormatRequest(CameraMac, SocketAddress("192.168.1.10"), SocketAddress("255.255.255.0"),
                                    SocketAddress("192.168.1.1")),
              0u);
    const Bytes expected = {
        0x42, 0x01, 0x00, 0x04, 0x00, 0x38, 0xFF, 0xFF,             // key, flags, command, length 56, id
        0x00, 0x00, 0x02, 0x5A, 0xE3, 0x01, 0x02, 0x03,             // MAC
        0,    0,    0,    0,    0,    0,    0,    0,    0, 0, 0, 0, // StaticIp
        0xC0, 0xA8, 0x01, 0x0A,                                     //
        0,    0,    0,    0,    0,    0,    0,    0,    0, 0, 0, 0, // StaticSubnetMask
        0xFF, 0xFF, 0xFF, 0x00,                                     //
        0,    0,    0,    0,    0,    0,    0,    0,    0, 0, 0, 0, // StaticDefaultGateway
        0xC0, 0xA8, 0x01, 0x01,
    };
    EXPECT_EQ(bytesOf(command.GetRequest()), expected);
}

TEST(Commands, SetIpConfiguration) {
    GEV_IP_CONFIG persistentAndDhcp{};
    persistentAndDhcp.PersistentIP = 1;
    persistentAndDhcp.DHCP = 1;
    char name[17] = "Left Cam";
    SetIpConfigurationCommand command;
    EXPECT_EQ(command.FormatRequest(CameraMac, persistentAndDhcp, SocketAddress("10.1.2.3"), SocketAddress("255.0.0.0"),
                                    nullptr, name, true),
              0u);
    const Bytes expected = {
        0x42, 0x11, 0x80, 0x04, 0x00, 0x4C, 0xFF, 0xFF,                           // header, length 76
        0x00, 0x00, 0x02, 0x5A, 0xE3, 0x01, 0x02, 0x03,                           // MAC
        0x00, 0x00, 0x00, 0x03,                                                   // IPConfiguration
        0,    0,    0,    0,    0,    0,    0,    0,    0, 0, 0, 0, 10,  1, 2, 3, // PersistantIP
        0,    0,    0,    0,    0,    0,    0,    0,    0, 0, 0, 0, 255, 0, 0, 0, // PersistantSubNetMask
        0,    0,    0,    0,    0,    0,    0,    0,    0, 0, 0, 0, 0,   0, 0, 0, // PersistantDefaultGateway
        'L',  'e',  'f',  't',  ' ',  'C',  'a',  'm',  0, 0, 0, 0, 0,   0, 0, 0, // UserDefinedName
    };
    EXPECT_EQ(bytesOf(command.GetRequest()), expected);
}

TEST(Commands, SetIpConfigurationCutsTheName) {
    GEV_IP_CONFIG linkLocal{};
    linkLocal.LLA = 1;
    for (const char *name : {"0123456789ABCDEF", "0123456789ABCDEFGHIJ"}) {
        SetIpConfigurationCommand command;
        TraceLog traces;
        EXPECT_EQ(command.FormatRequest(CameraMac, linkLocal, nullptr, nullptr, nullptr, name, false), 0u);
        EXPECT_EQ(traces.contains("Truncating user defined name"), name[16] != 0);
        const Bytes request = bytesOf(command.GetRequest());
        EXPECT_EQ(request[1], 0x01);
        EXPECT_EQ(request[19], 0x04);
        EXPECT_EQ(std::string(request.begin() + 68, request.end()), "0123456789ABCDEF");
    }
}

TEST(Commands, Action) {
    ActionCommand command;
    EXPECT_EQ(command.FormatRequest(0x01020304, 0x05060708, 0x090A0B0C, true), 0u);
    EXPECT_EQ(bytesOf(command.GetRequest()),
              (Bytes{0x42, 0x01, 0x01, 0x00, 0x00, 0x0C, 0xFF, 0xFF, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    EXPECT_EQ(command.FormatRequest(1, 2, 3, std::int64_t{-2}, false), 0u);
    EXPECT_EQ(bytesOf(command.GetRequest()),
              (Bytes{0x42, 0x80, 0x01, 0x00, 0x00, 0x14, 0xFF, 0xFF, 0,    0,    0,    1,    0,    0,
                     0,    2,    0,    0,    0,    3,    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}));
}

} // namespace
