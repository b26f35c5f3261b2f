#pragma once

/// \file
/// What the kernel tells an ordinary user about the network of this host, or of the calling thread's network namespace.
/// Every function asks anew, blocks for some milliseconds (2 s when the kernel does not answer), is thread-safe and
/// throws std::system_error when the kernel refuses.

#include "commissioning/Inventory.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace commissioning {

struct Route {
    Address destination = 0;
    unsigned prefix = 0;  ///< bits; 0 for a default route
    int adapterIndex = 0; ///< the kernel's number of the link it leaves by; 0 for none
    std::string adapter;  ///< and its name
    Address gateway = 0;
    bool isLocal = false; ///< the destination is an address of this host, or a broadcast address of one
};

/// An entry of the table of neighbours.
struct Neighbour {
    int adapterIndex = 0;
    Address address = 0;
    std::uint16_t state = 0; ///< NUD_... of <linux/neighbour.h>
    std::string mac;         ///< 12 upper-case hexadecimal digits; empty when it is not known
};

/// Every link, in the order of the kernel's numbers.
std::vector<Adapter> surveyAdapters();

/// The way a datagram would take; none when there is no route.
std::optional<Route> routeTo(Address address);

/// All IPv4 routes that lead to other hosts. Each next hop of a multipath route is one.
std::vector<Route> surveyRoutes();

std::vector<Neighbour> neighboursOf(int adapterIndex);

/// Whether an adapter can be searched on now: up, with carrier, an address, and able to broadcast.
bool isUsable(const Adapter &adapter);

/// The same of this moment, for an adapter that was surveyed some time ago. \throws std::system_error
bool isStillUsable(const Adapter &adapter);

} // namespace commissioning
