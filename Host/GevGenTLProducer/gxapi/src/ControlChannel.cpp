#include "gxapi/ControlChannel.h"

#include "ControlChannelImp.h"
#include "Error.h"
#include "GvcpCommands.h"
#include "TraceImp.h"
#include "gxapi/StopToken.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

namespace GxImp {

namespace {

constexpr std::uint32_t MinHeartbeatTimeout_ms = 500;
constexpr std::uint32_t DefaultHeartbeatTimeout_ms = 3000;
constexpr std::uint32_t PrivilegeMask = GEV_EXCLUSIVE_CONTROL_ACCESS | GEV_CONTROL_ACCESS;

/// Of the attempts to give the privilege back to a silent device: outages while a link comes up again last as long.
constexpr std::uint32_t MaxReleaseTime_ms = 3000;
constexpr std::uint32_t ReleasePeriod_ms = 200;

/// The host beats three times within the device's timeout.
constexpr std::uint32_t HeartbeatPeriod(std::uint32_t timeout_ms) noexcept { return timeout_ms / 3; }

constexpr std::uint32_t StreamRegister(std::uint32_t base, std::uint32_t channel) noexcept {
    return base + GEV_STREAM_CHANNEL_STRIDE * channel;
}

} // namespace

const CControlChannel::PropertyRow CControlChannel::m_PropertyTable[7] = {
    {"ReadRegTimeout", &CControlChannel::m_ReadRegTimeout_ms, false},
    {"WriteRegTimeout", &CControlChannel::m_WriteRegTimeout_ms, false},
    {"ReadMemTimeout", &CControlChannel::m_ReadMemTimeout_ms, false},
    {"WriteMemTimeout", &CControlChannel::m_WriteMemTimeout_ms, false},
    {"MaxRetryCountRead", &CControlChannel::m_MaxRetryCountRead, false},
    {"MaxRetryCountWrite", &CControlChannel::m_MaxRetryCountWrite, false},
    {"StatisticReadWriteTimeoutCount", &CControlChannel::m_StatisticReadWriteTimeoutCount, false},
};

GXSTATUS CControlChannel::Open(const sockaddr *deviceAddress, std::uint32_t accessFlags) noexcept {
    if (!IsIPv4(deviceAddress)) {
        GX_TRACE(FlagControlChannel, LevelError, "Currently only IPv4 addressing is supported.");
        return GX_E_ONLY_IPV4;
    }
    deviceAddr = DeviceAddress(deviceAddress);
    GXSTATUS status = OpenSocket();
    if (status == GX_SUCCESS)
        status = GainPrivilege(accessFlags);
    if (status == GX_SUCCESS)
        status = StartHeartbeat();
    if (status == GX_SUCCESS)
        status = ReadCapabilities();
    if (status == GX_SUCCESS) {
        m_Opened = true;
        return status;
    }
    (void)m_HeartbeatTimer.Stop();
    Disconnect();
    m_GxSocket.Close();
    return status;
}

GXSTATUS CControlChannel::OpenSocket() noexcept {
    GXSTATUS status = m_GxSocket.Open();
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagControlChannel, LevelError, "Failed to create socket for control channel. Status 0x%08x.", status);
        return status;
    }
    // Nothing shall queue on the host: a request that waits there would be answered after its timeout.
    const int size = 0;
    status = m_GxSocket.SetOpt(SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
    if (status != GX_SUCCESS) {
        const int error = GxGetSocketError();
        GX_TRACE(FlagControlChannel, LevelError, "Error while setting send buffer size, error %d: %s", error,
                 ErrnoText(error).c_str());
    }
    return status;
}

GXSTATUS CControlChannel::GainPrivilege(std::uint32_t accessFlags) noexcept {
    if ((accessFlags & PrivilegeMask) == 0)
        return GX_SUCCESS;
    m_DeviceAccessFlags = accessFlags; // The consent may be lost on its way; only a refusal changes this.
    const GXSTATUS status = WriteOneReg(GEV_REG_CONTROL_CHANNEL_PRIVILEGE, accessFlags);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to gain access priviledges 0x%08x. 0x%08X.", accessFlags,
                 status);
    if (status == GX_E_GEV_ACCESS_DENIED)
        m_DeviceAccessFlags = 0;
    return status;
}

