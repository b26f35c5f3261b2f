#pragma once

/// \file
/// Temporary IP address by MAC address (FORCEIP).

#include "gxapi/GxStatus.h"

#include <sys/socket.h>

namespace Gx {

/// Gives the device with a MAC address an IP address that lasts until its next restart.
///
/// The request goes to 255.255.255.255 on every adapter, 10 ms apart; any device's successful acknowledge ends the wait
/// of 3000 ms. With address 0.0.0.0 the device restarts its IP configuration cycle and no acknowledge is awaited.
///
/// \param mac 6 bytes in transmission order.
/// \param ip, subnetMask, gateway IPv4 socket addresses, not null.
/// \param port destination UDP port, host order; 0 for 3956.
/// \return 0; GX_E_TIMEOUT when no device acknowledged with success; GX_FALSE when nothing could be sent;
///         GX_E_ONLY_IPV4; GX_E_INVALID_PARAMETER; GX_E_ABORTED (CStopScope); a socket error. Thread-safe.
[[nodiscard]] GXSTATUS ForceIp(const std::uint8_t *mac, const sockaddr *ip, const sockaddr *subnetMask,
                               const sockaddr *gateway, std::uint16_t port) noexcept;

} // namespace Gx
