#pragma once

#include "commissioning/Inventory.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace commissioning {

/// What was found out of some addresses behind an adapter. Those in neither set are not known.
struct Neighbourhood {
    std::set<Address> free;               ///< nobody answers
    std::map<Address, std::string> taken; ///< somebody has it: its MAC, 12 upper-case hexadecimal digits
};

/// Has the kernel look who is behind an adapter: each address is sent one datagram to the discard port, for which the
/// kernel asks up to three times by ARP. Takes 3 to 5 s when one of them is free, however many there are, and up
/// to 10 s while the kernel's table is crowded, which all adapters share. Any thread may call.
///
/// \param subnet one of the adapter's. \param addresses in it, and none of this host's.
/// \param isCancelled polled every 50 ms; what is known by then is returned.
/// \return nothing on an adapter that cannot tell (without carrier), and nothing free on one that has lost it
/// meanwhile. \throws std::system_error
Neighbourhood neighbourhoodOf(const Adapter &adapter, const AdapterAddress &subnet,
                              const std::vector<Address> &addresses, const std::function<bool()> &isCancelled = {});

/// The same, but those who do not answer any more have left their addresses free: an entry of old in the kernel's table
/// counts as somebody, and the kernel looks at it again 5 s after the datagram. Takes up to 9 s when there are such
/// entries, and as long as neighbourhoodOf more for those that the kernel has forgotten meanwhile. Any thread may call.
///
/// \param found by neighbourhoodOf with the same adapter and subnet, just now.
/// \param isCancelled polled every 50 ms; who is not known to be gone by then is left in.
/// \throws std::system_error
Neighbourhood stillThere(const Adapter &adapter, const AdapterAddress &subnet, const Neighbourhood &found,
                         const std::function<bool()> &isCancelled = {});

} // namespace commissioning
