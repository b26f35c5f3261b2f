#include "commissioning/Rescue.h"

#include "Undertake.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Saving.h"
#include "commissioning/SmallChanges.h"
#include "commissioning/WantedAddresses.h"

#include <algorithm>
#include <set>

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

Result forceAndStore(const Context &context, const RescuePlan &plan) {
    const std::string mac = plan.device.GetMacAddress().c_str();
    Result forced = forceAddressTo(context, plan.device, {mac, plan.address, plan.mask, 0});
    if (forced.path == Path::None)
        return forced;
    Result stored = configure(context, changeOf(plan, forced));
    if (stored.path != Path::None)
        return stored;
    // It was stopped in between: what has been sent counts.
    forced.success = false;
    forced.text = "The address " + toText(plan.address) + " was forced, but nothing was stored." +
                  (forced.text.empty() ? "" : " " + forced.text);
    return forced;
}

} // namespace

bool needsRescue(const Camera &camera, const Inventory &inventory) {
    static const std::set<std::string> codes = {"foreign-subnet", "unanswering", "duplicate-address", "hidden"};
    return camera.status != Status::InUse &&
           std::any_of(inventory.findings.begin(), inventory.findings.end(), [&](const Finding &finding) {
               return finding.camera == camera.mac && codes.count(finding.code) != 0;
           });
}

std::optional<AdapterAddress> subnetToStayIn(const Camera &camera, const Adapter &adapter,
                                             const AddressSurroundings &around, Neighbourhood *pKnown,
                                             const std::function<bool()> &isCancelled) {
    const AdapterAddress *const subnet = subnetOf(&adapter, camera.address);
    if (subnet == nullptr || subnet->mask == camera.mask ||
        !refusalOfAddress(camera.address, subnet->mask, camera.mac, around).empty())
        return std::nullopt;
    if (camera.status == Status::Ok) // so it is the camera that answers there
        return *subnet;
    Neighbourhood found = neighbourhoodOf(adapter, *subnet, {camera.address}, isCancelled);
    if (const auto taken = found.taken.find(camera.address); taken != found.taken.end() && taken->second == camera.mac)
        found.taken.erase(taken); // which is its own answer
    pKnown->taken.insert(found.taken.begin(), found.taken.end());
    return found.taken.empty() ? std::optional(*subnet) : std::nullopt;
}

std::string refusalOf(const RescuePlan &plan, const AddressSurroundings &around) {
    std::string reason = refusalOfHolder(plan.device);
    if (reason.empty())
        reason = refusalOfMode(plan.device, plan.mode);
    return reason.empty() ? refusalOfAddress(plan.address, plan.mask, plan.device.GetMacAddress().c_str(), around)
                          : reason;
}

Result rescue(const Context &context, const RescuePlan &plan, const AddressSurroundings &around) {
    const std::string reason = refusalOf(plan, around);
    if (!reason.empty())
        return Result::refusal(reason);
    const bool isStatic = plan.mode == Mode::Static;
    const Settings wanted{plan.mode, isStatic ? plan.address : 0, isStatic ? plan.mask : 0, 0,
                          cameraOf(plan.device).name};
    return undertake(context, plan.device, "rescue", wanted,
                     [&](const Context &inner) { return forceAndStore(inner, plan); });
}

} // namespace commissioning
