#pragma once

#include "Netlink.h"
#include "camsim/Address.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace camsim {

/// Sets cameras' addresses on a network interface and takes them away again, all at the latest when it is destroyed.
///
/// Also makes the interface behave as cameras do while it exists: an address that goes away does not take the other
/// addresses of its subnet along (promote_secondaries), ARP requests are answered only for addresses of the interface
/// they arrive on (arp_ignore), and commands from foreign subnets are heard (rp_filter; a value set for all interfaces
/// still counts). Belongs to the network namespace of the thread that makes it.
class InterfaceAddresses {
public:
    /// Throws std::system_error or std::runtime_error when the interface cannot be used, with its name in the text.
    InterfaceAddresses(Netlink &netlink, std::string interface);
    ~InterfaceAddresses();
    InterfaceAddresses(const InterfaceAddresses &) = delete;
    InterfaceAddresses &operator=(const InterfaceAddresses &) = delete;

    unsigned index() const { return index_; }
    /// Takes `gone` away and sets `added`. An address used twice is set once and stays until nobody uses it; one that
    /// was there before is left there at the end. Throws std::system_error naming the first address that failed, after
    /// trying them all.
    void change(const std::vector<IpSettings> &gone, const std::vector<IpSettings> &added);

private:
    using Key = std::pair<Ipv4, unsigned>; ///< address and prefix length: what the kernel tells addresses apart by

    struct Use {
        unsigned count = 0;
        std::uint64_t order = 0; ///< position in the sequence of additions; 0 means that it is not ours
    };

    void set(const std::vector<Key> &keys);
    void remove(std::vector<Key> keys);
    NetlinkMessage message(std::uint16_t type, std::uint16_t flags, const Key &key) const;
    /// Settings of the interface by IPV4_DEVCONF_ number.
    using Configuration = std::map<std::uint16_t, std::uint32_t>;
    Configuration readConfiguration() const;
    void writeConfiguration(const Configuration &configuration);

    Netlink &netlink_;
    const std::string interface_;
    const unsigned index_;
    const Configuration oldConfiguration_;
    std::map<Key, Use> uses_;
    std::uint64_t additions_ = 0;
};

} // namespace camsim
