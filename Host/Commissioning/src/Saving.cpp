#include "commissioning/Saving.h"

#include "Base/GCException.h"
#include "MinimalCorvoGigETL/ICorvoGigEDevice.h"
#include "Registers.h"
#include "ResultText.h"
#include "Undertake.h"
#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/Connection.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Rediscovery.h"
#include "commissioning/Search.h"
#include "commissioning/SmallChanges.h"
#include "gxapi/GvcpMessages.h"

#include <cstdlib>

namespace commissioning {

using namespace Corvo;

namespace {

bool isPersistent(Mode mode) { return mode == Mode::Static; }
bool isDhcp(Mode mode) { return mode == Mode::Dhcp; }

/// The texts of a change, as the trace and the transport layer take them.
struct Texts {
    explicit Texts(const Change &change)
        : mac(change.device.GetMacAddress()), oldIp(change.device.GetIpAddress()), address(toText(change.address)),
          mask(toText(change.mask)), gateway(toText(change.gateway)) {}

    String_t mac, oldIp, address, mask, gateway;
};

/// Empty without link-local: every camera has it as its last resort, so such a word is no real configuration.
std::string configurationText(const CQuorelGigEDeviceInfo &device) {
    const unsigned long word = std::strtoul(device.GetIpConfigCurrent().c_str(), nullptr, 10);
    if ((word & GEV_IP_CONFIG_LLA) == 0)
        return "";
    return std::string((word & GEV_IP_CONFIG_PERSISTENT_IP) != 0 ? "Static IP, " : "") +
           ((word & GEV_IP_CONFIG_DHCP) != 0 ? "DHCP, " : "") + "Auto IP";
}

} // namespace

const Result &Saving::run() {
    m_Result.success = broadcast();
    if (!m_Result.success && !isStored()) {
        m_Context.trace.debug("Broadcast Configuration failed! Trying unicast configuration.");
        m_Result.success = unicast();
    }
    if (!m_Result.success)
        inspect();
    m_Result.text = describe(m_Change, m_Result);
    return m_Result;
}

bool Saving::broadcast() {
    return m_Context.guarded("broadcastConfiguration", [this] {
        const auto indication = m_Context.interaction.begin(Step::Broadcast);
        return sendBroadcast();
    });
}

bool Saving::traceBroadcast() const {
    const Texts text(m_Change);
    if (!m_Change.mode) {
        m_Context.trace.error("Invalid addresstype for MAC=%s! Don't know which addressing to use.", text.mac.c_str());
        return false;
    }
    switch (*m_Change.mode) {
    case Mode::Static:
        m_Context.trace.progress(
            "Trying broadcast ip config for MAC=%s setting static IP (NewIP=%s; NewNetmask=%s; NewGateway=%s;).",
            text.mac.c_str(), text.address.c_str(), text.mask.c_str(), text.gateway.c_str());
        break;
    case Mode::Dhcp:
        m_Context.trace.progress("Trying broadcast ip config for MAC=%s setting DHCP.", text.mac.c_str());
        break;
    case Mode::Auto:
        m_Context.trace.progress("Trying broadcast ip config for MAC=%s setting AutoIP/LLA.", text.mac.c_str());
        break;
    }
    return true;
}

bool Saving::sendBroadcast() {
    if (!traceBroadcast())
        return false;
    const Texts text(m_Change);
    const char *const mac = text.mac.c_str();
    m_Result.path = Path::Broadcast;
    m_Result.mode = Delivery::Unconfirmed;
    m_Result.addresses = isPersistent(*m_Change.mode) ? Delivery::Unconfirmed : Delivery::NotSent;
    if (!m_Context.layer.BroadcastIpConfiguration(text.mac, isPersistent(*m_Change.mode), isDhcp(*m_Change.mode),
                                                  text.address, text.mask, text.gateway, String_t())) {
        m_Context.trace.warning("Failed to change IP configuration via broadcast for MAC=%s. This is not an error. The "
                                "device may not support broadcast ip configuration.",
                                mac);
        return false;
    }
    m_Context.trace.progress("Successfully changed IP configuration via broadcast for MAC=%s.", mac);
    m_Result.mode = Delivery::Acknowledged;
    if (m_Change.modeDiffers)
        rememberMode();
    if (m_Change.hasAddressChanges())
        rememberAddresses();

    m_Context.trace.progress("Restarting IP configuration and waiting for rediscovery for MAC=%s.", mac);
    if (!restartAndAwait()) {
        m_Context.trace.warning("Failed to rediscover the device with MAC=%s.", mac);
        throw RUNTIME_EXCEPTION("Failed to discover reconfigured device");
    }
    m_Context.trace.progress("Successfully rediscovered MAC=%s.", mac);
    return verify();
}

bool Saving::unicast() {
    const bool saved = m_Context.guarded("unicastConfiguration", [this] { return sendUnicast(); });
    m_Context.connection.close();
    return saved;
}

bool Saving::sendUnicast() {
    const Texts text(m_Change);
    const char *const oldIp = text.oldIp.c_str();
    const Tracer &trace = m_Context.trace;
    Connection &connection = m_Context.connection;
    trace.progress("Trying open device with old IP=%s to change IP configuration via unicast.", oldIp);
    if (!connection.open(m_Context, m_Change.device, m_Change.adapter, text.oldIp)) {
        trace.progress("Could not open device with old IP=%s to change IP configuration via unicast.", oldIp);
        return false;
    }
    m_Result.path = Path::Unicast;
    const CQuorelGigEDeviceInfo opened(connection.device().GetDeviceInfo());
    trace.progress("Successfully opened device with old IP=%s; Netmask=%s; Gateway=%s; IPConfig='%s' to change IP "
                   "configuration via unicast.",
                   oldIp, opened.GetSubnetMask().c_str(), opened.GetDefaultGateway().c_str(),
                   configurationText(opened).c_str());
    const auto indication = m_Context.interaction.begin(Step::Write);
    writeToOpenDevice();
    trace.progress("Closing device with old IP=%s.", oldIp);
    connection.close();
    trace.progress("Finished configuring device with old IP=%s.", oldIp);
    if (!restartAndAwait()) {
        trace.warning("Failed to rediscover the configured device with old IP=%s.", oldIp);
        throw RUNTIME_EXCEPTION("Failed to discover reconfigured device");
    }
    return verify();
}

void Saving::writeToOpenDevice() {
    // The order matters: the address features of many cameras are available only in static mode.
    if (m_Change.modeDiffers)
        writeMode();
    if (m_Change.hasAddressChanges())
        writeAddresses();
}

void Saving::writeMode() {
    const String_t oldIp = m_Change.device.GetIpAddress();
    if (!m_Change.mode) {
        m_Context.trace.error("Invalid addresstype for old IP=%s! Don't know which addressing to use.", oldIp.c_str());
        throw RUNTIME_EXCEPTION("No IP configuration is chosen.");
    }
    switch (*m_Change.mode) {
    case Mode::Static:
        m_Context.trace.progress("Setting ip config for device with old IP=%s to static IP.", oldIp.c_str());
        break;
    case Mode::Dhcp:
        m_Context.trace.progress("Setting ip config for device with old IP=%s to DHCP.", oldIp.c_str());
        break;
    case Mode::Auto:
        m_Context.trace.progress("Setting ip config for device with old IP=%s to AutoIP/LLA", oldIp.c_str());
        break;
    }
    m_Result.mode = Delivery::Unconfirmed;
    m_Context.connection.device().ChangeIpConfiguration(isPersistent(*m_Change.mode), isDhcp(*m_Change.mode));
    m_Result.mode = Delivery::Acknowledged;
    rememberMode();
}

void Saving::writeAddresses() {
    const Texts text(m_Change);
    if (!isValidForDevice(m_Change.address)) {
        m_Context.trace.error("Invalid new IP address '%s' for device with old IP=%s!", text.address.c_str(),
                              text.oldIp.c_str());
        throw RUNTIME_EXCEPTION(
            "Invalid IP address. IP addresses 224.0.0.0 to 255.255.255.255 and 127.0.0.1 are not allowed.");
    }
    m_Context.trace.progress(
        "Setting persitent IP address for device with old IP=%s (NewIP=%s; NewNetmask=%s; NewGateway=%s;).",
        text.oldIp.c_str(), text.address.c_str(), text.mask.c_str(), text.gateway.c_str());
    m_Result.addresses = Delivery::Unconfirmed;
    m_Context.connection.device().SetPersistentIpAddress(text.address, text.mask, text.gateway);
    m_Result.addresses = Delivery::Acknowledged;
    rememberAddresses();
}

void Saving::rememberMode() {
    updateDeviceInfo(m_Context.layer, m_Context.devices, m_Change.device.GetMacAddress(),
                     std::to_string(wordOf(*m_Change.mode)).c_str(), nullptr, nullptr, nullptr, false);
}

void Saving::rememberAddresses() {
    const Texts text(m_Change);
    updateDeviceInfo(m_Context.layer, m_Context.devices, text.mac, nullptr, text.address, text.mask, text.gateway,
                     false);
    if (m_Result.addresses == Delivery::NotSent) // with another mode the vendor command carries none
        return;
    m_Result.addresses = Delivery::Acknowledged;
    if (CDeviceInfo *device = findByMac(m_Context.devices, text.mac.c_str()))
        setStoredAddresses(*device, {m_Change.address, m_Change.mask, m_Change.gateway});
}

/// Where it can be asked when no broadcast is heard; of the other modes nobody knows.
Address Saving::expectedAddress() const { return m_Change.mode == Mode::Static ? m_Change.address : 0; }

bool Saving::restartAndAwait() {
    const String_t mac = m_Change.device.GetMacAddress();
    m_Context.layer.RestartIpConfiguration(mac);
    m_Result.now = waitForDevice(m_Context, mac.c_str(), expectedAddress());
    // The restart is one datagram, which may be lost, and some cameras forget it.
    for (int i = 0; i < m_Context.patience.restarts && m_Result.now && !hasTaken(); ++i) {
        m_Context.trace.warning("MAC=%s is back with the old settings. Restarting its IP configuration again.",
                                mac.c_str());
        m_Context.layer.RestartIpConfiguration(mac);
        m_Result.now = waitForDevice(m_Context, mac.c_str(), expectedAddress());
    }
    return m_Result.now.has_value();
}

bool Saving::hasMode() const { return m_Result.now && (!m_Change.mode || modeOf(*m_Result.now) == m_Change.mode); }

bool Saving::hasAddress() const {
    return m_Change.mode != Mode::Static || m_Result.addresses == Delivery::NotSent ||
           currentAddressOf(*m_Result.now) == m_Change.address;
}

/// Whether the camera has restarted with the new settings, as far as a discovery shows it.
bool Saving::hasTaken() const {
    const CQuorelGigEDeviceInfo &now = *m_Result.now;
    if (!hasMode() || !hasAddress())
        return false;
    if (m_Change.mode == Mode::Static) {
        const Texts text(m_Change);
        return m_Result.addresses == Delivery::NotSent ||
               (now.GetSubnetMask() == text.mask && now.GetDefaultGateway() == text.gateway);
    }
    // One that shows the new mode at once, but keeps a static address, has not restarted.
    return !m_Change.modeDiffers || isLinkLocal(currentAddressOf(now)) ||
           now.GetIpAddress() != m_Change.device.GetIpAddress();
}

bool Saving::isStored() const {
    return hasMode() && (m_Change.mode != Mode::Static ||
                         m_Result.stored == StoredAddresses{m_Change.address, m_Change.mask, m_Change.gateway});
}

void Saving::readBack() {
    Registers registers{*m_Result.now};
    m_Result.stored = registers.readStored();
    if (CDeviceInfo *device = findByMac(m_Context.devices, m_Change.device.GetMacAddress().c_str());
        device && m_Result.stored)
        setStoredAddresses(*device, *m_Result.stored);
}

bool Saving::verify() {
    follow(m_Context, *m_Result.now, false);
    readBack();
    m_Result.verification = m_Result.stored ? Verification::StoredRead : Verification::AddressSeen;
    // Whoever forges an acknowledge, or an answer to the search, has not stored anything.
    const bool isDone =
        hasMode() && hasAddress() && (!m_Result.stored || m_Result.addresses == Delivery::NotSent || isStored());
    if (!isDone)
        m_Context.trace.warning("MAC=%s is back without the settings it was sent.",
                                m_Change.device.GetMacAddress().c_str());
    else if (m_Result.path == Path::Broadcast)
        keepName();
    return isDone;
}

/// The vendor command carries a name field that is left empty, which some cameras take for a name.
void Saving::keepName() {
    const CQuorelGigEDeviceInfo &before = m_Change.device;
    const bool isGone = before.IsUserDefinedNameAvailable() && !before.GetUserDefinedName().empty() &&
                        m_Result.now->GetUserDefinedName().empty();
    if (!isGone)
        return;
    m_Context.trace.warning("MAC=%s has lost its user-defined name '%s'.", before.GetMacAddress().c_str(),
                            before.GetUserDefinedName().c_str());
    // One that cannot be read cannot be written either.
    m_Result.isNameLost =
        !m_Result.stored || !rename(m_Context, *m_Result.now, before.GetUserDefinedName().c_str()).success;
}

void Saving::inspect() {
    const String_t mac = m_Change.device.GetMacAddress();
    const auto indication = m_Context.interaction.begin(Step::Write);
    m_Context.guarded("inspect", [&] {
        m_Result.verification = Verification::None;
        m_Result.stored.reset();
        m_Result.now = lookFor(m_Context, mac.c_str(), expectedAddress());
        if (m_Result.now) {
            follow(m_Context, *m_Result.now, true);
            readBack();
        } else if (CDeviceInfo *device = findByMac(m_Context.devices, mac.c_str())) {
            testAccessibility(m_Context.layer, *device);
        }
        return true;
    });
    m_Context.interaction.updated(mac.c_str(), std::nullopt);
}

Result configure(const Context &context, const Change &change) {
    const bool isStatic = change.mode == Mode::Static;
    const Settings wanted{change.mode, isStatic ? change.address : 0, isStatic ? change.mask : 0,
                          isStatic ? change.gateway : 0, change.device.GetUserDefinedName().c_str()};
    return undertake(context, change.device, "set", wanted,
                     [&](const Context &inner) { return Saving(inner, change).run(); });
}

} // namespace commissioning
