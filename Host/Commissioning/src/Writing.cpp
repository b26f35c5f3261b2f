#include "Writing.h"

#include "Base/GCException.h"
#include "MinimalCorvoGigETL/ICorvoGigEDevice.h"
#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/Connection.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Search.h"
#include "gxapi/GvcpMessages.h"

#include <cstdlib>

namespace commissioning {

using namespace Corvo;

namespace {

std::uint32_t wantedWord(const Change &change) { return change.word ? *change.word : wordOf(*change.mode); }
bool isPersistent(const Change &change) { return (wantedWord(change) & GEV_IP_CONFIG_PERSISTENT_IP) != 0; }
bool isDhcp(const Change &change) { return (wantedWord(change) & GEV_IP_CONFIG_DHCP) != 0; }

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

bool Writing::traceBroadcast() const {
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

bool Writing::sendCommand(bool persistent, bool dhcp, const std::string &name) {
    const Texts text(m_Change);
    return m_Context.layer.BroadcastIpConfiguration(text.mac, persistent, dhcp, text.address, text.mask, text.gateway,
                                                    name);
}

bool Writing::broadcast(const std::string &name) {
    if (!traceBroadcast())
        return false;
    const String_t mac = m_Change.device.GetMacAddress();
    m_Result.path = Path::Broadcast;
    m_Result.mode = Delivery::Unconfirmed;
    m_Result.addresses = m_Change.storesAddresses() ? Delivery::Unconfirmed : Delivery::NotSent;
    // The command carries addresses only for a static mode.
    const bool isBegun = !m_Change.isStaticFirst || sendCommand(true, false, name);
    if (!isBegun || !sendCommand(isPersistent(m_Change), isDhcp(m_Change), name)) {
        m_Context.trace.warning("Failed to change IP configuration via broadcast for MAC=%s. This is not an error. The "
                                "device may not support broadcast ip configuration.",
                                mac.c_str());
        return false;
    }
    m_Context.trace.progress("Successfully changed IP configuration via broadcast for MAC=%s.", mac.c_str());
    m_Result.mode = Delivery::Acknowledged;
    if (m_Change.modeDiffers)
        rememberMode();
    if (m_Change.hasAddressChanges())
        rememberAddresses();
    return true;
}

bool Writing::unicast() {
    const String_t oldIp = m_Change.device.GetIpAddress();
    const Tracer &trace = m_Context.trace;
    Connection &connection = m_Context.connection;
    trace.progress("Trying open device with old IP=%s to change IP configuration via unicast.", oldIp.c_str());
    if (!connection.open(m_Context, m_Change.device, m_Change.adapter, oldIp)) {
        trace.progress("Could not open device with old IP=%s to change IP configuration via unicast.", oldIp.c_str());
        return false;
    }
    m_Result.path = Path::Unicast;
    const CQuorelGigEDeviceInfo opened(connection.device().GetDeviceInfo());
    trace.progress("Successfully opened device with old IP=%s; Netmask=%s; Gateway=%s; IPConfig='%s' to change IP "
                   "configuration via unicast.",
                   oldIp.c_str(), opened.GetSubnetMask().c_str(), opened.GetDefaultGateway().c_str(),
                   configurationText(opened).c_str());
    const auto indication = m_Context.interaction.begin(Step::Write);
    writeToOpenDevice();
    trace.progress("Closing device with old IP=%s.", oldIp.c_str());
    connection.close();
    trace.progress("Finished configuring device with old IP=%s.", oldIp.c_str());
    return true;
}

void Writing::writeToOpenDevice() {
    // The order matters: the address features of many cameras are available only in static mode.
    if (m_Change.isStaticFirst)
        m_Context.connection.device().ChangeIpConfiguration(true, false);
    if (m_Change.modeDiffers && !m_Change.isStaticFirst)
        writeMode();
    if (m_Change.hasAddressChanges())
        writeAddresses();
    if (m_Change.isStaticFirst)
        writeMode();
}

void Writing::writeMode() {
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
    m_Context.connection.device().ChangeIpConfiguration(isPersistent(m_Change), isDhcp(m_Change));
    m_Result.mode = Delivery::Acknowledged;
    rememberMode();
}

void Writing::writeAddresses() {
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

void Writing::rememberMode() {
    updateDeviceInfo(m_Context.layer, m_Context.devices, m_Change.device.GetMacAddress(),
                     std::to_string(wantedWord(m_Change)).c_str(), nullptr, nullptr, nullptr, false);
}

void Writing::rememberAddresses() {
    const Texts text(m_Change);
    updateDeviceInfo(m_Context.layer, m_Context.devices, text.mac, nullptr, text.address, text.mask, text.gateway,
                     false);
    if (m_Result.addresses == Delivery::NotSent) // with another mode the vendor command carries none
        return;
    m_Result.addresses = Delivery::Acknowledged;
    if (CDeviceInfo *device = findByMac(m_Context.devices, text.mac.c_str()))
        setStoredAddresses(*device, m_Change.wanted());
}

} // namespace commissioning
