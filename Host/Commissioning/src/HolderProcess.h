#pragma once

#include "commissioning/Inventory.h"

#include <cstdint>
#include <optional>
#include <string>

namespace commissioning {

/// The process of this host that has a UDP socket bound to an address and port. None when there is no such socket or
/// it belongs to a user whose processes the caller may not look into. Takes some milliseconds per hundred processes.
std::optional<Process> processOf(Address address, std::uint16_t port);

/// The name that a process of this host has given itself, without control characters; empty when it is gone.
std::string processName(int id);

/// The inode of such a socket in a text of the form of /proc/net/udp; empty for none. A socket bound to any address
/// counts where none is bound to this one.
std::string inodeOf(Address address, std::uint16_t port, const std::string &table);

} // namespace commissioning