GXSTATUS CControlChannel::StartHeartbeat() noexcept {
    const GXSTATUS status = m_HeartbeatTimer.Create(HeartbeatPeriod(m_HeartbeatTimeout_ms));
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to create heartbeat timer. 0x%08X.", status);
    return status;
}

GXSTATUS CControlChannel::ReadCapabilities() noexcept {
    std::uint32_t address = GEV_REG_DEVICE_MODE;
    std::uint32_t value = 0;
    GXSTATUS status = ReadReg(&address, &value, 1);
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagControlChannel, LevelError, "Failed to read device mode register. 0x%08X.", status);
        return status;
    }
    m_DeviceMode = value;

    address = GEV_REG_GVCP_CAPABILITY;
    status = ReadReg(&address, &value, 1);
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagControlChannel, LevelError, "Failed to read GVCP capabilities register. 0x%08X.", status);
        return status;
    }
    m_GvcpCapabilities = value;
    return GX_SUCCESS;
}

void CControlChannel::ReleasePrivilege() noexcept {
    const std::uint32_t privilege = m_DeviceAccessFlags;
    if (privilege == 0)
        return;
    const Gx::CStopScope shield(nullptr); // else the device would be left held
    const GXSTATUS status = WriteOneReg(GEV_REG_CONTROL_CHANNEL_PRIVILEGE, 0);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to release control channel 0x%08x. 0x%08X.", privilege,
                 status);
    if (status == GX_E_DISCONNECTED)
        SendRelease(); // The outage that ended the channel may be over.
    m_DeviceAccessFlags = 0;
}

void CControlChannel::LoseToOutage() noexcept {
    SurpriseRemoval();
    if (m_DeviceAccessFlags == 0)
        return;
    SendRelease();
    if (!m_Opened)
        return;
    AddRef();
    if (!m_PrivilegeReleaser.Queue())
        Release(); // not the last reference: the caller has one
}

void CControlChannel::SendRelease() noexcept {
    Posix::CAutoLock lock(m_CriticalSection);
    if (m_Release.Header.FortyTwo != GVCP_KEY) {
        FormatHeader(m_Release.Header, GEV_COMMAND_FLAG_ANSWER, TAG_WRITEREG_CMD, sizeof m_Release.Item,
                     TakeRequestId());
        m_Release.Item = {htonl(GEV_REG_CONTROL_CHANNEL_PRIVILEGE), 0};
    }
    (void)m_GxSocket.SendTo(&m_Release, sizeof m_Release, deviceAddr);
}

/// True when the device has answered, or when no answer can be received.
bool CControlChannel::AwaitRelease() noexcept {
    const Deadline end(ReleasePeriod_ms);
    GXSTATUS status = GX_SUCCESS;
    while (status == GX_SUCCESS && !end.HasPassed()) {
        GVCP_WRITE_RESPONSE response{};
        std::size_t received = 0;
        status = m_GxSocket.Recv(&response, sizeof response, static_cast<std::uint32_t>(end.RemainingPollTimeout()),
                                 &received);
        if (received >= sizeof response.Header && response.Header.AckId == m_Release.Header.ReqId)
            return true;
    }
    return status != GX_SUCCESS && status != GX_E_TIMEOUT;
}

void CControlChannel::CPrivilegeReleaser::Deliver() noexcept {
    // A device takes the privilege back by itself after the heartbeat timeout.
    const Deadline end(std::min<std::uint32_t>(m_Channel.m_HeartbeatTimeout_ms, MaxReleaseTime_ms));
    while (!m_Channel.AwaitRelease() && !end.HasPassed())
        m_Channel.SendRelease();
    m_Channel.Release(); // may delete the channel and, with it, this object
}

std::uint16_t CControlChannel::TakeRequestId() noexcept {
    const std::uint16_t id = XactId;
    XactId = static_cast<std::uint16_t>(id + (id == 0xFFFF ? 2 : 1)); // never 0
    return id;
}

GXSTATUS CControlChannel::Destroy() noexcept {
    const GXSTATUS status = m_HeartbeatTimer.Stop();
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagControlChannel, LevelError, "Failed to stop heartbeat timer 0x%08X.", status);
        return status;
    }
    Disconnect();
    Release();
    return GX_SUCCESS;
}

