#pragma once

#include "AsyncCallbackPosix.h"
#include "GxSocket.h"
#include "RefCounted.h"
#include "RetriggerableTimerPosix.h"
#include "ThreadPosix.h"
#include "gxapi/ControlChannel.h"

#include <memory>

namespace GxImp {

/// The control channel over a UDP socket.
///
/// Lock order: the lock of the surprise-removal callback (whose callee may call the channel), m_HeartbeatChange, the
/// timer mutex (held by the heartbeat), m_CriticalSection. A thread that holds a started transaction therefore must not
/// call SetHeartbeatTimeout or Destroy. Members that other threads read without m_CriticalSection are atomic.
class CControlChannel : public Gx::ControlChannel, public CRefCounted {
public:
    class CXaction;
    class CReadRegXaction;
    class CWriteRegXaction;
    class CReadMemXaction;
    class CWriteMemXaction;

    /// Connects to a device. After a failure the socket is closed, no timer runs and no privilege is held.
    [[nodiscard]] GXSTATUS Open(const sockaddr *deviceAddress, std::uint32_t accessFlags) noexcept;

    [[nodiscard]] GXSTATUS Destroy() noexcept override;
    [[nodiscard]] GXSTATUS GetProperty(std::uint32_t tag, void *buffer, std::size_t size,
                                       std::size_t *pSize) noexcept override;
    [[nodiscard]] GXSTATUS SetProperty(std::uint32_t tag, const void *buffer, std::size_t size) noexcept override;
    [[nodiscard]] GXSTATUS ReadReg(const std::uint32_t *addresses, std::uint32_t *values,
                                   std::uint32_t count) noexcept override;
    [[nodiscard]] GXSTATUS WriteReg(const std::uint32_t *addresses, const std::uint32_t *values,
                                    std::uint32_t count) noexcept override;
    [[nodiscard]] GXSTATUS ReadMem(std::uint32_t address, void *buffer, std::uint32_t size) noexcept override;
    [[nodiscard]] GXSTATUS WriteMem(std::uint32_t address, const void *data, std::uint32_t size) noexcept override;
    [[nodiscard]] GXSTATUS OpenStream(std::uint32_t channel, const sockaddr *destination) noexcept override;
    [[nodiscard]] GXSTATUS CloseStream(std::uint32_t channel) noexcept override;
    [[nodiscard]] GXSTATUS SetHeartbeatTimeout(std::uint32_t ms) noexcept override;
    [[nodiscard]] GXSTATUS EnableCommandDuplication(bool enable) noexcept override;
    [[nodiscard]] GXSTATUS RegisterSurpriseRemovalCallback(SurpriseRemovalCallback *callback) noexcept override;
    [[nodiscard]] GXSTATUS OpenMessageChannel(const sockaddr *destination, std::uint32_t timeout,
                                              std::uint32_t retryCount) noexcept override;
    [[nodiscard]] GXSTATUS CloseMessageChannel() noexcept override;

    /// Start one transaction for the whole count, without splitting. The caller then calls Complete and releases the
    /// transaction on the same thread; until then it holds the channel's lock.
    [[nodiscard]] GXSTATUS ReadRegBegin(const std::uint32_t *addresses, std::uint32_t *values, std::uint32_t count,
                                        std::unique_ptr<CReadRegXaction> *pXaction) noexcept;
    [[nodiscard]] GXSTATUS WriteRegBegin(const std::uint32_t *addresses, const std::uint32_t *values,
                                         std::uint32_t count, std::unique_ptr<CWriteRegXaction> *pXaction) noexcept;
    [[nodiscard]] GXSTATUS ReadMemBegin(std::uint32_t address, void *buffer, std::uint32_t size,
                                        std::unique_ptr<CReadMemXaction> *pXaction) noexcept;
    [[nodiscard]] GXSTATUS WriteMemBegin(std::uint32_t address, const void *data, std::uint32_t size,
                                         std::unique_ptr<CWriteMemXaction> *pXaction) noexcept;

    /// Writes memory by WRITEREG; up to 3 trailing bytes are not written.
    [[nodiscard]] GXSTATUS WriteMemEmulated(std::uint32_t address, const void *data, std::uint32_t size) noexcept;

    /// Declares the device lost: disconnects for good, stops the heartbeat and queues the callback, if one is
    /// registered. When no thread can be made for it the callback runs as the last act of the heartbeat's.
    void SurpriseRemoval() noexcept;
    /// The same for a device that has fallen silent. It may hold our privilege until its heartbeat timeout and be
    /// closed to everybody, so it is told that the privilege is given back: at once, when the channel is destroyed,
    /// and meanwhile, for three seconds at most, until it answers. The caller holds m_CriticalSection.
    void LoseToOutage() noexcept;

private:
    using Property = std::atomic<std::uint32_t>;

    struct PropertyRow {
        const char *Name;
        Property CControlChannel::*Member;
        bool ReadOnly;
    };
    static const PropertyRow m_PropertyTable[7];

