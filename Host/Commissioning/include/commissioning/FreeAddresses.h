#pragma once

#include "commissioning/Inventory.h"

#include <functional>
#include <optional>
#include <set>
#include <vector>

namespace commissioning {

/// Finds addresses that cameras can be given. Knows the addresses that are taken or spoken for: all of this host and
/// its gateways, all current and stored ones of the listed cameras, those it has handed out. Not thread-safe.
class FreeAddresses {
public:
    explicit FreeAddresses(const Inventory &inventory);

    /// Speaks for an address, such as one that a plan names.
    void exclude(Address address) { m_Taken.insert(address); }

    /// Hands out one address of the subnet for each camera: its present one with the network's bits when that is free,
    /// else the lowest free one. What is not excluded is asked for by a datagram to the discard port, and is free only
    /// when the kernel has found that nobody answers to it. Takes 3 to 5 s, and as much again for each 64 addresses of
    /// which none is free; all cameras together, so ask for all of an adapter in one call.
    ///
    /// \param subnet one of the adapter's.
    /// \param presents a camera's present address each; 0 for none.
    /// \param isCancelled polled every 50 ms.
    /// \return as many as presents; none for those for which nothing is free, and for all on an adapter that cannot
    ///         tell (without carrier) or when cancelled. \throws std::system_error
    std::vector<std::optional<Address>> take(const Adapter &adapter, const AdapterAddress &subnet,
                                             const std::vector<Address> &presents,
                                             const std::function<bool()> &isCancelled = {});

private:
    bool canBeGiven(Address address, const AdapterAddress &subnet) const;
    /// The next ones that can be given, from an address on, which is moved behind them.
    std::vector<Address> lowest(Address &next, const AdapterAddress &subnet, std::size_t count) const;
    void give(std::optional<Address> &place, std::set<Address> &free, Address address);

    std::set<Address> m_Taken;
};

/// The subnet of an adapter in which a camera is given an address: its first that is not link-local, else its first.
/// Null for an adapter without any.
const AdapterAddress *homeSubnet(const Adapter &adapter);

} // namespace commissioning