void CControlChannel::Disconnect() noexcept {
    {
        // In one go: a heartbeat that waits for the lock must not beat without the privilege. And a callback that
        // destroys the channel waits here for the thread that found the loss and is still inside.
        Posix::CAutoLock change(m_HeartbeatChange);
        Posix::CAutoLock lock(m_CriticalSection);
        ReleasePrivilege();
        m_Disconnected = true;
    }
    m_HeartbeatTimer.Join(); // The thread must be gone before the last reference is.
    DeliverRemoval();
}

void CControlChannel::SurpriseRemoval() noexcept {
    if (m_Disconnected.exchange(true))
        return;
    if (m_SurpriseRemovalCallback.IsRegistered()) {
        AddRef();
        m_RemovalPending = !m_SurpriseRemovalCallback.Queue();
    }
    const GXSTATUS status = m_HeartbeatTimer.Stop();
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to stop heartbeat timer. Status 0x%08X.", status);
}

void CControlChannel::DeliverRemoval() noexcept {
    if (m_RemovalPending.exchange(false))
        m_SurpriseRemovalCallback.Deliver(); // may delete this channel
}

void CControlChannel::CSurpriseRemovalCallback::Register(SurpriseRemovalCallback *callee) noexcept {
    Posix::CAutoLock lock(m_Lock);
    m_pCallee = callee;
}

void CControlChannel::CSurpriseRemovalCallback::Deliver() noexcept {
    {
        Posix::CAutoLock lock(m_Lock);
        SurpriseRemovalCallback *callee = m_pCallee;
        if (callee)
            callee->OnSurpriseRemoval();
    }
    // May delete the channel and, with it, this object.
    m_pParentControlChannel->Release();
}

GXSTATUS CControlChannel::RegisterSurpriseRemovalCallback(SurpriseRemovalCallback *callback) noexcept {
    m_SurpriseRemovalCallback.Register(callback);
    return GX_SUCCESS;
}

void CControlChannel::CHeartbeatTimer::TimeoutRoutine() noexcept {
    // Before the values are read: a beat that had to wait must not write a timeout that was changed meanwhile.
    Posix::CAutoLock lock(m_Channel.m_CriticalSection);
    const bool write = m_Channel.m_DeviceAccessFlags != 0;
    const std::uint32_t address = GEV_REG_HEARTBEAT_TIMEOUT;
    std::uint32_t value = m_Channel.m_HeartbeatTimeout_ms;
    const GXSTATUS status = write ? m_Channel.WriteReg(&address, &value, 1) : m_Channel.ReadReg(&address, &value, 1);
    if (status == GX_SUCCESS || status == GX_E_DISCONNECTED)
        return;
    GX_TRACE(FlagControlChannel, LevelError, "Failed to %s heartbeat register. Status 0x%08X.",
             write ? "write" : "read", status);
}

GXSTATUS CControlChannel::SetHeartbeatTimeout(std::uint32_t ms) noexcept {
    if (ms < MinHeartbeatTimeout_ms) {
        GX_TRACE(FlagControlChannel, LevelError, "Attempt to set too small heartbeat timeout of %u ms.", ms);
        return GX_E_HEARTBEAT_TOO_SMALL;
    }
    // One change at a time: else one caller's timeout could reach the device and the other's the timer.
    Posix::CAutoLock lock(m_HeartbeatChange);
    const std::uint32_t before = m_HeartbeatTimeout_ms.exchange(ms);
    return m_HeartbeatTimer.IsStarted() ? ChangeHeartbeat(before, ms) : GX_SUCCESS;
}

GXSTATUS CControlChannel::ChangeHeartbeat(std::uint32_t before, std::uint32_t ms) noexcept {
    // In either order the host beats faster than the device expects, all the time.
    if (ms <= before) {
        const GXSTATUS status = RetriggerHeartbeat(ms);
        return status == GX_SUCCESS ? WriteHeartbeatTimeout(ms) : status;
    }
    const GXSTATUS status = WriteHeartbeatTimeout(ms);
    return status == GX_SUCCESS ? RetriggerHeartbeat(ms) : status;
}