    static constexpr std::uint32_t m_DefaultReadRegTimeout_ms = 200;
    static constexpr std::uint32_t m_DefaultWriteRegTimeout_ms = 200;
    static constexpr std::uint32_t m_DefaultReadMemTimeout_ms = 200;
    static constexpr std::uint32_t m_DefaultWriteMemTimeout_ms = 200;
    static constexpr std::uint32_t m_DefaultMaxRetryCountRead = 2;
    static constexpr std::uint32_t m_DefaultMaxRetryCountWrite = 2;

    class CSurpriseRemovalCallback : public Posix::CAsyncCallback {
    public:
        explicit CSurpriseRemovalCallback(CControlChannel &parent) noexcept : m_pParentControlChannel(&parent) {}
        void Register(SurpriseRemovalCallback *callee) noexcept;
        bool IsRegistered() const noexcept { return m_pCallee != nullptr; }
        void Deliver() noexcept override;

    private:
        Posix::CCriticalSection m_Lock{Posix::CCriticalSection::Kind::Recursive};
        std::atomic<SurpriseRemovalCallback *> m_pCallee{nullptr}; ///< called under m_Lock
        CControlChannel *m_pParentControlChannel;
    };

    class CHeartbeatTimer : public Posix::CRetriggerableTimer {
    public:
        explicit CHeartbeatTimer(CControlChannel &channel) noexcept : m_Channel(channel) {}

    protected:
        void TimeoutRoutine() noexcept override;
        void OnEnded() noexcept override { m_Channel.DeliverRemoval(); }

    private:
        CControlChannel &m_Channel;
    };

    /// Gives the privilege back to a device that may be silent for a while, on a thread of its own.
    class CPrivilegeReleaser : public Posix::CAsyncCallback {
    public:
        explicit CPrivilegeReleaser(CControlChannel &channel) noexcept : m_Channel(channel) {}

    protected:
        void Deliver() noexcept override;

    private:
        CControlChannel &m_Channel;
    };

    [[nodiscard]] GXSTATUS OpenSocket() noexcept;
    [[nodiscard]] GXSTATUS GainPrivilege(std::uint32_t accessFlags) noexcept;
    [[nodiscard]] GXSTATUS StartHeartbeat() noexcept;
    [[nodiscard]] GXSTATUS ReadCapabilities() noexcept;
    void ReleasePrivilege() noexcept;
    void SendRelease() noexcept;
    bool AwaitRelease() noexcept;
    void DeliverRemoval() noexcept;
    std::uint16_t TakeRequestId() noexcept;
    /// Ends the use of a channel whose heartbeat was stopped.
    void Disconnect() noexcept;
    [[nodiscard]] GXSTATUS WriteHeartbeatTimeout(std::uint32_t ms) noexcept;
    [[nodiscard]] GXSTATUS RetriggerHeartbeat(std::uint32_t ms) noexcept;
    [[nodiscard]] GXSTATUS ChangeHeartbeat(std::uint32_t before, std::uint32_t ms) noexcept;
    [[nodiscard]] GXSTATUS WriteOneReg(std::uint32_t address, std::uint32_t value) noexcept;
    bool HasCapability(std::uint32_t bits) const noexcept { return (m_GvcpCapabilities & bits) != 0; }

    CSurpriseRemovalCallback m_SurpriseRemovalCallback{*this};
    CPrivilegeReleaser m_PrivilegeReleaser{*this};
    /// Request that gives the privilege back, the same in every attempt; guarded by m_CriticalSection until sent.
    struct {
        GVCP_WRITEREG_REQUEST Header;
        GVCP_WRITEREG_ITEM Item;
    } m_Release{};
    Posix::CCriticalSection m_HeartbeatChange;
    CSocket m_GxSocket;
    sockaddr_in deviceAddr{};
    std::uint16_t XactId = 1; ///< next request id, guarded by m_CriticalSection
    Posix::CCriticalSection m_CriticalSection{Posix::CCriticalSection::Kind::Recursive};
    std::atomic<bool> m_Disconnected{false};
    std::atomic<bool> m_RemovalPending{false};         ///< a callback without a thread of its own
    std::atomic<bool> m_Opened{false};                 ///< the opening has succeeded
    std::atomic<std::uint32_t> m_DeviceAccessFlags{0}; ///< privilege that may be held: 0, 1 or 2
    std::atomic<std::uint32_t> m_DeviceMode{0};
    std::atomic<std::uint32_t> m_GvcpCapabilities{0};
    std::atomic<std::uint32_t> m_HeartbeatTimeout_ms{3000};
    CHeartbeatTimer m_HeartbeatTimer{*this};
    Property m_ReadRegTimeout_ms{m_DefaultReadRegTimeout_ms};
    Property m_WriteRegTimeout_ms{m_DefaultWriteRegTimeout_ms};
    Property m_ReadMemTimeout_ms{m_DefaultReadMemTimeout_ms};
    Property m_WriteMemTimeout_ms{m_DefaultWriteMemTimeout_ms};
    std::atomic<bool> m_duplicateCommands{false};
    Property m_MaxRetryCountRead{m_DefaultMaxRetryCountRead};
    Property m_MaxRetryCountWrite{m_DefaultMaxRetryCountWrite};
    Property m_StatisticReadWriteTimeoutCount{0};
};

} // namespace GxImp
