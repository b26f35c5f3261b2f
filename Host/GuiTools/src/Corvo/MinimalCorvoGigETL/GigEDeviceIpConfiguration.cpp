// The device's IP settings, by feature or by register.

#include "MinimalCorvoGigETL/GigEDevice.h"
#include "MinimalCorvoGigETL/GxStatusException.h"

#include "Base/GCException.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace Corvo {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

/// Address, subnet mask and gateway in host order.
using Settings = std::array<std::uint32_t, 3>;
constexpr Settings SettingsRegisters = {GEV_REG_PERSISTENT_IP_ADDRESS, GEV_REG_PERSISTENT_SUBNET_MASK,
                                        GEV_REG_PERSISTENT_DEFAULT_GATEWAY};

String_t DottedQuad(std::uint32_t address) {
    const in_addr network{htonl(address)};
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &network, text, sizeof text);
}

GXSTATUS ParseDottedQuad(const String_t &text, std::uint32_t &address) {
    in_addr network{};
    if (inet_pton(AF_INET, text, &network) != 1)
        return GX_E_INVALID_PARAMETER;
    address = ntohl(network.s_addr);
    return GX_SUCCESS;
}

GXSTATUS Parse(const std::array<String_t, 3> &texts, Settings &settings) {
    GXSTATUS status = GX_SUCCESS;
    for (std::size_t i = 0; i < texts.size() && status == GX_SUCCESS; ++i)
        status = ParseDottedQuad(texts[i], settings[i]);
    return status;
}

} // namespace

/// With m_memberLock held.
void CGigEDevice::CheckControlAccess(const char *operation) const {
    if (!IsOpen())
        throw LOGICAL_ERROR_EXCEPTION("Camera object must not be closed (%s)", operation);
    if (!m_AccessMode.test(Control) && !m_AccessMode.test(Exclusive))
        throw LOGICAL_ERROR_EXCEPTION("Unsupported mode: Control access is required (%s)", operation);
}

void CGigEDevice::ChangeIpConfiguration(bool persistent, bool dhcp) {
    const Lock lock(m_memberLock);
    CheckControlAccess("ChangeIpConfiguration");
    std::uint32_t value = GEV_IP_CONFIG_LLA;
    if (dhcp && m_Info.IsDhcpSupported())
        value |= GEV_IP_CONFIG_DHCP;
    if (persistent && m_Info.IsPersistentIpSupported())
        value |= GEV_IP_CONFIG_PERSISTENT_IP;

    const GenApi::CIntegerPtr &feature = m_CameraNodeMap.GevCurrentIPConfiguration;
    if (GenApi::IsWritable(AccessModeOf(feature))) {
        feature->SetValue(value);
        return;
    }
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
    THROW_IF_GX_FAILED(Parse({ip, mask, gateway}, settings), "%s", failure);

    const GenApi::CIntegerPtr features[] = {m_CameraNodeMap.GevPersistentIPAddress,
                                            m_CameraNodeMap.GevPersistentSubnetMask,
                                            m_CameraNodeMap.GevPersistentDefaultGateway};
    if (std::all_of(std::begin(features), std::end(features),
                    [](const auto &feature) { return GenApi::IsWritable(AccessModeOf(feature)); })) {
        for (std::size_t i = 0; i < settings.size(); ++i)
            features[i]->SetValue(settings[i]);
        return;
    }
    const GXSTATUS status = m_pControlChannel->WriteReg(SettingsRegisters.data(), settings.data(), settings.size());
    m_pPort->InvalidateNode();
    THROW_IF_GX_FAILED(status, "%s", failure);
}

} // namespace Corvo
