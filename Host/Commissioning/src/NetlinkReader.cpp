#include "NetlinkReader.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <libmnl/libmnl.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <netinet/in.h>

namespace commissioning {

namespace {

/// The attributes of a message or of another attribute, by their type.
class Attributes {
public:
    Attributes(const nlmsghdr &message, std::size_t bodySize) {
        mnl_attr_parse(&message, static_cast<unsigned>(bodySize), &Attributes::keep, this);
    }
    explicit Attributes(const nlattr *nest) {
        if (nest)
            mnl_attr_parse_nested(nest, &Attributes::keep, this);
    }
    /// Those that follow a next hop. \param size bytes
    Attributes(const char *data, std::size_t size) { mnl_attr_parse_payload(data, size, &Attributes::keep, this); }

    const nlattr *find(std::uint16_t type) const { return m_Found.at(type); }
    template <class Number> std::optional<Number> number(std::uint16_t type) const {
        const nlattr *attribute = find(type);
        if (!attribute || mnl_attr_get_payload_len(attribute) < sizeof(Number))
            return {};
        Number value{};
        std::memcpy(&value, mnl_attr_get_payload(attribute), sizeof value);
        return value;
    }
    /// An IPv4 address; 0 when there is none.
    Address address(std::uint16_t type) const { return ntohl(number<std::uint32_t>(type).value_or(0)); }
    std::string text(std::uint16_t type) const {
        const nlattr *attribute = find(type);
        if (!attribute)
            return {};
        const char *start = static_cast<const char *>(mnl_attr_get_payload(attribute));
        return {start, strnlen(start, mnl_attr_get_payload_len(attribute))};
    }

private:
    static int keep(const nlattr *attribute, void *self) {
        auto &found = static_cast<Attributes *>(self)->m_Found;
        const std::uint16_t type = mnl_attr_get_type(attribute);
        if (type < found.size())
            found[type] = attribute;
        return MNL_CB_OK;
    }

    std::array<const nlattr *, 64> m_Found{};
};

/// The fixed part of a message of the right type; null when it is another or shorter.
template <class Body> const Body *bodyOf(const nlmsghdr &message, std::uint16_t type) {
    const bool fits = message.nlmsg_type == type && message.nlmsg_len >= mnl_nlmsg_size(sizeof(Body));
    return fits ? static_cast<const Body *>(mnl_nlmsg_get_payload(&message)) : nullptr;
}

std::string macOf(const nlattr *attribute) {
    if (!attribute || mnl_attr_get_payload_len(attribute) != 6)
        return {};
    const auto *octets = static_cast<const unsigned char *>(mnl_attr_get_payload(attribute));
    std::string text;
    for (int i = 0; i < 6; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X", octets[i]);
        text += pair;
    }
    return text == "000000000000" ? "" : text; // the loopback's
}

LinkKind kindOf(const std::string &kind, const ifinfomsg &body) {
    if (kind == "bridge")
        return LinkKind::Bridge;
    if (kind == "vlan")
        return LinkKind::Vlan;
    return kind.empty() && body.ifi_type == ARPHRD_ETHER ? LinkKind::Physical : LinkKind::Virtual;
}

Route hopOf(const Route &route, int adapterIndex, Address gateway) {
    Route hop = route;
    hop.adapterIndex = adapterIndex;
    hop.gateway = gateway;
    return hop;
}

void addHops(const Route &route, const nlattr &attribute, std::vector<Route> &routes) {
    const char *next = static_cast<const char *>(mnl_attr_get_payload(&attribute));
    std::size_t left = mnl_attr_get_payload_len(&attribute);
    while (left >= sizeof(rtnexthop)) {
        rtnexthop hop{};
        std::memcpy(&hop, next, sizeof hop);
        if (hop.rtnh_len < sizeof hop || hop.rtnh_len > left)
            return;
        const Attributes attributes(next + sizeof hop, hop.rtnh_len - sizeof hop);
        routes.push_back(hopOf(route, hop.rtnh_ifindex, attributes.address(RTA_GATEWAY)));
        const std::size_t step = std::min<std::size_t>(RTNH_ALIGN(hop.rtnh_len), left);
        next += step;
        left -= step;
    }
}

} // namespace

std::optional<Link> readLink(const nlmsghdr &message) {
    const auto *body = bodyOf<ifinfomsg>(message, RTM_NEWLINK);
    if (!body)
        return {};
    const Attributes attributes(message, sizeof *body);
    const Attributes info(attributes.find(IFLA_LINKINFO));
    Link link;
    Adapter &adapter = link.adapter;
    adapter.name = attributes.text(IFLA_IFNAME);
    adapter.index = body->ifi_index;
    adapter.mac = macOf(attributes.find(IFLA_ADDRESS));
    adapter.kind = kindOf(info.text(IFLA_INFO_KIND), *body);
    adapter.isUp = (body->ifi_flags & IFF_UP) != 0;
    adapter.hasCarrier = attributes.number<std::uint8_t>(IFLA_CARRIER).value_or(0) != 0;
    adapter.canBroadcast = (body->ifi_flags & (IFF_BROADCAST | IFF_LOOPBACK)) == IFF_BROADCAST;
    adapter.isPort = attributes.number<std::uint32_t>(IFLA_MASTER).value_or(0) != 0;
    adapter.mtu = attributes.number<std::uint32_t>(IFLA_MTU).value_or(0);
    link.isLoopback = (body->ifi_flags & IFF_LOOPBACK) != 0;
    return link;
}

std::optional<OwnAddress> readAddress(const nlmsghdr &message) {
    const auto *body = bodyOf<ifaddrmsg>(message, RTM_NEWADDR);
    if (!body || body->ifa_family != AF_INET)
        return {};
    const Attributes attributes(message, sizeof *body);
    OwnAddress own;
    own.adapterIndex = static_cast<int>(body->ifa_index);
    own.value.address = attributes.address(IFA_LOCAL);
    const unsigned prefix = std::min<unsigned>(body->ifa_prefixlen, 32);
    own.value.mask = prefix == 0 ? 0 : ~Address{0} << (32 - prefix);
    return own;
}

std::optional<std::vector<Route>> readRoutes(const nlmsghdr &message) {
    const auto *body = bodyOf<rtmsg>(message, RTM_NEWROUTE);
    if (!body || body->rtm_family != AF_INET)
        return {};
    const Attributes attributes(message, sizeof *body);
    Route route;
    route.destination = attributes.address(RTA_DST);
    route.prefix = body->rtm_dst_len;
    route.adapterIndex = attributes.number<int>(RTA_OIF).value_or(0);
    route.gateway = attributes.address(RTA_GATEWAY);
    route.isLocal = body->rtm_type != RTN_UNICAST;
    std::vector<Route> routes{route};
    if (const nlattr *hops = attributes.find(RTA_MULTIPATH)) {
        routes.clear();
        addHops(route, *hops, routes);
    }
    return routes;
}

std::optional<Neighbour> readNeighbour(const nlmsghdr &message) {
    const auto *body = bodyOf<ndmsg>(message, RTM_NEWNEIGH);
    if (!body || body->ndm_family != AF_INET)
        return {};
    const Attributes attributes(message, sizeof *body);
    return Neighbour{body->ndm_ifindex, attributes.address(NDA_DST), body->ndm_state,
                     macOf(attributes.find(NDA_LLADDR))};
}

} // namespace commissioning
