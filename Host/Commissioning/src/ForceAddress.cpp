#include "commissioning/ForceAddress.h"

#include "Base/GCException.h"
#include "Undertake.h"
#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Rediscovery.h"
#include "commissioning/Search.h"

namespace commissioning {

using namespace Corvo;

namespace {

enum class Attempt { Done, AskAgain, Failed };

/// Why forcing an address may fail or has failed; empty when nothing speaks against it.
std::string forceObstacle(const CDeviceInfo &device) {
    const EDeviceAccessiblityInfo verdict = verdictOf(device);
    if (verdict != Accessibility_Opened && verdict != Accessibility_OpenedExclusively)
        return "";
    return "The camera is controlled by another application: it may refuse a new address, or that application loses "
           "the camera.";
}

AddressQuestion questionOf(const ForceRequest &request) {
    AddressQuestion question;
    question.text = request.text;
    question.mac = request.device ? request.device->GetMacAddress().c_str() : "";
    question.adapter = request.adapter;
    question.asksForMac = request.asksForMac;
    if (request.device)
        question.reason = forceObstacle(*request.device);
    return question;
}

std::string stillAt(const CQuorelGigEDeviceInfo &camera, const char *what) {
    return std::string(what) + " still has the address " + toText(currentAddressOf(camera)) + ".";
}

/// The camera as it is now, after an attempt in vain. A search that fails as well is no reason to give up.
std::optional<CQuorelGigEDeviceInfo> lookAgain(const Context &context, const std::string &mac, Address alsoAt) {
    try {
        return lookFor(context, mac, alsoAt);
    } catch (const GenICam::GenericException &) {
        return std::nullopt;
    }
}

std::string reasonOfFailure(const Context &context, const std::string &mac) {
    std::optional<CQuorelGigEDeviceInfo> camera = lookAgain(context, mac, 0);
    if (!camera)
        return "No camera with this MAC address answered.";
    testAccessibility(context.layer, *camera);
    const std::string obstacle = forceObstacle(*camera);
    return obstacle.empty() ? stillAt(*camera, "The camera did not acknowledge and") : obstacle;
}

void takeOver(const Context &context, const TemporaryAddress &entered) {
    updateDeviceInfo(context.layer, context.devices, entered.mac.c_str(), nullptr, toText(entered.address).c_str(),
                     toText(entered.mask).c_str(), toText(entered.gateway).c_str(), true);
    context.interaction.updated(entered.mac, entered.address);
}

Attempt forceAndAwait(const Context &context, const TemporaryAddress &entered, Result *pResult, std::string *pReason) {
    const char *const mac = entered.mac.c_str();
    const auto indication = context.interaction.begin(Step::Force);
    context.trace.progress("Now forcing IP for MAC=%s. Retries remaining=%i.", mac, 0);
    pResult->path = Path::Force;
    sendForcedAddress(context, entered);
    context.trace.progress("Successfully forced IP for MAC=%s.", mac);
    pResult->addresses = Delivery::Acknowledged;
    pResult->now = waitForDevice(context, entered.mac, entered.address);
    if (pResult->now && currentAddressOf(*pResult->now) != entered.address) {
        *pReason = stillAt(*pResult->now, "The camera acknowledged but");
        return Attempt::AskAgain;
    }
    takeOver(context, entered);
    return pResult->now ? Attempt::Done : Attempt::Failed;
}

Attempt attempt(const Context &context, const TemporaryAddress &entered, Result *pResult, std::string *pReason) {
    const char *const mac = entered.mac.c_str();
    try {
        return forceAndAwait(context, entered, pResult, pReason);
    } catch (const GenICam::GenericException &error) {
        context.trace.error("Failed to force IP for MAC=%s. Err='%s'", mac, error.GetDescription());
        context.interaction.failure("forceIp", std::current_exception(), nullptr);
        const auto indication = context.interaction.begin(Step::Force);
        *pReason = reasonOfFailure(context, entered.mac);
        return Attempt::AskAgain;
    } catch (...) {
        context.trace.error("Failed to force IP for MAC=%s.", mac);
        context.interaction.failure("forceIp", std::current_exception(), nullptr);
        return Attempt::Failed;
    }
}

/// Each address that is tried has an entry in the journal.
Attempt undertakeAttempt(const Context &context, const TemporaryAddress &entered, Address *pForced,
                         std::string *pReason) {
    CQuorelGigEDeviceInfo device;
    device.SetMacAddress(entered.mac.c_str());
    if (const CDeviceInfo *known = findByMac(context.devices, entered.mac))
        device = *known;
    Attempt reached = Attempt::Failed;
    const char *const what = context.undertaking ? "temporary" : "force";
    const Result result = undertake(context, device, what, settingsAt(device, entered), [&](const Context &inner) {
        Result forced;
        reached = attempt(inner, entered, &forced, pReason);
        forced.success = reached == Attempt::Done;
        forced.text = *pReason;
        return forced;
    });
    if (result.addresses == Delivery::Acknowledged && pForced && reached != Attempt::AskAgain)
        *pForced = entered.address;
    if (!result.refused)
        return reached;
    *pReason = result.text;
    return Attempt::AskAgain;
}

} // namespace

Settings settingsAt(const CQuorelGigEDeviceInfo &device, const TemporaryAddress &address) {
    return {modeOf(device), address.address, address.mask, address.gateway, cameraOf(device).name};
}

bool forceAddress(const Context &context, const ForceRequest &request, Address *pForced) {
    AddressQuestion question = questionOf(request);
    const std::string deviceMac = question.mac;
    context.trace.progress("Forcing IP of device with MAC=%s.", deviceMac.c_str());
    for (;; question.isFirst = false) {
        const auto entered = context.interaction.askTemporaryAddress(question);
        if (!entered) {
            context.trace.progress("Forcing IP of device with MAC=%s has been canceled by user.", deviceMac.c_str());
            return false;
        }
        const std::string ip = toText(entered->address);
        const char *const mac = entered->mac.c_str();
        context.trace.progress("User entered IP=%s; Netmask=%s; Gateway=%s; MAC=%s", ip.c_str(),
                               toText(entered->mask).c_str(), toText(entered->gateway).c_str(), mac);
        if (!isValidForDevice(entered->address)) {
            context.trace.warning("Invalid IP address entered for MAC=%s. Asking again.", mac);
            context.interaction.rejectTemporaryAddress();
            continue;
        }
        context.trace.debug("Forcing IP configuration for MAC: '%s' with IP: '%s'; Subnet: '%s'; Default Gateway: '%s'",
                            mac, ip.c_str(), toText(entered->mask).c_str(), toText(entered->gateway).c_str());
        const Attempt result = undertakeAttempt(context, *entered, pForced, &question.reason);
        if (result != Attempt::AskAgain)
            return result == Attempt::Done;
    }
}

void sendForcedAddress(const Context &context, const TemporaryAddress &address) {
    try {
        context.layer.ForceIp(address.mac, toText(address.address), toText(address.mask), toText(address.gateway));
    } catch (const GenICam::GenericException &) {
        const std::optional<CQuorelGigEDeviceInfo> camera = lookAgain(context, address.mac, address.address);
        if (!camera || currentAddressOf(*camera) != address.address)
            throw;
    }
}

} // namespace commissioning
