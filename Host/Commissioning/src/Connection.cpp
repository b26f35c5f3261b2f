#include "commissioning/Connection.h"

#include "Base/GCException.h"
#include "GenApi/GenApi.h"
#include "Registers.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/ForceAddress.h"

#include <algorithm>
#include <utility>

namespace commissioning {

using namespace Corvo;

namespace {

/// A camera at an address: another one there is not it, as when two have the same address.
CQuorelGigEDeviceInfo targetAt(const CQuorelGigEDeviceInfo &device, const String_t &ipAddress) {
    CQuorelGigEDeviceInfo info;
    info.SetIpAddress(ipAddress);
    if (device.IsMacAddressAvailable())
        info.SetMacAddress(device.GetMacAddress());
    return info;
}

/// A refused open looks like any other failure: the device itself tells whether somebody holds it.
bool isInUseByAnother(IGigETransportLayer &layer, const CQuorelGigEDeviceInfo &target) {
    EDeviceAccessiblityInfo verdict = Accessibility_Unknown;
    try {
        layer.IsDeviceAccessible(target, AccessModeSet(Control), &verdict);
    } catch (const GenICam::GenericException &) { // not found at that address, so nothing is known of its holder
    }
    return verdict == Accessibility_Opened || verdict == Accessibility_OpenedExclusively;
}

} // namespace

Connection::~Connection() { close(); }

bool Connection::open(const Context &context, const CQuorelGigEDeviceInfo &device, const std::string &adapter,
                      const String_t &ipAddress) {
    std::string address = ipAddress.c_str();
    for (;;) {
        const auto failure = tryOpen(context, targetAt(device, address));
        if (!failure)
            return true;
        if (failure->isAccessDenied) {
            context.interaction.accessDenied();
            return false;
        }
        context.trace.debug("Could not open the device. Will try forceIP ('%s')", failure->text.c_str());
        ForceRequest request;
        request.device = device;
        request.adapter = adapter;
        Address forced = 0;
        if (!forceAddress(context, request, &forced))
            return false;
        address = toText(forced);
    }
}

std::optional<Connection::Failure> Connection::tryOpen(const Context &context, const CQuorelGigEDeviceInfo &target) {
    const auto indication = context.interaction.begin(Step::Connect);
    close();
    m_pLayer = &context.layer;
    m_pInteraction = &context.interaction;
    Failure failure;
    try {
        createAndOpen(target);
        return std::nullopt;
    } catch (const GenICam::AccessException &error) {
        failure = {error.GetDescription(), true};
    } catch (const GenICam::GenericException &error) {
        failure = {error.GetDescription(), isInUseByAnother(context.layer, target)};
    }
    close();
    return failure;
}

void Connection::createAndOpen(const CQuorelGigEDeviceInfo &target) {
    ICorvoDevice *created = m_pLayer->CreateDevice(target);
    m_pDevice = dynamic_cast<ICorvoGigEDevice *>(created);
    if (!m_pDevice) {
        m_pLayer->DestroyDevice(created);
        throw LOGICAL_ERROR_EXCEPTION("The device must be a GEV Camera.");
    }
    const CQuorelGigEDeviceInfo found(m_pDevice->GetDeviceInfo());
    m_Heartbeat_ms = Registers{found}.read(GEV_REG_HEARTBEAT_TIMEOUT);
    m_pDevice->Open(Control | Stream | Event);
    // While its description was read the address may have gone to another camera. From now on the channel writes to
    // nobody but who gave control.
    if (!Registers{found}.read(GEV_REG_DEVICE_MAC_HIGH))
        throw RUNTIME_EXCEPTION("The camera cannot be seen at its address any more.");
}

/// Through the feature, as the channel would overwrite the register with its next heartbeat. A camera that crashed
/// applications left with a long timeout would be blocked by the next crash for that long.
void Connection::restoreHeartbeat() {
    constexpr std::uint32_t Least_ms = 500;
    const auto before_ms = std::exchange(m_Heartbeat_ms, std::nullopt);
    const GenApi::CIntegerPtr timeout(m_pDevice->GetTLNodeMap()->GetNode("HeartbeatTimeout"));
    if (before_ms && timeout.IsValid())
        timeout->SetValue(std::max(*before_ms, Least_ms));
}

void Connection::close() {
    if (!m_pDevice)
        return;
    const auto attempt = [this](const char *what, const auto &work) {
        try {
            work();
        } catch (...) {
            m_pInteraction->failure("closeDevice", std::current_exception(), what);
        }
    };
    if (m_pDevice->IsOpen()) {
        attempt("Failed to restore the heartbeat timeout", [this] { restoreHeartbeat(); });
        attempt("Failed to close device", [this] { m_pDevice->Close(); });
    }
    attempt("Failed to destroy device", [this] { m_pLayer->DestroyDevice(std::exchange(m_pDevice, nullptr)); });
}

} // namespace commissioning
