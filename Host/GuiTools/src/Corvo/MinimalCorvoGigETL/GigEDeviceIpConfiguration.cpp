// The device's IP settings, by feature or by register.

#include "MinimalCorvo/Utilities.h"
#include "MinimalCorvoGigETL/DeviceLog.h"
#include "MinimalCorvoGigETL/GigEDevice.h"
#include "MinimalCorvoGigETL/GxStatusException.h"

#include "Base/GCException.h"

#include <algorithm>
#include <array>

namespace Corvo {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

/// Address, subnet mask and gateway in host order.
using Settings = std::array<std::uint32_t, 3>;
constexpr Settings SettingsRegisters = {GEV_REG_PERSISTENT_IP_ADDRESS, GEV_REG_PERSISTENT_SUBNET_MASK,
                                        GEV_REG_PERSISTENT_DEFAULT_GATEWAY};

GXSTATUS Parse(const std::array<String_t, 3> &texts, Settings &settings) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (!ParseDottedQuad(texts[i], settings[i]))
            return GX_E_INVALID_PARAMETER;
    }
    return GX_SUCCESS;
}

} // namespace

/// With m_memberLock held.
void CGigEDevice::CheckControlAccess(const char *operation) const {
    if (!IsOpen())
        throw LOGICAL_ERROR_EXCEPTION("Camera object must not be closed (%s)", operation);
    if (!m_AccessMode.test(Control) && !m_AccessMode.test(Exclusive))
        throw LOGICAL_ERROR_EXCEPTION("Unsupported mode: Control access is required (%s)", operation);
}

/// Sets all of them, or returns false when the registers have to serve: not all are writable, or one could not be
/// written although the device lives. The limits in descriptions are not asked; many are wrong. With m_memberLock held.
bool CGigEDevice::SetFeatures(std::initializer_list<std::pair<const GenApi::CIntegerPtr &, std::uint32_t>> values) {
    if (!std::all_of(values.begin(), values.end(),
                     [this](const auto &value) { return GenApi::IsWritable(AccessModeOf(value.first)); }))
        return false;
    try {
        for (const auto &[feature, value] : values)
            feature->SetValue(value, false);
        return true;
    } catch (const GenICam::GenericException &e) {
        if (!HasLiveChannel())
            throw;
        tracelog::LogTrace(DeviceLogCategory(), tracelog::lvWarning, "Setting by register instead: %s",
                           e.GetDescription());
        return false;
    }
}

void CGigEDevice::ChangeIpConfiguration(bool persistent, bool dhcp) {
    const Lock lock(m_memberLock);
    CheckControlAccess("ChangeIpConfiguration");
    std::uint32_t value = GEV_IP_CONFIG_LLA;
    if (dhcp && m_Info.IsDhcpSupported())
        value |= GEV_IP_CONFIG_DHCP;
    if (persistent && m_Info.IsPersistentIpSupported())
        value |= GEV_IP_CONFIG_PERSISTENT_IP;

    if (SetFeatures({{m_CameraNodeMap.GevCurrentIPConfiguration, value}}))
        return;
    constexpr std::uint32_t address = GEV_REG_NETWORK_INTERFACE_CONFIGURATION;
    const GXSTATUS status = m_pControlChannel->WriteReg(&address, &value, 1);
    m_pPort->InvalidateNode(); // features over the same register
    THROW_IF_GX_FAILED(status, "Failed to change IP configuration: ");
}

void CGigEDevice::GetPersistentIpAddress(String_t &ip, String_t &mask, String_t &gateway) {
    const Lock lock(m_memberLock);
    CheckControlAccess("GetPersistentIpAddress");
    Settings settings{};
    const GXSTATUS status = m_pControlChannel->ReadReg(SettingsRegisters.data(), settings.data(), settings.size());
    THROW_IF_GX_FAILED(status, "Failed to get persistent IP address: ");
    ip = DottedQuad(settings[0]);
    mask = DottedQuad(settings[1]);
    gateway = DottedQuad(settings[2]);
}

void CGigEDevice::SetPersistentIpAddress(const String_t &ip, const String_t &mask, const String_t &gateway) {
    constexpr char failure[] = "Failed to set persistent IP address: ";
    const Lock lock(m_memberLock);
    CheckControlAccess("SetPersistentIpAddress");
    Settings settings{};
    Settings before{};
    THROW_IF_GX_FAILED(Parse({ip, mask, gateway}, settings), "%s", failure);

    // To be put back: the new address with the old mask would be worse than the old settings.
    const GXSTATUS known = m_pControlChannel->ReadReg(SettingsRegisters.data(), before.data(), before.size());
    if (known != GX_SUCCESS && !HasLiveChannel())
        THROW_IF_GX_FAILED(known, "%s", failure);
    if (SetFeatures({{m_CameraNodeMap.GevPersistentIPAddress, settings[0]},
                     {m_CameraNodeMap.GevPersistentSubnetMask, settings[1]},
                     {m_CameraNodeMap.GevPersistentDefaultGateway, settings[2]}}))
        return;
    const GXSTATUS status = m_pControlChannel->WriteReg(SettingsRegisters.data(), settings.data(), settings.size());
    for (std::size_t i = 0; i < before.size() && known == GX_SUCCESS && status != GX_SUCCESS; ++i)
        (void)m_pControlChannel->WriteReg(&SettingsRegisters[i], &before[i], 1);
    m_pPort->InvalidateNode();
    THROW_IF_GX_FAILED(status, "%s", failure);
}

} // namespace Corvo
