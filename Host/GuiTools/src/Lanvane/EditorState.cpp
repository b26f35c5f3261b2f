#include "Lanvane/EditorState.h"

#include "Lanvane/AddressRules.h"
#include "Lanvane/AddressText.h"
#include "Lanvane/DeviceDisplay.h"
#include "Lanvane/QIpNetmaskValidator.h"

using namespace Corvo;
using commissioning::Mode;

namespace {

constexpr const char *PersistentIpAddress = "GevPersistentIPAddress";
constexpr const char *PersistentSubnetMask = "GevPersistentSubnetMask";
constexpr const char *PersistentDefaultGateway = "GevPersistentDefaultGateway";

const QLatin1String NoAddress("0.0.0.0");

AddressTexts currentAddresses(const CQuorelGigEDeviceInfo &device) {
    return {displayText(device.GetIpAddress()), displayText(device.GetSubnetMask()),
            displayText(device.GetDefaultGateway())};
}

/// Of the flags of the current configuration only this number is patched after a save.
EditorState::OptionalMode modeOf(const CQuorelGigEDeviceInfo &device) {
    const uint modes = displayText(device.GetIpConfigCurrent()).toUInt();
    if ((modes & 1u) != 0)
        return Mode::Static;
    if ((modes & 2u) != 0)
        return Mode::Dhcp;
    return (modes & 4u) != 0 ? EditorState::OptionalMode(Mode::Auto) : std::nullopt;
}

std::array<QString, EditorState::FieldCount> canonicalTexts(const AddressTexts &addresses) {
    return {canonicalIpAddress(addresses.ipAddress), canonicalNetmask(addresses.netmask),
            canonicalIpAddress(addresses.defaultGateway)};
}

AddressTexts suggestion(const QNetworkAddressEntry &entry) {
    return {SuggestIPAddress(entry), entry.netmask().isNull() ? QString() : entry.netmask().toString(), NoAddress};
}

commissioning::Address addressOf(const QString &text) { return ipv4AddressFromText(text).toIPv4Address(); }

} // namespace

std::optional<AddressTexts> storedAddresses(const CQuorelGigEDeviceInfo &device, bool isForced) {
    if (device.GetPropertyAvailable(PersistentIpAddress))
        return AddressTexts{displayText(device, PersistentIpAddress), displayText(device, PersistentSubnetMask),
                            displayText(device, PersistentDefaultGateway)};
    return isForced || modeOf(device) != Mode::Static ? std::nullopt : std::optional(currentAddresses(device));
}

bool isAtTemporaryAddress(const CQuorelGigEDeviceInfo &device, bool isForced) {
    if (modeOf(device) != Mode::Static)
        return false;
    const AddressTexts current = currentAddresses(device);
    const auto stored = storedAddresses(device, isForced);
    if (stored && stored->ipAddress == NoAddress) // it found one by itself
        return isForced;
    return !stored || stored->ipAddress != current.ipAddress || stored->netmask != current.netmask;
}

void EditorState::take(const Device &device, const DeviceSurroundings &surroundings) {
    m_Device = device;
    m_Surroundings = surroundings;
    m_StoredMode = modeOf(device);
    m_Current = canonicalTexts(currentAddresses(device));
    const auto stored = storedAddresses(device, surroundings.isForced);
    m_Stored = stored ? std::optional(canonicalTexts(*stored)) : std::nullopt;
    const bool isStatic = m_StoredMode == Mode::Static;
    if (m_Stored && (isStatic || m_Stored->at(IpAddress) != NoAddress))
        m_Static = *m_Stored;
    else if (isStatic)
        m_Static = m_Current;
    else {
        const AddressTexts texts = suggestion(surroundings.adapterEntry);
        m_Static = {texts.ipAddress, texts.netmask, texts.defaultGateway};
    }
}

void EditorState::load(const Device &device, const DeviceSurroundings &surroundings) {
    clear();
    take(device, surroundings);
    m_Mode = m_StoredMode;
    updateFlags();
}

void EditorState::follow(const Device &device, const DeviceSurroundings &surroundings) {
    if (!m_isEditModeActive) {
        load(device, surroundings);
        return;
    }
    if (m_Mode == Mode::Static && m_StoredMode != Mode::Static) { // what was suggested has been asked for
        for (const Field field : {IpAddress, Netmask, DefaultGateway})
            m_Typed[field] = text(field);
    }
    take(device, surroundings);
    updateFlags();
}

void EditorState::chooseMode(OptionalMode mode) {
    m_isEditModeActive = true;
    m_Mode = mode;
    updateFlags();
}

