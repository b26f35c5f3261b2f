#include "camsim/CameraConfig.h"

#include <algorithm>
#include <stdexcept>

namespace camsim {
namespace {

void checkUsable(const std::optional<IpSettings> &settings, const char *what) {
    if (settings && !settings->isUsable())
        throw std::invalid_argument(std::string("the ") + what + " " + settings->address.toString() + " mask " +
                                    settings->mask.toString() + " is no usable host address");
}

void checkDuration(std::chrono::milliseconds duration, const char *what) {
    if (duration.count() < 0 || duration.count() > 0xFFFFFFFFLL)
        throw std::invalid_argument(std::string("the ") + what + " must be 0 to 4294967295 ms");
}

} // namespace

void checkConfig(const CameraConfig &config) {
    checkUsable(config.dhcpLease, "DHCP lease");
    checkUsable(config.forced, "forced address");
    if (config.linkLocal) {
        const IpSettings linkLocal{*config.linkLocal, Ipv4::maskOf(16), {}};
        checkUsable(linkLocal, "link-local address");
        if (!linkLocal.inSubnet(Ipv4::parse("169.254.0.0")))
            throw std::invalid_argument("the link-local address " + config.linkLocal->toString() +
                                        " is not in 169.254.0.0/16");
    }
    checkDuration(config.restartSilence, "restart silence");
    checkDuration(config.heartbeatTimeout, "heartbeat timeout");
    checkDuration(config.flashTime, "flash time");
    if (config.heldBy && config.heldBy->privilege != GEV_EXCLUSIVE_CONTROL_ACCESS &&
        config.heldBy->privilege != GEV_CONTROL_ACCESS)
        throw std::invalid_argument("the holder's privilege must be 1 (exclusive) or 2 (control)");
}

} // namespace camsim