GXSTATUS CControlChannel::WriteHeartbeatTimeout(std::uint32_t ms) noexcept {
    if (m_DeviceAccessFlags == 0)
        return GX_SUCCESS;
    const GXSTATUS status = WriteOneReg(GEV_REG_HEARTBEAT_TIMEOUT, ms);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to write heartbeat timout register. 0x%08X.", status);
    return status;
}

GXSTATUS CControlChannel::RetriggerHeartbeat(std::uint32_t ms) noexcept {
    const GXSTATUS status = m_HeartbeatTimer.Retrigger(HeartbeatPeriod(ms));
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to create heartbeat timer. 0x%08X.", status);
    return status;
}

GXSTATUS CControlChannel::WriteOneReg(std::uint32_t address, std::uint32_t value) noexcept {
    return WriteReg(&address, &value, 1);
}

GXSTATUS CControlChannel::GetProperty(std::uint32_t tag, void *buffer, std::size_t size, std::size_t *pSize) noexcept {
    if (!buffer) {
        GX_TRACE(FlagControlChannel, LevelError, "Invalid buffer for GetProperty.");
        return GX_E_INVALID_PARAMETER;
    }
    if (tag >= std::size(m_PropertyTable)) {
        GX_TRACE(FlagControlChannel, LevelError, "Invalid attribute tag %d", static_cast<int>(tag));
        return GX_E_INVALID_PARAMETER;
    }
    const PropertyRow &row = m_PropertyTable[tag];
    const std::uint32_t value = this->*row.Member;
    if (size < sizeof value) {
        GX_TRACE(FlagControlChannel, LevelError, "Invalid buffer size for attribute %s", row.Name);
        return GX_E_INVALID_PARAMETER;
    }
    std::memcpy(buffer, &value, sizeof value);
    if (pSize)
        *pSize = sizeof value;
    return GX_SUCCESS;
}

GXSTATUS CControlChannel::SetProperty(std::uint32_t tag, const void *buffer, std::size_t size) noexcept {
    if (!buffer) {
        GX_TRACE(FlagControlChannel, LevelError, "Invalid buffer for SetProperty.");
        return GX_E_INVALID_PARAMETER;
    }
    if (tag >= std::size(m_PropertyTable)) {
        GX_TRACE(FlagControlChannel, LevelError, "Invalid attribute tag %d", static_cast<int>(tag));
        return GX_E_INVALID_PARAMETER;
    }
    const PropertyRow &row = m_PropertyTable[tag];
    if (row.ReadOnly) {
        GX_TRACE(FlagControlChannel, LevelError, "Property %s is read only.", row.Name);
        return GX_E_INVALID_PARAMETER;
    }
    std::uint32_t value = 0;
    if (size != sizeof value) {
        GX_TRACE(FlagControlChannel, LevelError, "Invalid buffer size for attribute %s", row.Name);
        return GX_E_INVALID_PARAMETER;
    }
    std::memcpy(&value, buffer, sizeof value);
    this->*row.Member = value;
    return GX_SUCCESS;
}

GXSTATUS CControlChannel::EnableCommandDuplication(bool enable) noexcept {
    m_duplicateCommands = enable;
    return GX_SUCCESS;
}

namespace {

/// Address and port of a destination as the device's registers take them.
struct Destination {
    std::uint32_t Address;
    std::uint32_t Port;
};

GXSTATUS MapDestination(const sockaddr *address, Destination *pDestination) noexcept {
    if (!IsIPv4(address)) {
        GX_TRACE(FlagControlChannel, LevelError, "Unsupported socket address family %hd.",
                 static_cast<short>(address ? address->sa_family : sa_family_t{AF_UNSPEC}));
        return GX_E_ONLY_IPV4;
    }
    const auto *in = reinterpret_cast<const sockaddr_in *>(address);
    *pDestination = {ntohl(in->sin_addr.s_addr), ntohs(in->sin_port)};
    return GX_SUCCESS;
}

} // namespace

GXSTATUS CControlChannel::OpenStream(std::uint32_t channel, const sockaddr *destination) noexcept {
    Destination to{};
    GXSTATUS status = MapDestination(destination, &to);
    if (status != GX_SUCCESS)
        return status;
    const std::uint32_t addresses[] = {StreamRegister(GEV_REG_STREAM_CHANNEL_DESTINATION, channel),
                                       StreamRegister(GEV_REG_STREAM_CHANNEL_PORT, channel)};
    const std::uint32_t values[] = {to.Address, to.Port};
    status = WriteReg(addresses, values, 2);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to write registers to open stream %d. Status = 0x%08X.",
                 static_cast<int>(channel), status);
    return status;
}

