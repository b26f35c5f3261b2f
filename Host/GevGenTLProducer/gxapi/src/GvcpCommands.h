#pragma once

#include "GxSocket.h"
#include "gxapi/GvcpMessages.h"

namespace GxImp {

/// Fills the fields every command has. \param length payload bytes.
void FormatHeader(GVCP_REQUEST_HEADER &header, std::uint8_t flags, std::uint16_t command, std::uint16_t length,
                  std::uint16_t requestId) noexcept;

/// Maps a socket address into a GVCP address field. \return GX_E_ONLY_IPV4 for any other family.
[[nodiscard]] GXSTATUS MapSockAddr2Gvcp(const sockaddr *address, GEV_IP_ADDRESS &field) noexcept;

/// Each command owns the record of one complete request.
class DiscoveryCommand {
public:
    /// \param flags bit 0 asks for broadcast acknowledges.
    [[nodiscard]] GXSTATUS FormatRequest(std::uint32_t flags) noexcept;
    GXBUF GetRequest() noexcept { return {&m_Request, sizeof m_Request}; }

private:
    GVCP_REQUEST_HEADER m_Request{};
};

class ForceIpCommand {
public:
    /// \param mac 6 bytes in transmission order.
    [[nodiscard]] GXSTATUS FormatRequest(const std::uint8_t *mac, const sockaddr *ip, const sockaddr *subnetMask,
                                         const sockaddr *gateway) noexcept;
    GXBUF GetRequest() noexcept { return {&m_Request, sizeof m_Request}; }

private:
    _GVCP_FORCEIP_REQUEST m_Request{};
};

class SetIpConfigurationCommand {
public:
    /// Arguments as those of Gx::SetIpConfiguration.
    [[nodiscard]] GXSTATUS FormatRequest(const std::uint8_t *mac, GEV_IP_CONFIG ipConfig, const sockaddr *ip,
                                         const sockaddr *subnetMask, const sockaddr *gateway,
                                         const char *userDefinedName, bool broadcastAck) noexcept;
    GXBUF GetRequest() noexcept { return {&m_Request, sizeof m_Request}; }

private:
    _GVCP_SETIPCONFIG_REQUEST m_Request{};
};

class ActionCommand {
public:
    /// Immediate action.
    [[nodiscard]] GXSTATUS FormatRequest(std::uint32_t deviceKey, std::uint32_t groupKey, std::uint32_t groupMask,
                                         bool acknowledge) noexcept;
    /// Action at a time of the device's clock, in ticks.
    [[nodiscard]] GXSTATUS FormatRequest(std::uint32_t deviceKey, std::uint32_t groupKey, std::uint32_t groupMask,
                                         std::int64_t actionTime, bool acknowledge) noexcept;
    GXBUF GetRequest() noexcept { return {&m_Request, m_Size}; }

private:
    void Format(std::uint8_t flags, std::uint16_t length, std::uint32_t deviceKey, std::uint32_t groupKey,
                std::uint32_t groupMask) noexcept;

    _GVCP_ACTION_CMD m_Request{};
    std::size_t m_Size = 0;
};

} // namespace GxImp
