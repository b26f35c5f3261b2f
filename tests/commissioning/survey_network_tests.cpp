#include "commissioning/AddressText.h"
#include "commissioning/Survey.h"
#include "support/Namespace.h"

#include <gmock/gmock.h>
#include <map>

using namespace commissioning;
using testnet::ip;

namespace {

TEST(Survey, TellsOfEveryLink) {
    const testnet::Adapter nic0("nic0", "192.168.1.5/24");
    ip("address add 10.0.0.1/8 dev nic0");
    ip("link set nic0 mtu 1400");
    ip("link add br0 type bridge");
    ip("link add other type veth peer name otherc");
    ip("link set other master br0");
    ip("tuntap add tun0 mode tun");
    std::map<std::string, std::string> seen;
    for (const commissioning::Adapter &adapter : surveyAdapters()) {
        std::string text = std::to_string(static_cast<int>(adapter.kind));
        for (const bool value : {adapter.isUp, adapter.hasCarrier, adapter.canBroadcast, adapter.isPort})
            text += value ? " yes" : " no";
        text += " " + std::to_string(adapter.mtu) + " " + std::to_string(adapter.rpFilter);
        for (const AdapterAddress &address : adapter.addresses)
            text += " " + toText(address);
        seen[adapter.name] = text;
        EXPECT_EQ(adapter.mac.size(), adapter.canBroadcast ? 12u : 0u);
        EXPECT_EQ(isUsable(adapter), adapter.name == "nic0");
        EXPECT_EQ(adapter.speed_Mbit_s.value_or(0), adapter.name == "nic0" ? 10000u : 0u);
    }
    const std::map<std::string, std::string> expected{
        {"lo", "3 yes yes no no 65536 0 127.0.0.1/8"},
        {"nic0", "3 yes yes yes no 1400 0 192.168.1.5/24 10.0.0.1/8"},
        {"br0", "1 no no yes no 1500 0"},
        {"other", "3 no no yes yes 1500 0"},
        {"otherc", "3 no no yes no 1500 0"},
        {"tun0", "3 no no no no 1500 0"},
    };
    EXPECT_EQ(seen, expected);
}

TEST(Survey, TellsOfRoutes) {
    const testnet::Adapter nic0("nic0", "192.168.1.5/24");
    const testnet::Adapter nic1("nic1", "10.0.0.1/8");
    ip("route add 172.16.0.0/16 nexthop via 192.168.1.1 nexthop via 10.0.0.2");
    ip("route add unreachable 203.0.113.0/24");
    std::vector<std::string> seen;
    for (const Route &route : surveyRoutes())
        seen.push_back(toText(route.destination) + "/" + std::to_string(route.prefix) + " " + route.adapter + " " +
                       toText(route.gateway));
    EXPECT_THAT(seen, testing::UnorderedElementsAre("192.168.1.0/24 nic0 0.0.0.0", "10.0.0.0/8 nic1 0.0.0.0",
                                                    "172.16.0.0/16 nic0 192.168.1.1", "172.16.0.0/16 nic1 10.0.0.2"));
    EXPECT_EQ(routeTo(0xC0A80114)->adapter, "nic0");
    EXPECT_NE(routeTo(0xAC100001)->gateway, 0u);
    EXPECT_TRUE(routeTo(0xC0A80105)->isLocal);
    EXPECT_FALSE(routeTo(0xCB007101).has_value());
    EXPECT_FALSE(routeTo(0x08080808).has_value());
}

} // namespace