GXSTATUS CControlChannel::CloseStream(std::uint32_t channel) noexcept {
    const GXSTATUS status = WriteOneReg(StreamRegister(GEV_REG_STREAM_CHANNEL_PORT, channel), 0);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError,
                 "Failed to set port register of stream channel %i to zero. Status = 0x%08X.",
                 static_cast<int>(channel), status);
    return status;
}

GXSTATUS CControlChannel::OpenMessageChannel(const sockaddr *destination, std::uint32_t timeout,
                                             std::uint32_t retryCount) noexcept {
    Destination to{};
    GXSTATUS status = MapDestination(destination, &to);
    if (status != GX_SUCCESS)
        return status;
    if (!HasCapability(GEV_CAPABILITY_EVENT | GEV_CAPABILITY_EVENTDATA)) {
        GX_TRACE(FlagControlChannel, LevelError, "Device supports no message channel.");
        return GX_E_NO_MESSAGE_CHANNEL;
    }
    const std::uint32_t addresses[] = {GEV_REG_MESSAGE_CHANNEL_DESTINATION, GEV_REG_MESSAGE_CHANNEL_TIMEOUT,
                                       GEV_REG_MESSAGE_CHANNEL_RETRY_COUNT, GEV_REG_MESSAGE_CHANNEL_PORT};
    const std::uint32_t values[] = {to.Address, timeout, retryCount, to.Port};
    status = WriteReg(addresses, values, 4);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to write message channel registers. Status = 0x%08X.", status);
    return status;
}

GXSTATUS CControlChannel::CloseMessageChannel() noexcept {
    const GXSTATUS status = WriteOneReg(GEV_REG_MESSAGE_CHANNEL_PORT, 0);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError,
                 "Failed to set port register of message channel to zero. Status = 0x%08X.", status);
    return status;
}

namespace {

/// Opens a new channel; what it has acquired after a failure is given back by Destroy.
GXSTATUS OpenChannel(CControlChannel &channel, const sockaddr *deviceAddress, std::uint32_t accessFlags,
                     std::uint32_t heartbeatTimeout_ms) noexcept {
    GXSTATUS status = channel.SetHeartbeatTimeout(heartbeatTimeout_ms);
    if (status == GX_SUCCESS)
        status = channel.Open(deviceAddress, accessFlags);
    if (status == GX_SUCCESS) // Once more: now it reaches the device.
        status = channel.SetHeartbeatTimeout(heartbeatTimeout_ms);
    return status;
}

} // namespace

} // namespace GxImp

GXSTATUS Gx::ControlChannel::Create(const sockaddr *deviceAddress, std::uint32_t accessFlags,
                                    std::uint32_t heartbeatTimeout_ms, std::uint32_t lifetime_ms,
                                    ControlChannel **pChannel) noexcept {
    *pChannel = nullptr;
    auto *channel = new (std::nothrow) GxImp::CControlChannel(lifetime_ms);
    if (!channel)
        return GX_E_OUT_OF_MEMORY;
    const GXSTATUS status = GxImp::OpenChannel(*channel, deviceAddress, accessFlags, heartbeatTimeout_ms);
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagControlChannel, LevelError, "Failed to open control channel. 0x%08X.", status);
        (void)channel->Destroy();
        return status;
    }
    *pChannel = channel;
    return GX_SUCCESS;
}

GXSTATUS Gx::ControlChannel::Create(const sockaddr *deviceAddress, std::uint32_t accessFlags,
                                    std::uint32_t heartbeatTimeout_ms, ControlChannel **pChannel) noexcept {
    return Create(deviceAddress, accessFlags, heartbeatTimeout_ms, GX_INFINITE, pChannel);
}

GXSTATUS Gx::ControlChannel::Create(const sockaddr *deviceAddress, std::uint32_t accessFlags,
                                    ControlChannel **pChannel) noexcept {
    return Create(deviceAddress, accessFlags, GxImp::DefaultHeartbeatTimeout_ms, pChannel);
}
