#pragma once

#include "commissioning/Survey.h"

#include <linux/netlink.h>
#include <optional>

/// Messages of rtnetlink as values. Whatever a message lacks or has too short stays as it is by default; a message of
/// another kind gives none.
namespace commissioning {

struct Link {
    Adapter adapter;
    bool isLoopback = false;
};

struct OwnAddress {
    int adapterIndex = 0;
    AdapterAddress value;
};

std::optional<Link> readLink(const nlmsghdr &message);
std::optional<OwnAddress> readAddress(const nlmsghdr &message);
/// The routes of a message: several when it has several next hops. Names of adapters are left open.
std::optional<std::vector<Route>> readRoutes(const nlmsghdr &message);
std::optional<Neighbour> readNeighbour(const nlmsghdr &message);

} // namespace commissioning
