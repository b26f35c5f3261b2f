#include "IpCycle.h"

namespace camsim {

IpSettings IpSources::choose() const {
    if ((enabled & GEV_IP_CONFIG_PERSISTENT_IP) != 0 && persistent.isUsable())
        return persistent;
    if ((enabled & GEV_IP_CONFIG_DHCP) != 0 && dhcpLease)
        return *dhcpLease;
    return {linkLocal, Ipv4::maskOf(16), {}};
}

Ipv4 linkLocalOf(const MacAddress &mac) {
    const std::uint32_t third = 1u + mac.octets[4] % 254u;
    return {0xA9FE0000u | third << 8 | mac.octets[5]};
}

void IpCycle::restart(TimePoint now) {
    current_.reset();
    due_ = now + silence_;
    ++count_;
}

void IpCycle::take(const IpSettings &settings) {
    current_ = settings;
    due_.reset();
}

} // namespace camsim