void EditorState::type(Field field, const QString &text) {
    m_isEditModeActive = true;
    m_Typed[field] = text;
    updateFlags();
}

void EditorState::takeCurrentAddresses() {
    m_Typed = {m_Current[IpAddress], m_Current[Netmask], m_Current[DefaultGateway]};
    chooseMode(Mode::Static);
}

void EditorState::clearEditFlags() {
    m_isEditModeActive = false;
    m_isIpProtocolConfigDirty = m_isIpAddressDirty = m_isNetmaskDirty = m_isDefaultGatewayDirty = false;
    m_isIpAddressEdited = m_isNetmaskEdited = m_isDefaultGatewayEdited = false;
    m_isCustomNameDirty = false;
}

QString EditorState::mac() const { return m_Device ? macOf(*m_Device) : QString(); }

QString EditorState::text(Field field) const {
    if (m_Mode && *m_Mode != Mode::Static)
        return m_Current[field];
    return m_Typed[field].value_or(m_Static[field]);
}

QString EditorState::canonical(Field field) const {
    return field == Netmask ? canonicalNetmask(text(field)) : canonicalIpAddress(text(field));
}

bool EditorState::isSupported(Mode mode) const {
    if (!m_Device || !m_Device->GetPropertyAvailable("_PortableIpConfigOptions"))
        return false;
    switch (mode) {
    case Mode::Static:
        return m_Device->IsPersistentIpSupported();
    case Mode::Dhcp:
        return m_Device->IsDhcpSupported();
    case Mode::Auto:
        break;
    }
    return m_Device->IsAutoIpSupported();
}

EditorState::OptionalMode EditorState::supported(OptionalMode mode) const {
    return mode && isSupported(*mode) ? mode : std::nullopt;
}

EditorState::OptionalMode EditorState::mode() const { return supported(m_Mode); }

bool EditorState::isDirty(Field field) const {
    return mode() == Mode::Static && (!m_Stored || canonical(field) != m_Stored->at(field));
}

void EditorState::updateFlags() {
    m_isIpProtocolConfigDirty = mode() != supported(m_StoredMode);
    m_isIpAddressDirty = isDirty(IpAddress);
    m_isNetmaskDirty = isDirty(Netmask);
    m_isDefaultGatewayDirty = isDirty(DefaultGateway);
    const bool isStatic = mode() == Mode::Static; // in another mode what was typed is not to be saved
    m_isIpAddressEdited = isStatic && m_Typed[IpAddress].has_value();
    m_isNetmaskEdited = isStatic && m_Typed[Netmask].has_value();
    m_isDefaultGatewayEdited = isStatic && m_Typed[DefaultGateway].has_value();
}

QString EditorState::problem() const {
    if (!mode())
        return QStringLiteral("No IP configuration is chosen.");
    if (mode() != Mode::Static)
        return {};
    QString ofAddress = addressProblem(text(IpAddress), text(Netmask), m_Surroundings.hostEntries);
    if (!ofAddress.isEmpty())
        return ofAddress;
    if (usableNetmask(text(Netmask)) == 0)
        return QStringLiteral("The subnet mask is not one of a network.");
    return isGatewayValid(text(DefaultGateway), text(Netmask))
               ? QString()
               : QStringLiteral("The default gateway is not the address of a host.");
}

QString EditorState::hint() const {
    if (m_Device && !isSupported(Mode::Static) && !isSupported(Mode::Dhcp) && !isSupported(Mode::Auto))
        return QStringLiteral("The device says that it supports none of these configurations.");
    return hasChanges() ? problem() : QString();
}

bool EditorState::hasChanges() const {
    return m_isIpProtocolConfigDirty || m_isIpAddressDirty || m_isNetmaskDirty || m_isDefaultGatewayDirty ||
           m_isCustomNameDirty;
}

bool EditorState::isSavePending() const {
    return m_isEditModeActive && (hasChanges() || m_isNetmaskEdited || m_isDefaultGatewayEdited) && isValid();
}

commissioning::Change EditorState::change() const {
    commissioning::Change change;
    change.device = *m_Device;
    change.adapter = m_Surroundings.adapterName.toStdString();
    change.mode = mode();
    change.address = addressOf(canonical(IpAddress));
    change.mask = addressOf(canonical(Netmask));
    change.gateway = addressOf(canonical(DefaultGateway));
    change.modeDiffers = m_isIpProtocolConfigDirty;
    change.addressDiffers = m_isIpAddressDirty;
    change.maskDiffers = m_isNetmaskDirty;
    change.gatewayDiffers = m_isDefaultGatewayDirty;
    return change;
}
