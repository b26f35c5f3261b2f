#include "GvcpCommands.h"
#include "support/SocketAddress.h"
#include "support/TraceLog.h"
#include "support/WireText.h"

#include <gtest/gtest.h>

using namespace GxImp;

namespace {

constexpr std::uint8_t CameraMac[] = {0x02, 0x5A, 0xE3, 0x01, 0x02, 0x03};

void expectRequest(const GXBUF &request, const std::string &hex) {
    const auto *begin = static_cast<const std::uint8_t *>(request.iov_base);
    EXPECT_EQ(wire::text({begin, begin + request.iov_len}), wire::text(wire::bytes(hex)));
}

TEST(Commands, Discovery) {
    DiscoveryCommand command;
    EXPECT_EQ(command.FormatRequest(0), 0u);
    expectRequest(command.GetRequest(), wire::discovery);
    EXPECT_EQ(command.FormatRequest(1), 0u);
    expectRequest(command.GetRequest(), wire::discoveryBroadcastAck);
}

TEST(Commands, ForceIp) {
    ForceIpCommand command;
    EXPECT_EQ(command.FormatRequest(CameraMac, SocketAddress("192.168.1.10"), SocketAddress("255.255.255.0"),
                                    SocketAddress("192.168.1.1")),
              0u);
    expectRequest(command.GetRequest(), wire::forceIp("025AE3010203", "C0A8010A", "FFFFFF00", "C0A80101"));
}

TEST(Commands, SetIpConfigurationCutsTheName) {
    GEV_IP_CONFIG persistentAndDhcp{};
    persistentAndDhcp.PersistentIP = 1;
    persistentAndDhcp.DHCP = 1;
    for (const char *name : {"0123456789ABCDEF", "0123456789ABCDEFGHIJ"}) {
        SetIpConfigurationCommand command;
        TraceLog traces;
        EXPECT_EQ(command.FormatRequest(CameraMac, persistentAndDhcp, SocketAddress("10.1.2.3"),
                                        SocketAddress("255.0.0.0"), nullptr, name, true),
                  0u);
        EXPECT_EQ(traces.contains("Truncating user defined name"), name[16] != 0);
        expectRequest(command.GetRequest(), wire::setIpConfig("025AE3010203", "00000003", "0A010203", "FF000000",
                                                              "00000000", "30313233343536373839414243444546"));
    }
}

TEST(Commands, Action) {
    ActionCommand command;
    EXPECT_EQ(command.FormatRequest(0x01020304, 0x05060708, 0x090A0B0C, true), 0u);
    expectRequest(command.GetRequest(), "42 01 0100 000C FFFF 01020304 05060708 090A0B0C");
    EXPECT_EQ(command.FormatRequest(1, 2, 3, std::int64_t{-2}, false), 0u);
    expectRequest(command.GetRequest(), "42 80 0100 0014 FFFF 00000001 00000002 00000003 FFFFFFFFFFFFFFFE");
}

} // namespace
