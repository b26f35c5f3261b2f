#pragma once

/// \file
/// Control channel to one device: register and memory access, privilege, heartbeat, loss of the device.

#include "gxapi/GvcpMessages.h"
#include "gxapi/GxStatus.h"

#include <sys/socket.h>

namespace Gx {

/// An open control channel. Every operation may be called from any thread; transactions on one channel never overlap.
///
/// A device that leaves a request unanswered through all retries, or denies access, is lost, and so is one whose
/// answers cannot be received: the channel is then disconnected for good, every access returns GX_E_DISCONNECTED and
/// only Destroy is of use.
class ControlChannel {
public:
    /// Tags of GetProperty and SetProperty. Every property is an unsigned 32-bit number.
    enum PropertyTag : std::uint32_t {
        ReadRegTimeout = 0,     ///< ms each attempt waits for its acknowledge (default 200), as the next three
        WriteRegTimeout = 1,    ///< ms
        ReadMemTimeout = 2,     ///< ms
        WriteMemTimeout = 3,    ///< ms
        MaxRetryCountRead = 4,  ///< re-sends after the first attempt (default 2)
        MaxRetryCountWrite = 5, ///< re-sends after the first attempt (default 2)
        StatisticReadWriteTimeoutCount = 6 ///< acknowledge timeouts over the channel's life
    };

    /// Told, once, that the device was lost.
    class SurpriseRemovalCallback {
    public:
        virtual ~SurpriseRemovalCallback() = default;
        /// Runs on a thread that is inside no operation of the channel. May call the channel, Destroy and
        /// RegisterSurpriseRemovalCallback included.
        virtual void OnSurpriseRemoval() noexcept = 0;
    };

    ControlChannel(const ControlChannel &) = delete;
    ControlChannel &operator=(const ControlChannel &) = delete;

    /// Opens a channel.
    ///
    /// \param deviceAddress IPv4 address of the device; port 0 means 3956.
    /// \param accessFlags 0 to monitor without privilege, or GEV_EXCLUSIVE_CONTROL_ACCESS or GEV_CONTROL_ACCESS.
    /// \param heartbeatTimeout_ms at least 500; the device takes the privilege back after that long without a command.
    /// \param pChannel receives the channel, to be given back by Destroy; null after a failure, which leaves no socket
    ///        and no thread behind (but for what Destroy says).
    /// \return 0; GX_E_GEV_ACCESS_DENIED when another application holds the device; GX_E_GEV_NO_MSG when it does not
    ///         answer; GX_E_HEARTBEAT_TOO_SMALL; GX_E_ONLY_IPV4; a socket error.
    [[nodiscard]] static GXSTATUS Create(const sockaddr *deviceAddress, std::uint32_t accessFlags,
                                         std::uint32_t heartbeatTimeout_ms, ControlChannel **pChannel) noexcept;
    /// The same with a heartbeat timeout of 3000 ms.
    [[nodiscard]] static GXSTATUS Create(const sockaddr *deviceAddress, std::uint32_t accessFlags,
                                         ControlChannel **pChannel) noexcept;

    /// Ends the heartbeat, gives the privilege back and drops the channel, which must not be used afterwards. After the
    /// loss of a device that fell silent while the channel held its privilege, a thread of the library goes on giving
    /// it back until the device answers, for the heartbeat timeout or 3 seconds at most.
    /// No other thread may be inside an operation. A notification of the device's loss may still be on its way then:
    /// unregister the callback first, unless it outlives that.
    [[nodiscard]] virtual GXSTATUS Destroy() noexcept = 0;

    /// \param size bytes in buffer, at least 4. \param pSize if not null, receives 4.
    [[nodiscard]] virtual GXSTATUS GetProperty(std::uint32_t tag, void *buffer, std::size_t size,
                                               std::size_t *pSize) noexcept = 0;
    /// \param size must be 4.
    [[nodiscard]] virtual GXSTATUS SetProperty(std::uint32_t tag, const void *buffer, std::size_t size) noexcept = 0;

    /// Registers are 32 bits wide; values are in host order. Longer lists are split into as many transactions as the
    /// device's capabilities ask for; the first that fails ends the operation. A count of 0 succeeds.
    [[nodiscard]] virtual GXSTATUS ReadReg(const std::uint32_t *addresses, std::uint32_t *values,
                                           std::uint32_t count) noexcept = 0;
    [[nodiscard]] virtual GXSTATUS WriteReg(const std::uint32_t *addresses, const std::uint32_t *values,
                                            std::uint32_t count) noexcept = 0;

    /// Bytes are passed in the device's memory order. A size of 0 succeeds. A device without WRITEMEM is written by
    /// registers, and up to 3 trailing bytes that fill no register are then not written.
    [[nodiscard]] virtual GXSTATUS ReadMem(std::uint32_t address, void *buffer, std::uint32_t size) noexcept = 0;
    [[nodiscard]] virtual GXSTATUS WriteMem(std::uint32_t address, const void *data, std::uint32_t size) noexcept = 0;

    /// Directs a stream channel of the device to an IPv4 address and UDP port.
    [[nodiscard]] virtual GXSTATUS OpenStream(std::uint32_t channel, const sockaddr *destination) noexcept = 0;
    [[nodiscard]] virtual GXSTATUS CloseStream(std::uint32_t channel) noexcept = 0;

    /// \param ms at least 500, else GX_E_HEARTBEAT_TOO_SMALL. The host beats every third of it.
    [[nodiscard]] virtual GXSTATUS SetHeartbeatTimeout(std::uint32_t ms) noexcept = 0;

    /// Sends every request datagram twice, for lossy links.
    [[nodiscard]] virtual GXSTATUS EnableCommandDuplication(bool enable) noexcept = 0;

    /// \param callback not owned; null unregisters and returns when a running call has ended (except on its thread).
    [[nodiscard]] virtual GXSTATUS RegisterSurpriseRemovalCallback(SurpriseRemovalCallback *callback) noexcept = 0;

    /// Directs the device's message channel to an IPv4 address and UDP port.
    ///
    /// \param timeout ms the device waits for the host's acknowledge. \param retryCount re-sends by the device.
    /// \return GX_E_NO_MESSAGE_CHANNEL when the device has none.
    [[nodiscard]] virtual GXSTATUS OpenMessageChannel(const sockaddr *destination, std::uint32_t timeout,
                                                      std::uint32_t retryCount) noexcept = 0;
    [[nodiscard]] virtual GXSTATUS CloseMessageChannel() noexcept = 0;

protected:
    ControlChannel() = default;
    virtual ~ControlChannel() = default;
};

} // namespace Gx
