#pragma once

/// \file
/// Persistent IP configuration by MAC address (vendor command SETIPCONFIG).

#include "gxapi/GvcpMessages.h"
#include "gxapi/GxStatus.h"

#include <sys/socket.h>

namespace Gx {

/// Stores a persistent IP configuration in the device with a MAC address, whatever its current address is.
///
/// \param mac 6 bytes in transmission order.
/// \param ipConfig modes to enable.
/// \param ip, subnetMask, gateway IPv4 socket addresses; each may be null, its field is then sent as zeros.
/// \param userDefinedName null, or a buffer of at least 17 bytes of which the first 16 are sent as they are; the 17th
///        tells a name that was too long.
/// \param broadcastAck lets the device acknowledge by broadcast, which a host in a foreign subnet needs.
/// \param timeout_ms the quiet period after which the wait ends.
/// \return 0; GX_E_TIMEOUT when no device acknowledged, which includes devices that do not know the command;
///         GX_E_INTERNAL when the device reported a generic error; GX_FALSE when nothing could be sent;
///         GX_E_ONLY_IPV4; GX_E_ABORTED (CStopScope); a socket error. Thread-safe.
[[nodiscard]] GXSTATUS SetIpConfiguration(const std::uint8_t *mac, GEV_IP_CONFIG ipConfig, const sockaddr *ip,
                                          const sockaddr *subnetMask, const sockaddr *gateway,
                                          const char *userDefinedName, bool broadcastAck,
                                          std::uint32_t timeout_ms) noexcept;

} // namespace Gx
