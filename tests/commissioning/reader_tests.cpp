#include "Frame.h"
#include "NetlinkReader.h"
#include "NetworkManager.h"
#include "Ruleset.h"
#include "commissioning/AddressText.h"
#include "commissioning/Counters.h"
#include "commissioning/ListenerClient.h"

#include <gmock/gmock.h>
#include <libmnl/libmnl.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>

using namespace commissioning;
using testing::ElementsAre;
using testing::Pair;

namespace {

TEST(Counters, ReadByNameWhateverTheOrder) {
    const Counters counters = parseCounters(
        "Ip: Forwarding InDelivers InReceives ReasmReqds ReasmOKs\nIp: 1 20 100 6 2\nUdp: NoPorts\nUdp: 3\n",
        "TcpExt: IPReversePathFilter\nTcpExt: 7\nIpExt: OutBcastPkts InNoRoutes\nIpExt: 5 1\n",
        "entries  table_fulls\n00000003 000037ef\n00000003 0000001f\n");
    EXPECT_EQ(counters.tableFulls, 0x37EF + 0x1F);
    EXPECT_EQ(counters.unexplained(), 100 - 20 - 4 - 7 - 1);
    EXPECT_EQ((counters - counters).received, 0);
    EXPECT_EQ(parseCounters("Ip: InReceives\nTcp: 1\n", "TcpExt: IPReversePathFilter", "entries").received, 0);
}

TEST(NetworkManager, NamesItsConnections) {
    EXPECT_THAT(parseManagedConnections("eth0:connected:Wired\\: one\nlo:unmanaged:\nbr0:connected (externally):br0\n"
                                        "eth1:disconnected:\nodd\n"),
                ElementsAre(Pair("eth0", "Wired: one"), Pair("eth1", "")));
}

TEST(Netlink, VlanIsALinkOfItsOwnKind) {
    alignas(nlmsghdr) char bytes[512];
    nlmsghdr &message = *mnl_nlmsg_put_header(bytes);
    message.nlmsg_type = RTM_NEWLINK;
    static_cast<ifinfomsg *>(mnl_nlmsg_put_extra_header(&message, sizeof(ifinfomsg)))->ifi_type = ARPHRD_ETHER;
    mnl_attr_put_strz(&message, IFLA_IFNAME, "eth0.100");
    EXPECT_EQ(readLink(message)->adapter.kind, LinkKind::Physical);
    nlattr *info = mnl_attr_nest_start(&message, IFLA_LINKINFO);
    mnl_attr_put_strz(&message, IFLA_INFO_KIND, "vlan");
    mnl_attr_nest_end(&message, info);
    EXPECT_EQ(readLink(message)->adapter.kind, LinkKind::Vlan);
    EXPECT_EQ(readLink(message)->adapter.name, "eth0.100");
    EXPECT_FALSE(readAddress(message).has_value());
    message.nlmsg_len = NLMSG_LENGTH(sizeof(ifinfomsg) - 1);
    EXPECT_FALSE(readLink(message).has_value());
}

/// A ruleset with a chain "c" at a hook, and one that it may jump to.
std::string chain(const std::string &hook, const std::string &policy, const std::string &rules,
                  const std::string &other = "") {
    const std::string base = R"("family":"inet","table":"f",)";
    return R"({"nftables":[{"metainfo":{}},{"chain":{)" + base + R"("name":"c","type":"filter","hook":")" + hook +
           R"(","policy":")" + policy + R"("}},{"rule":{)" + base + R"("chain":"c","expr":[)" + rules +
           R"(]}},{"chain":{)" + base + R"("name":"o"}},{"rule":{)" + base + R"("chain":"o","expr":[)" + other +
           "]}}]}";
}

std::string match(const std::string &left, const std::string &right, const std::string &op = "==") {
    return R"({"match":{"op":")" + op + R"(","left":)" + left + R"(,"right":)" + right + "}},";
}

TEST(Ruleset, IsFollowedAsFarAsItIsUnderstood) {
    const std::string sport = R"({"payload":{"protocol":"udp","field":"sport"}})";
    const std::string state = R"({"ct":{"key":"state"}})";
    const std::string drop = R"({"drop":null})";
    const std::string accept = R"({"counter":{}},{"accept":null})";
    const struct {
        std::string ruleset;
        const char *verdict; ///< whether it drops, and may drop
    } cases[] = {
        {chain("input", "accept", drop), "drops"},
        {chain("forward", "drop", drop), "passes"},
        {chain("input", "drop", match(sport, "3956") + accept), "passes"},
        {chain("input", "drop", match(sport, "3956", "!=") + accept), "drops"},
        {chain("prerouting", "accept", match(sport, R"({"range":[3000,4000]})") + drop), "drops"},
        {chain("input", "accept", match(sport, R"({"set":[1,3956]})") + R"({"reject":null})"), "drops"},
        {chain("input", "accept", match(sport, R"("@cameras")") + drop), "may"},
        {chain("input", "drop", match(state, R"(["established","related"])", "in") + accept), "drops"},
        {chain("input", "accept", match(R"({"meta":{"key":"iifname"}})", R"("eth1")") + drop), "passes"},
        {chain("input", "accept", match(R"({"payload":{"protocol":"tcp","field":"dport"}})", "22") + drop), "passes"},
        {chain("input", "accept", match(R"({"payload":{"protocol":"ip","field":"saddr"}})", R"("10.0.0.1")") + drop),
         "may"},
        {chain("input", "accept", R"({"limit":{}},)" + drop), "may"},
        {chain("input", "drop", R"({"xt":null},)" + accept), "may"},
        {chain("input", "accept", R"({"jump":{"target":"o"}})", match(sport, "3956") + drop), "drops"},
        {chain("input", "drop", R"({"jump":{"target":"o"}})", match(sport, "3956") + R"({"return":null})"), "drops"},
        {chain("input", "accept", R"({"goto":{"target":"o"}})", R"({"jump":{"target":"o"}})"), "may"}, // never ends
        {chain("input", "accept", R"({"jump":{"target":"none"}})"), "may"},
        {chain("input", "accept", R"({"vmap":{}})"), "may"},
    };
    for (const auto &one : cases) {
        const auto firewall = judgeRuleset(one.ruleset, {"eth0"});
        ASSERT_TRUE(firewall.has_value()) << one.ruleset;
        EXPECT_STREQ(firewall->drops ? "drops" : firewall->mayDrop ? "may" : "passes", one.verdict) << one.ruleset;
    }
    EXPECT_EQ(judgeRuleset(cases[0].ruleset, {"eth0"})->droppingChains, std::vector<std::string>{"inet f c"});
    EXPECT_FALSE(judgeRuleset("{\"nftables\":", {"eth0"}).has_value());
    EXPECT_FALSE(judgeRuleset(std::string(100000, '['), {"eth0"}).has_value());
}

/// An IPv4 datagram from 192.168.1.20:3956 with a successful acknowledge to a discovery.
std::vector<std::uint8_t> frame() {
    std::vector<std::uint8_t> bytes{
        0x45, 0,  0x01, 0x1C, 0,   0,   0,    0,    64,   17,   0,    0,    192, 168,
        1,    20, 255,  255,  255, 255, 0x0F, 0x74, 0x9C, 0x40, 0x01, 0x08, 0,   0, // ports, length
        0,    0,  0,    3,    0,   248, 0xFF, 0xFF};                                // status, DISCOVERY_ACK, length, id
    bytes.resize(bytes.size() + listener::InfoSize);
    for (std::size_t i = 0; i < 6; ++i)
        bytes[36 + 10 + i] = static_cast<std::uint8_t>(i + 1); // MAC
    bytes[36 + 19] = 7;                                        // supports all three modes
    bytes[36 + 23] = 6;                                        // DHCP and link-local are enabled
    bytes[36 + 36] = 10;                                       // 10.0.0.0
    bytes[36 + 72] = 'O';
    return bytes;
}

TEST(Listener, FramesThatAreNoAnswerAreSkipped) {
    const auto good = frame();
    ASSERT_TRUE(listener::readFrame(good.data(), good.size()).has_value());
    for (std::size_t size = 0; size < good.size(); ++size) {
        const std::vector<std::uint8_t> prefix(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(listener::readFrame(prefix.data(), size).has_value()) << size;
    }
    for (const auto &[offset, value] : {std::pair(0, 0x65), std::pair(0, 0x44), std::pair(0, 0x4F), std::pair(3, 0x1B),
                                        std::pair(7, 1), std::pair(6, 0x20), std::pair(9, 6), std::pair(21, 0),
                                        std::pair(25, 7), std::pair(28, 0x80), std::pair(31, 5), std::pair(33, 247)}) {
        std::vector<std::uint8_t> bad = good;
        bad.at(static_cast<std::size_t>(offset)) = static_cast<std::uint8_t>(value);
        EXPECT_FALSE(listener::readFrame(bad.data(), bad.size()).has_value()) << offset;
    }
}

TEST(Listener, LinesAreReadHoweverTheyAreCut) {
    const auto bytes = frame();
    const std::string line =
        listener::acknowledgeLine("eth0", 5000000, *listener::readFrame(bytes.data(), bytes.size()));
    const std::string text = "ready eth0\nfailed eth1 No such device\nack eth0 1 2\n" + std::string(5000, 'x') + "\n" +
                             line + line + "ack eth0 -1" + line.substr(line.find(" 192")) + "dropped 3\ndropped x\nack";
    for (const std::size_t piece : {std::size_t{1}, std::size_t{700}, text.size()}) {
        ListenerLines lines;
        for (std::size_t start = 0; start < text.size(); start += piece)
            lines.add(std::string_view(text).substr(start, piece));
        const ListenerReport &report = lines.report();
        EXPECT_EQ(lines.settled(), 2u);
        EXPECT_EQ(report.dropped, 3u);
        ASSERT_EQ(report.seen.size(), 1u);
        EXPECT_EQ(toText(report.seen[0].sender), "192.168.1.20");
        const Camera &camera = report.seen[0].camera;
        EXPECT_EQ(camera.mac + " " + toText(camera.address) + " " + camera.vendor, "010203040506 10.0.0.0 O");
        EXPECT_EQ(camera.mode, Mode::Dhcp);
        EXPECT_THAT(camera.modes, ElementsAre(Mode::Static, Mode::Dhcp, Mode::Auto));
        EXPECT_EQ(hiddenCameras(report, {}, report.seen[0].time).at(0).adapters, std::vector<std::string>{"eth0"});
        EXPECT_TRUE(hiddenCameras(report, {camera}, report.seen[0].time).empty());
        EXPECT_TRUE(hiddenCameras(report, {}, report.seen[0].time - std::chrono::microseconds(1)).empty());
    }
}

} // namespace
