#include "GvcpCommands.h"

#include "TraceImp.h"

#include <cstring>
#include <endian.h>

namespace GxImp {

namespace {

constexpr std::size_t UserDefinedNameSize = sizeof(_GVCP_SETIPCONFIG_REQUEST::UserDefinedName);

/// Payload bytes of a request record.
template <typename Record> constexpr std::uint16_t PayloadOf() noexcept {
    return sizeof(Record) - sizeof(GVCP_REQUEST_HEADER);
}

GEV_MAC_ADDRESS MapMac(const std::uint8_t *mac) noexcept {
    GEV_MAC_ADDRESS field{};
    field.High = htonl(mac[0] * 256u + mac[1]);
    std::memcpy(&field.Low, mac + 2, sizeof field.Low);
    return field;
}

/// Maps an address and traces a failure with the field's name.
GXSTATUS MapField(const sockaddr *address, GEV_IP_ADDRESS &field, const char *what, const char *request) noexcept {
    const GXSTATUS status = MapSockAddr2Gvcp(address, field);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagDiscovery, LevelError, "Failed to map %s to %s request message struct. Status 0x%08x", what,
                 request, status);
    return status;
}

} // namespace

void FormatHeader(GVCP_REQUEST_HEADER &header, std::uint8_t flags, std::uint16_t command, std::uint16_t length,
                  std::uint16_t requestId) noexcept {
    header.FortyTwo = GVCP_KEY;
    header.Flags = flags;
    header.Command = htons(command);
    header.Length = htons(length);
    header.ReqId = htons(requestId);
}

GXSTATUS MapSockAddr2Gvcp(const sockaddr *address, GEV_IP_ADDRESS &field) noexcept {
    if (!IsIPv4(address)) {
        GX_TRACE(FlagDiscovery, LevelError, "Invalid network address family %hu.\n",
                 address ? address->sa_family : sa_family_t{AF_UNSPEC});
        return GX_E_ONLY_IPV4;
    }
    field = {};
    field.IPv4.Address = reinterpret_cast<const sockaddr_in *>(address)->sin_addr.s_addr;
    return GX_SUCCESS;
}

GXSTATUS DiscoveryCommand::FormatRequest(std::uint32_t flags) noexcept {
    // Bit 3 goes out together with the broadcast-acknowledge bit; devices expect 0x19, not 0x11.
    constexpr std::uint8_t BroadcastFlags = GEV_COMMAND_FLAG_ANSWER | GEV_DISCOVERY_COMMAND_FLAG_BROADCAST_ACK | 0x08;
    FormatHeader(m_Request, (flags & 1) != 0 ? BroadcastFlags : std::uint8_t{GEV_COMMAND_FLAG_ANSWER},
                 TAG_DISCOVERY_CMD, 0, GVCP_BROADCAST_REQ_ID);
    return GX_SUCCESS;
}

GXSTATUS ForceIpCommand::FormatRequest(const std::uint8_t *mac, const sockaddr *ip, const sockaddr *subnetMask,
                                       const sockaddr *gateway) noexcept {
    constexpr char Name[] = "force IP";
    FormatHeader(m_Request.Header, GEV_COMMAND_FLAG_ANSWER, TAG_FORCEIP_CMD, PayloadOf<decltype(m_Request)>(),
                 GVCP_BROADCAST_REQ_ID);
    m_Request.MacAddress = MapMac(mac);
    GXSTATUS status = MapField(ip, m_Request.StaticIp, "IP address", Name);
    if (status == GX_SUCCESS)
        status = MapField(subnetMask, m_Request.StaticSubnetMask, "subnet mask", Name);
    if (status == GX_SUCCESS)
        status = MapField(gateway, m_Request.StaticDefaultGateway, "default gateway", Name);
    return status;
}

GXSTATUS SetIpConfigurationCommand::FormatRequest(const std::uint8_t *mac, GEV_IP_CONFIG ipConfig, const sockaddr *ip,
                                                  const sockaddr *subnetMask, const sockaddr *gateway,
                                                  const char *userDefinedName, bool broadcastAck) noexcept {
    constexpr char Name[] = "Set IP Config";
    if (ip && !IsIPv4(ip)) {
        GX_TRACE(FlagDiscovery, LevelError, "Only IPv4 addressing supported.\n");
        return GX_E_ONLY_IPV4;
    }
    const std::uint8_t flags = GEV_COMMAND_FLAG_ANSWER | (broadcastAck ? GEV_DISCOVERY_COMMAND_FLAG_BROADCAST_ACK : 0);
    FormatHeader(m_Request.Header, flags, TAG_SETIPCONFIG_CMD, PayloadOf<decltype(m_Request)>(), GVCP_BROADCAST_REQ_ID);
    m_Request.MacAddress = MapMac(mac);
    std::uint32_t configuration = 0;
    std::memcpy(&configuration, &ipConfig, sizeof configuration);
    m_Request.IPConfiguration = htonl(configuration);

    GXSTATUS status = GX_SUCCESS;
    if (ip)
        status = MapField(ip, m_Request.PersistantIP, "IP address", Name);
    if (status == GX_SUCCESS && subnetMask)
        status = MapField(subnetMask, m_Request.PersistantSubNetMask, "IP subnet mask", Name);
    if (status == GX_SUCCESS && gateway)
        status = MapField(gateway, m_Request.PersistantDefaultGateway, "IP default gateway", Name);
    if (status != GX_SUCCESS || !userDefinedName)
        return status;

    if (strnlen(userDefinedName, UserDefinedNameSize + 1) > UserDefinedNameSize)
        GX_TRACE(FlagDiscovery, LevelWarning, "Truncating user defined name");
    std::memcpy(m_Request.UserDefinedName, userDefinedName, UserDefinedNameSize);
    return GX_SUCCESS;
}

void ActionCommand::Format(std::uint8_t flags, std::uint16_t length, std::uint32_t deviceKey, std::uint32_t groupKey,
                           std::uint32_t groupMask) noexcept {
    FormatHeader(m_Request.Header, flags, TAG_ACTION_CMD, length, GVCP_BROADCAST_REQ_ID);
    m_Request.DeviceKey = htonl(deviceKey);
    m_Request.GroupKey = htonl(groupKey);
    m_Request.GroupMask = htonl(groupMask);
    m_Size = sizeof(GVCP_REQUEST_HEADER) + length;
}

GXSTATUS ActionCommand::FormatRequest(std::uint32_t deviceKey, std::uint32_t groupKey, std::uint32_t groupMask,
                                      bool acknowledge) noexcept {
    constexpr std::uint16_t Length = offsetof(_GVCP_ACTION_CMD, ActionTime) - sizeof(GVCP_REQUEST_HEADER);
    Format(acknowledge ? std::uint8_t{GEV_COMMAND_FLAG_ANSWER} : std::uint8_t{0}, Length, deviceKey, groupKey,
           groupMask);
    return GX_SUCCESS;
}

GXSTATUS ActionCommand::FormatRequest(std::uint32_t deviceKey, std::uint32_t groupKey, std::uint32_t groupMask,
                                      std::int64_t actionTime, bool acknowledge) noexcept {
    const std::uint8_t flags = GEV_ACTION_COMMAND_SCHEDULED_FLAG | (acknowledge ? GEV_COMMAND_FLAG_ANSWER : 0);
    Format(flags, PayloadOf<_GVCP_ACTION_CMD>(), deviceKey, groupKey, groupMask);
    m_Request.ActionTime = static_cast<std::int64_t>(htobe64(static_cast<std::uint64_t>(actionTime)));
    return GX_SUCCESS;
}

} // namespace GxImp
