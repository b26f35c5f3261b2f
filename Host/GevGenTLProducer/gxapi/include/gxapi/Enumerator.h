#pragma once

/// \file
/// Discovery of GigE Vision devices.

#include "gxapi/GvcpMessages.h"
#include "gxapi/GxStatus.h"

#include <sys/socket.h>

namespace Gx {

class Enumerator {
public:
    enum Flags : std::uint32_t {
        FlagDefault = 0,
        /// Devices may answer by broadcast, so that those configured for a foreign subnet are heard too. The request
        /// goes to 255.255.255.255 and answers from any subnet are accepted.
        FlagBroadcastAcknowledge = 1
    };

    /// Receives the devices found.
    class Callee {
    public:
        virtual ~Callee() = default;

        /// Called once for each accepted acknowledge, on the thread that called Discover and inside that call.
        ///
        /// \param device sender of the acknowledge (sockaddr_in).
        /// \param info the words before Description are in host order, IPv4 addresses included; untrusted content.
        ///        Lives only during the call.
        /// \param adapter address of the host adapter the acknowledge arrived on (sockaddr_in).
        /// \return 0; anything else is traced and does not end the discovery.
        virtual GXSTATUS EnumCallback(const sockaddr *device, const GEV_DISCOVERY_INFO *info,
                                      const sockaddr *adapter) noexcept = 0;
    };

    /// Sends one DISCOVERY on every usable adapter, or by unicast to one device, and reports every acknowledge.
    ///
    /// Reporting starts when collecting has ended, so that a slow callee loses no acknowledge. A device may be reported
    /// once per adapter it is heard on, and again when it answers both by broadcast and by unicast.
    ///
    /// \param callee not owned; null discards what is found.
    /// \param timeout_ms the quiet period that ends the collection.
    /// \param flags combination of Flags.
    /// \param target null for a broadcast; otherwise the IPv4 address of one device, port 0 meaning 3956.
    /// \return 0 also when nothing answered; GX_FALSE when the request could be sent on no adapter;
    ///         GX_E_ONLY_IPV4; a socket error. Thread-safe.
    [[nodiscard]] static GXSTATUS Discover(Callee *callee, std::uint32_t timeout_ms, std::uint32_t flags,
                                           const sockaddr *target) noexcept;

    /// Datagrams that the sockets of discoveries and of the other broadcast operations lost because their receive
    /// buffers were full, since the process started. A difference tells of one discovery, as long as it was the only
    /// one. Thread-safe.
    [[nodiscard]] static std::uint64_t DroppedDatagrams() noexcept;
};

} // namespace Gx
