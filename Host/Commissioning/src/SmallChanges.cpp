#include "commissioning/SmallChanges.h"

#include "Base/GCException.h"
#include "GenApi/GenApi.h"
#include "MinimalCorvoGigETL/ControlChannelPtr.h"
#include "MinimalCorvoGigETL/GxStatusException.h"
#include "Undertake.h"
#include "commissioning/AddressText.h"
#include "commissioning/Connection.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/ForceAddress.h"
#include "commissioning/Rediscovery.h"
#include "commissioning/Refusals.h"

#include <algorithm>
#include <array>

namespace commissioning {

using namespace Corvo;

namespace {

constexpr std::size_t NameBytes = sizeof(GV_DEVICE_DESCRIPTION::UserDefinedName);

/// One with a static address that is back at another one.
bool isStillTemporary(const CQuorelGigEDeviceInfo &before, const CQuorelGigEDeviceInfo &now) {
    const auto stored = storedAddressesOf(before);
    return modeOf(now) == Mode::Static && stored && stored->address != 0 && stored->address != currentAddressOf(now);
}

/// \returns false when there is no such feature that can be written.
bool writeNameByFeature(ICorvoGigEDevice &device, const std::string &name) {
    GenApi::INodeMap *const features = device.GetNodeMap();
    const GenApi::CStringPtr feature(features ? features->GetNode("DeviceUserID") : nullptr);
    if (!feature.IsValid() || !GenApi::IsWritable(feature->GetAccessMode()))
        return false;
    feature->SetValue(name);
    return true;
}

void writeNameByRegister(const CQuorelGigEDeviceInfo &device, const std::string &name) {
    constexpr char failure[] = "Failed to write the name: ";
    std::array<char, NameBytes> field{};
    std::copy(name.begin(), name.end(), field.begin());
    ControlChannelPtr channel;
    THROW_IF_GX_FAILED(OpenControlChannel(device, GEV_CONTROL_ACCESS, &channel), "%s", failure);
    THROW_IF_GX_FAILED(channel->WriteMem(GEV_REG_USER_DEFINED_NAME, field.data(), NameBytes), "%s", failure);
}

void writeName(const Context &context, const CQuorelGigEDeviceInfo &device, const std::string &name) {
    bool isWritten = false;
    try {
        isWritten = writeNameByFeature(context.connection.device(), name);
    } catch (const GenICam::GenericException &error) { // a description that promises too much
        context.trace.warning("Failed to write DeviceUserID of MAC=%s. Err='%s'", device.GetMacAddress().c_str(),
                              error.GetDescription());
    }
    const CQuorelGigEDeviceInfo opened(context.connection.device().GetDeviceInfo());
    context.connection.close();
    if (!isWritten)
        writeNameByRegister(opened, name);
}

void verifyName(const Context &context, const std::string &name, Result *pResult) {
    const std::optional<CQuorelGigEDeviceInfo> &now = pResult->now;
    pResult->success = now && now->GetUserDefinedName() == name.c_str();
    pResult->verification = pResult->success ? Verification::AddressSeen : Verification::None;
    if (CDeviceInfo *known = now ? findByMac(context.devices, now->GetMacAddress().c_str()) : nullptr) {
        known->SetUserDefinedName(now->GetUserDefinedName());
        known->ClearAccessFlags();
    }
    if (!pResult->success)
        pResult->text = now ? "The camera's name is \"" + std::string(now->GetUserDefinedName().c_str()) + "\"."
                            : "The camera does not answer the search.";
}

/// A camera that was reached over a temporary address returns to its own.
std::optional<CQuorelGigEDeviceInfo> giveAddressBack(const Context &context, const CQuorelGigEDeviceInfo &device) {
    context.layer.RestartIpConfiguration(device.GetMacAddress());
    return waitForDevice(context, device.GetMacAddress().c_str(), currentAddressOf(device));
}

Result restartAndAwait(const Context &context, const CQuorelGigEDeviceInfo &device) {
    Result result;
    result.path = Path::Force;
    context.guarded("restart", [&] {
        const String_t mac = device.GetMacAddress();
        context.trace.progress("Restarting IP configuration and waiting for rediscovery for MAC=%s.", mac.c_str());
        context.layer.RestartIpConfiguration(mac);
        result.now = waitForDevice(context, mac.c_str());
        // It may have been seen before it began, and the restart is one datagram, which may be lost.
        for (int i = 0; i < context.patience.restarts && result.now && isStillTemporary(device, *result.now); ++i) {
            context.layer.RestartIpConfiguration(mac);
            result.now = waitForDevice(context, mac.c_str());
        }
        return true;
    });
    result.success = result.now && !isStillTemporary(device, *result.now);
    result.verification = result.success ? Verification::AddressSeen : Verification::None;
    if (result.now)
        follow(context, *result.now, true);
    if (!result.success)
        result.text = result.now ? "The restart was sent, but the camera still has the temporary address " +
                                       toText(currentAddressOf(*result.now)) + ": it may need a power cycle."
                                 : "The restart was sent, but the camera did not come back.";
    return result;
}

Result writeAndVerifyName(const Context &context, const CQuorelGigEDeviceInfo &device, const std::string &name) {
    Result result;
    context.guarded("rename", [&] {
        const std::string adapter; // nobody is asked for a better address than one of the right subnet
        if (!context.connection.open(context, device, adapter, device.GetIpAddress()))
            return false;
        result.path = Path::Unicast;
        writeName(context, device, name);
        return true;
    });
    context.connection.close();
    context.guarded("rename", [&] {
        result.now = lookFor(context, device.GetMacAddress().c_str(), currentAddressOf(device));
        if (result.now && currentAddressOf(*result.now) != currentAddressOf(device))
            result.now = giveAddressBack(context, device);
        verifyName(context, name, &result);
        return true;
    });
    return result;
}

Result forceAndVerify(const Context &context, const TemporaryAddress &address) {
    Result result;
    context.guarded("forceIp", [&] {
        const auto indication = context.interaction.begin(Step::Force);
        result.path = Path::Force;
        result.addresses = Delivery::Unconfirmed;
        sendForcedAddress(context, address);
        result.addresses = Delivery::Acknowledged;
        result.now = waitForDevice(context, address.mac, address.address);
        return true;
    });
    if (result.now) {
        follow(context, *result.now, true);
        result.success = currentAddressOf(*result.now) == address.address;
    }
    result.verification = result.success ? Verification::AddressSeen : Verification::None; // nothing is stored
    if (!result.success && result.path != Path::None)
        result.text = result.now ? "The camera has the address " + toText(currentAddressOf(*result.now)) + "."
                                 : "The address was sent, but the camera does not answer the search.";
    return result;
}

} // namespace

Result restart(const Context &context, const CQuorelGigEDeviceInfo &device) {
    if (const std::string reason = refusalOfHolder(device); !reason.empty())
        return Result::refusal(reason);
    return undertake(context, device, "restart", settingsOf(cameraOf(device)),
                     [&](const Context &inner) { return restartAndAwait(inner, device); });
}

Result rename(const Context &context, const CQuorelGigEDeviceInfo &device, const std::string &name) {
    if (name.size() > NameBytes)
        return Result::refusal("A name has at most 16 bytes.");
    if (const std::string reason = refusalOfHolder(device); !reason.empty())
        return Result::refusal(reason);
    Settings wanted = settingsOf(cameraOf(device));
    wanted.name = name;
    return undertake(context, device, "name", wanted,
                     [&](const Context &inner) { return writeAndVerifyName(inner, device, name); });
}

Result forceAddressTo(const Context &context, const CQuorelGigEDeviceInfo &device, const TemporaryAddress &address) {
    if (const std::string reason = refusalOfHolder(device); !reason.empty())
        return Result::refusal(reason);
    return undertake(context, device, "force", settingsAt(device, address),
                     [&](const Context &inner) { return forceAndVerify(inner, address); });
}

} // namespace commissioning
