#include "PlanTask.h"

#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "gxapi/GvcpMessages.h"

namespace commissioning {

namespace {

std::optional<Mode> modeOfWord(std::uint32_t word) {
    Corvo::CQuorelGigEDeviceInfo info;
    info.SetIpConfigCurrent(std::to_string(word).c_str());
    return modeOf(info);
}

} // namespace

PlanTask whereLent(const PlanTask &task) {
    PlanTask lent = task;
    if (task.temporary) {
        const Corvo::String_t address = toText(task.temporary->address).c_str();
        auto &device = lent.change.device;
        device.SetIpAddress(address).SetAddress(address + ":" + device.GetPortNr()); // the latter counts for a channel
        lent.isReadable = true;
    }
    return lent;
}

std::string lentText(const PlanTask &task) {
    return task.temporary ? "It may still have the temporary address " + toText(task.temporary->address) + "." : "";
}

Change changeOf(const Corvo::CQuorelGigEDeviceInfo &device, const std::string &adapter, std::uint32_t word,
                const std::optional<StoredAddresses> &stored) {
    const std::uint32_t before = cameraOf(device).word;
    Change change;
    change.device = device;
    change.adapter = adapter;
    change.mode = modeOfWord(word | GEV_IP_CONFIG_LLA);
    change.modeDiffers = ((word ^ before) & ~std::uint32_t(GEV_IP_CONFIG_LLA)) != 0;
    // Also when it stays: a command tells all modes, not those that change.
    if ((change.modeDiffers && modeOf(device) == change.mode) || (word | GEV_IP_CONFIG_LLA) != wordOf(*change.mode))
        change.word = word;
    if (!stored)
        return change;
    change.isStaticFirst = change.mode != Mode::Static;
    change.address = stored->address;
    change.mask = stored->mask;
    change.gateway = stored->gateway;
    // Also when the same are known to be stored: what is known of them is older than the change.
    change.addressDiffers = change.maskDiffers = change.gatewayDiffers = true;
    return change;
}

} // namespace commissioning
