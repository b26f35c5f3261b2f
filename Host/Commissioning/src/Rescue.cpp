#include "commissioning/Rescue.h"

#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Saving.h"
#include "commissioning/SmallChanges.h"

namespace commissioning {

using namespace Corvo;

namespace {

Change changeOf(const RescuePlan &plan, const Result &forced) {
    Change change;
    change.device = forced.now ? *forced.now : plan.device;
    change.device.SetIpAddress(toText(plan.address)); // also when nobody heard that it took it: unicast may get through
    change.adapter = plan.adapter;
    change.mode = plan.mode;
    change.address = plan.address;
    change.mask = plan.mask;
    change.modeDiffers = modeOf(plan.device) != plan.mode;
    const bool isStored = storedAddressesOf(plan.device) == StoredAddresses{plan.address, plan.mask, 0};
    change.addressDiffers = change.maskDiffers = change.gatewayDiffers = plan.mode == Mode::Static && !isStored;
    return change;
}

} // namespace

Result rescue(const Context &context, const RescuePlan &plan, const AddressSurroundings &around) {
    const std::string mac = plan.device.GetMacAddress().c_str();
    const std::string reason = refusalOfAddress(plan.address, plan.mask, mac, around);
    if (!reason.empty())
        return Result::refusal(reason);
    const Result forced = forceAddressTo(context, plan.device, {mac, plan.address, plan.mask, 0});
    if (forced.refused)
        return forced;
    return configure(context, changeOf(plan, forced));
}

} // namespace commissioning
