#include "GatewayRoutes.h"

#include <arpa/inet.h>
#include <linux/fib_rules.h>
#include <linux/rtnetlink.h>

#include <exception>
#include <system_error>
#include <vector>

namespace camsim {
namespace {

/// Marks and tables of this program; the interface index keeps two simulators in one namespace apart.
std::uint32_t firstMark(unsigned interface) { return 0x4756'0000u + (interface & 0xFFu) * 0x100u; }

} // namespace

GatewayRoutes::~GatewayRoutes() {
    try {
        std::vector<NetlinkMessage> messages;
        for (const auto &[gateway, mark] : marks_) {
            messages.push_back(rule(RTM_DELRULE, 0, mark));
            messages.push_back(route(RTM_DELROUTE, 0, gateway, mark));
        }
        (void)netlink_.execute(messages); // a route went with the last address of its interface
    } catch (const std::exception &) {
        // Without a netlink socket nothing more can be done.
    }
}

std::uint32_t GatewayRoutes::mark(Ipv4 gateway) {
    const auto known = marks_.find(gateway);
    const bool hasRule = known != marks_.end();
    if (hasRule && routed_.count(gateway) != 0)
        return known->second;
    const std::uint32_t mark =
        hasRule ? known->second : firstMark(interface_) + static_cast<std::uint32_t>(marks_.size());
    std::vector<NetlinkMessage> messages;
    messages.push_back(route(RTM_NEWROUTE, NLM_F_CREATE | NLM_F_REPLACE, gateway, mark));
    if (!hasRule)
        messages.push_back(rule(RTM_NEWRULE, NLM_F_CREATE, mark));
    for (const int error : netlink_.execute(messages))
        if (error != 0)
            throw std::system_error(error, std::generic_category(), "cannot route over " + gateway.toString());
    marks_[gateway] = mark;
    routed_.insert(gateway);
    return mark;
}

NetlinkMessage GatewayRoutes::route(std::uint16_t type, std::uint16_t flags, Ipv4 gateway, std::uint32_t table) const {
    rtmsg body{};
    body.rtm_family = AF_INET;
    body.rtm_protocol = RTPROT_STATIC;
    body.rtm_scope = RT_SCOPE_UNIVERSE;
    body.rtm_type = RTN_UNICAST;
    body.rtm_flags = RTNH_F_ONLINK;
    NetlinkMessage message(type, static_cast<std::uint16_t>(NLM_F_ACK | flags), &body, sizeof body);
    message.attribute32(RTA_TABLE, table);
    message.attribute32(RTA_OIF, interface_);
    message.attribute32(RTA_GATEWAY, htonl(gateway.value));
    return message;
}

NetlinkMessage GatewayRoutes::rule(std::uint16_t type, std::uint16_t flags, std::uint32_t mark) const {
    fib_rule_hdr body{};
    body.family = AF_INET;
    body.action = FR_ACT_TO_TBL;
    NetlinkMessage message(type, static_cast<std::uint16_t>(NLM_F_ACK | flags), &body, sizeof body);
    message.attribute32(FRA_FWMARK, mark);
    message.attribute32(FRA_TABLE, mark);
    return message;
}

} // namespace camsim
