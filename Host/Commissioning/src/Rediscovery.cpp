#include "commissioning/Rediscovery.h"

#include "commissioning/DeviceInfos.h"
#include "commissioning/Search.h"

namespace commissioning {

using namespace Corvo;

std::optional<CQuorelGigEDeviceInfo> lookFor(const Context &context, const std::string &mac, Address alsoAt) {
    DeviceInfoList devices = discover(context.layer);
    const CDeviceInfo *found = findByMac(devices, mac);
    if (!found && alsoAt != 0) {
        ask(alsoAt, devices);
        found = findByMac(devices, mac);
    }
    return found ? std::optional(CQuorelGigEDeviceInfo(*found)) : std::nullopt;
}

std::optional<CQuorelGigEDeviceInfo> waitForDevice(const Context &context, const std::string &mac, Address alsoAt) {
    const auto indication = context.interaction.begin(Step::Rediscover);
    std::optional<CQuorelGigEDeviceInfo> found;
    context.guarded("waitForDevice", [&] {
        for (int round = 0; round < context.patience.rounds && !found; ++round) {
            context.interaction.pause(context.patience.pause);
            found = lookFor(context, mac, alsoAt);
        }
        return true;
    });
    return found;
}

void follow(const Context &context, const CQuorelGigEDeviceInfo &found, bool testAgain) {
    updateDeviceInfo(context.layer, context.devices, found.GetMacAddress(), found.GetIpConfigCurrent(),
                     found.GetIpAddress(), found.GetSubnetMask(), found.GetDefaultGateway(), testAgain);
}

} // namespace commissioning
