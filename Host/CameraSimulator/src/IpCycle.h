#pragma once

#include "camsim/Camera.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace camsim {

/// Where a camera can get an address from when its IP cycle ends.
struct IpSources {
    std::uint32_t enabled = 0; ///< register 0x0014
    IpSettings persistent;
    std::optional<IpSettings> dhcpLease;
    Ipv4 linkLocal;

    /// Persistent, DHCP, link-local: the first one that is enabled and can be had.
    IpSettings choose() const;
};

/// 169.254.1.0 to 169.254.254.255, from the last two octets: neighbouring MACs get different addresses.
Ipv4 linkLocalOf(const MacAddress &mac);

/// How a camera comes to its current address: a silence, then the address, until forced or restarted.
class IpCycle {
public:
    explicit IpCycle(std::chrono::milliseconds silence) : silence_(silence) {}

    void restart(TimePoint now);
    void take(const IpSettings &settings); ///< Has this address from now on.

    const std::optional<IpSettings> &current() const { return current_; }
    /// End of the silence; none while there is an address.
    std::optional<TimePoint> due() const { return due_; }
    unsigned count() const { return count_; }

private:
    std::chrono::milliseconds silence_;
    std::optional<IpSettings> current_;
    std::optional<TimePoint> due_;
    unsigned count_ = 0;
};

} // namespace camsim
