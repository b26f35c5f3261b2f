#pragma once

#include "Netlink.h"
#include "camsim/Address.h"

#include <cstdint>
#include <map>
#include <set>

namespace camsim {

/// Lets each camera send over the gateway of its own, although all share one routing table: a packet carries the mark
/// of its gateway, and a rule leads each mark to a table with that one default route. One rule per gateway, not per
/// camera, because the kernel tries rules one after the other for every packet. Takes all away when destroyed.
class GatewayRoutes {
public:
    GatewayRoutes(Netlink &netlink, unsigned interfaceIndex) : netlink_(netlink), interface_(interfaceIndex) {}
    ~GatewayRoutes();
    GatewayRoutes(const GatewayRoutes &) = delete;
    GatewayRoutes &operator=(const GatewayRoutes &) = delete;

    /// The mark (SO_MARK) for packets over this gateway. Throws std::system_error when the route cannot be made.
    std::uint32_t mark(Ipv4 gateway);
    /// To be called before addresses of the interface go: with the last one the kernel drops all routes of an
    /// interface.
    void renew() { routed_.clear(); }

private:
    NetlinkMessage route(std::uint16_t type, std::uint16_t flags, Ipv4 gateway, std::uint32_t table) const;
    NetlinkMessage rule(std::uint16_t type, std::uint16_t flags, std::uint32_t mark) const;

    Netlink &netlink_;
    const unsigned interface_;
    std::map<Ipv4, std::uint32_t> marks_; ///< of the gateways that have a rule
    std::set<Ipv4> routed_;               ///< those whose route is there for sure
};

} // namespace camsim
