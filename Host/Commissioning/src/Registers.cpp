#include "Registers.h"

#include "commissioning/DeviceInfos.h"

#include <cstdio>
#include <strings.h>

namespace commissioning {

using Corvo::CQuorelGigEDeviceInfo;

namespace {

bool hasMac(const std::array<std::uint32_t, 2> &registers, const CQuorelGigEDeviceInfo &device) {
    char mac[sizeof "025AE3000001"];
    std::snprintf(mac, sizeof mac, "%04X%08X", registers[0] & 0xFFFF, registers[1]);
    return strcasecmp(mac, device.GetMacAddress()) == 0;
}

} // namespace

Registers::Registers(const CQuorelGigEDeviceInfo &device) {
    constexpr std::uint32_t Lifetime_ms = 2000; // whatever the camera answers
    if (Corvo::OpenControlChannel(device, 0, &m_Channel, Lifetime_ms) != GX_SUCCESS)
        return;
    const auto mac = read(std::array<std::uint32_t, 2>{GEV_REG_DEVICE_MAC_HIGH, GEV_REG_DEVICE_MAC_LOW});
    if (!mac || !hasMac(*mac, device))
        m_Channel.reset();
}

std::optional<std::uint32_t> Registers::read(std::uint32_t address) {
    const auto values = read(std::array<std::uint32_t, 1>{address});
    return values ? std::optional(values->front()) : std::nullopt;
}

std::optional<StoredAddresses> Registers::readStored() {
    const auto values = read(std::array<std::uint32_t, 3>{GEV_REG_PERSISTENT_IP_ADDRESS, GEV_REG_PERSISTENT_SUBNET_MASK,
                                                          GEV_REG_PERSISTENT_DEFAULT_GATEWAY});
    if (!values)
        return std::nullopt;
    return StoredAddresses{(*values)[0], (*values)[1], (*values)[2]};
}

std::optional<Holder> Registers::readHolder() {
    if ((read(GEV_REG_GVCP_CAPABILITY).value_or(0) & GEV_CAPABILITY_PRIMARY_APPLICATION) == 0)
        return std::nullopt;
    const auto values =
        read(std::array<std::uint32_t, 2>{GEV_REG_PRIMARY_APPLICATION_IP_ADDRESS, GEV_REG_PRIMARY_APPLICATION_PORT});
    if (!values || (*values)[0] == 0)
        return std::nullopt;
    return Holder{(*values)[0], static_cast<std::uint16_t>((*values)[1]), std::nullopt};
}

} // namespace commissioning
