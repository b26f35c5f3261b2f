#include "ControlChannelXaction.h"

#include "GvcpCommands.h"
#include "StopPoll.h"
#include "TraceImp.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace GxImp {

namespace {

/// Each outdated acknowledge restarts the timeout; this many timeouts after the first one no further one does.
constexpr std::uint64_t MaxOutdatedTimeouts = 50;
/// However short the timeout is: some outdated acknowledges may have been on their way already.
constexpr std::uint64_t MinPatience_ms = 1000;
/// How long a device may put off one acknowledge; the channel's heartbeat waits meanwhile.
constexpr std::uint32_t MaxPending_ms = 10000;

Deadline PatienceFor(std::uint32_t timeout_ms, std::uint32_t attempts) noexcept {
    const std::uint64_t patience_ms = std::max(timeout_ms * (attempts + MaxOutdatedTimeouts), MinPatience_ms);
    return Deadline(static_cast<std::uint32_t>(std::min<std::uint64_t>(patience_ms, GX_INFINITE)));
}

} // namespace

CControlChannel::CXaction::~CXaction() {
    if (m_pControlChannel)
        m_pControlChannel->m_CriticalSection.Leave();
}

bool CControlChannel::CXaction::Allocate(std::size_t requestSize, std::size_t responseSize) noexcept {
    m_pRequestHeader.reset(new (std::nothrow) std::uint8_t[requestSize]());
    m_pResponseHeader.reset(new (std::nothrow) std::uint8_t[responseSize]());
    m_ResponseSize = responseSize;
    return m_pRequestHeader && m_pResponseHeader;
}

GXSTATUS CControlChannel::CXaction::Init(CControlChannel &channel, std::uint8_t flags, std::uint16_t command,
                                         std::uint32_t length, std::uint32_t timeout_ms,
                                         std::uint32_t retries) noexcept {
    m_Timeout = timeout_ms;
    m_CountOfAttempts = 0;
    m_MaxAttempts = retries == UINT32_MAX ? retries : retries + 1;
    m_RequestLength = sizeof(GVCP_REQUEST_HEADER) + length;

    channel.m_CriticalSection.Enter();
    m_pControlChannel = &channel;
    if (channel.m_Disconnected) {
        GX_TRACE(FlagControlChannel, LevelError, "Attempt to init transaction at disconnected control channel");
        return GX_E_DISCONNECTED;
    }
    if (IsStopRequested())
        return GX_E_ABORTED;
    FormatHeader(*Request<GVCP_REQUEST_HEADER>(), flags, command, static_cast<std::uint16_t>(length),
                 channel.TakeRequestId());

    const GXSTATUS status = Start();
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to start GVCP transaction. 0x%08X", status);
    return status;
}

GXSTATUS CControlChannel::CXaction::Start() noexcept {
    GXSTATUS status = Send();
    if (status == GX_SUCCESS && m_pControlChannel->m_duplicateCommands)
        status = Send();
    return status;
}

GXSTATUS CControlChannel::CXaction::Send() noexcept {
    const GXSTATUS status =
        m_pControlChannel->m_GxSocket.SendTo(m_pRequestHeader.get(), m_RequestLength, m_pControlChannel->deviceAddr);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "GxSocketSend failed. (Status = %#08x)", status);
    return status;
}

GXSTATUS CControlChannel::CXaction::Complete(const GXBUF *buffers, std::size_t count, std::size_t *pReceived) noexcept {
    GXSTATUS status = GX_SUCCESS;
    Verdict verdict = Verdict::Retry;
    while (verdict == Verdict::Retry) {
        if (m_pControlChannel->m_Lifetime.HasPassed())
            return Lose(GX_E_GEV_NO_MSG);
        status = GxSocketRecv(m_pControlChannel->m_GxSocket, buffers, count, WaitTime(), pReceived);
        if (status == GX_SUCCESS)
            verdict = Judge(*pReceived, &status);
        else if (status == GX_E_TIMEOUT)
            verdict = HandleTimeout(&status);
        else
            return status == GX_E_ABORTED ? status : Lose(status);
        if (verdict == Verdict::Retry && IsStopRequested())
            return GX_E_ABORTED;
    }
    return status;
}

std::uint32_t CControlChannel::CXaction::WaitTime() const noexcept {
    const auto wait = m_Completion ? static_cast<std::uint32_t>(m_Completion->RemainingPollTimeout()) : m_Timeout;
    return m_pControlChannel->m_Lifetime.Clip(wait);
}

CControlChannel::CXaction::Verdict CControlChannel::CXaction::Judge(std::size_t received, GXSTATUS *pStatus) noexcept {
    if (received < sizeof(GVCP_RESPONSE_HEADER)) {
        GX_TRACE(FlagControlChannel, LevelError, "Not enough header information to recognize the response.");
        *pStatus = GX_E_SHORT_HEADER;
        return Verdict::Done;
    }
    const GVCP_RESPONSE_HEADER &response = *Response<GVCP_RESPONSE_HEADER>();
    const std::uint16_t requestId = ntohs(Request<GVCP_REQUEST_HEADER>()->ReqId);
    const std::uint16_t ackId = ntohs(response.AckId);
    // The difference in 16 bits with sign keeps its meaning when the ids wrap.
    const auto difference = static_cast<std::int16_t>(requestId - ackId);
    if (difference > 0) {
        GX_TRACE(FlagControlChannel, LevelWarning, "Outdated transaction id. Expected: 0x%02hx encountered: 0x%02hx.",
                 requestId, ackId);
        return HandleOutdated(pStatus);
    }
    if (difference < 0) {
        GX_TRACE(FlagControlChannel, LevelError, "Wrong transaction id. Expected: 0x%02hx encountered: 0x%02hx.",
                 requestId, ackId);
        *pStatus = GX_E_UNEXPECTED_RESPONSE;
        return Verdict::Done;
    }
    if (ntohs(response.Acknowledge) == TAG_PENDING_ACK && received >= sizeof(GVCP_PENDING_RESPONSE))
        return HandlePending(ntohs(Response<GVCP_PENDING_RESPONSE>()->TimeToCompletion), pStatus);
    *pStatus = GxStatusFromGv(ntohs(response.Status));
    if (*pStatus == GX_E_GEV_ACCESS_DENIED) {
        GX_TRACE(FlagControlChannel, LevelError, "Control access priviledge lost.");
        // It may have been one register only: the privilege is given back all the same when the channel is destroyed.
        m_pControlChannel->SurpriseRemoval();
    }
    return Verdict::Done;
}

CControlChannel::CXaction::Verdict CControlChannel::CXaction::HandleOutdated(GXSTATUS *pStatus) noexcept {
    if (!m_Patience)
        m_Patience = PatienceFor(m_Timeout, m_MaxAttempts);
    if (!m_Patience->HasPassed())
        return Verdict::Retry;
    *pStatus = Lose(GX_E_GEV_NO_MSG);
    return Verdict::Done;
}

CControlChannel::CXaction::Verdict CControlChannel::CXaction::HandlePending(std::uint16_t timeToCompletion_ms,
                                                                            GXSTATUS *pStatus) noexcept {
    GX_TRACE(FlagControlChannel, LevelVerbose, "Acknowledge pending for %hu ms.", timeToCompletion_ms);
    if (!m_PendingEnd)
        m_PendingEnd = Deadline(MaxPending_ms);
    if (m_PendingEnd->HasPassed()) // Then it counts for nothing, however often it comes.
        return HandleTimeout(pStatus);
    const auto left_ms = static_cast<std::uint32_t>(m_PendingEnd->RemainingPollTimeout());
    m_Completion = Deadline(std::min<std::uint32_t>(timeToCompletion_ms, left_ms));
    return Verdict::Retry;
}

CControlChannel::CXaction::Verdict CControlChannel::CXaction::HandleTimeout(GXSTATUS *pStatus) noexcept {
    m_Completion.reset();
    ++m_pControlChannel->m_StatisticReadWriteTimeoutCount;
    if (++m_CountOfAttempts >= m_MaxAttempts) {
        *pStatus = Lose(GX_E_GEV_NO_MSG);
        return Verdict::Done;
    }
    GX_TRACE(FlagControlChannel, LevelWarning, "GxSocketRecv timed out. %d. retry.",
             static_cast<int>(m_CountOfAttempts));
    const GXSTATUS status = Start();
    if (status == GX_SUCCESS)
        return Verdict::Retry;
    GX_TRACE(FlagControlChannel, LevelError, "Failed to restart transaction. Status = 0x%08x", status);
    *pStatus = status;
    return Verdict::Done;
}

GXSTATUS CControlChannel::CXaction::Lose(GXSTATUS status) noexcept {
    GX_TRACE(FlagControlChannel, LevelError, "Failed to receive GVCP acknowledge. Status = 0x%08x)", status);
    m_pControlChannel->LoseToOutage();
    return status;
}

GXSTATUS CControlChannel::CXaction::CompleteWith(std::uint16_t acknowledge, std::size_t *pReceived) noexcept {
    const GXBUF buffer{m_pResponseHeader.get(), m_ResponseSize};
    const GXSTATUS status = Complete(&buffer, 1, pReceived);
    if (GxFailed(status)) {
        GX_TRACE(FlagControlChannel, LevelError, "Failed to complete control transaction. Status = 0x%08x.", status);
        return status;
    }
    const std::uint16_t code = ntohs(Response<GVCP_RESPONSE_HEADER>()->Acknowledge);
    if (code != acknowledge) {
        GX_TRACE(FlagControlChannel, LevelError, "Unexpected response encountered (%#hx).", code);
        return GX_E_UNEXPECTED_RESPONSE;
    }
    return status;
}

namespace {

GXSTATUS Incomplete(std::size_t expected, std::size_t received) noexcept {
    GX_TRACE(FlagControlChannel, LevelError, "Incomplete message received. Expected %d received %d bytes.",
             static_cast<int>(expected), static_cast<int>(received));
    return GX_E_SHORT_DATA;
}

/// Creates a transaction of a kind with its buffers; null when memory is exhausted.
template <typename Xaction, typename Allocate> std::unique_ptr<Xaction> CreateXaction(Allocate allocate) noexcept {
    std::unique_ptr<Xaction> xaction(new (std::nothrow) Xaction);
    if (!xaction || !allocate(*xaction))
        return nullptr;
    return xaction;
}

} // namespace

std::unique_ptr<CControlChannel::CReadRegXaction>
CControlChannel::CReadRegXaction::Create(std::uint32_t count) noexcept {
    return CreateXaction<CReadRegXaction>([count](CReadRegXaction &xaction) {
        xaction.Count = count;
        const std::size_t size = std::size_t{4} * count + 12;
        return xaction.Allocate(size, size);
    });
}

GXSTATUS CControlChannel::CReadRegXaction::Init(CControlChannel &channel, const std::uint32_t *addresses,
                                                std::uint32_t *values) noexcept {
    m_pValues = values;
    auto *items = reinterpret_cast<std::uint32_t *>(Request<std::uint8_t>() + sizeof(GVCP_READREG_REQUEST));
    for (std::uint32_t i = 0; i < Count; ++i)
        items[i] = htonl(addresses[i]);
    return CXaction::Init(channel, GEV_COMMAND_FLAG_ANSWER, TAG_READREG_CMD, 4 * Count, channel.m_ReadRegTimeout_ms,
                          channel.m_MaxRetryCountRead);
}

GXSTATUS CControlChannel::CReadRegXaction::Complete() noexcept {
    const std::uint64_t expected = std::uint64_t{4} * Count + sizeof(GVCP_READREG_RESPONSE);
    if (expected > UINT32_MAX) {
        GX_TRACE(FlagControlChannel, LevelError, "Internal buffer overflow.");
        return GX_E_OVERFLOW;
    }
    std::size_t received = 0;
    const GXSTATUS status = CompleteWith(TAG_READREG_ACK, &received);
    if (status != GX_SUCCESS)
        return status;
    if (received < expected)
        return Incomplete(expected, received);
    const std::uint16_t length = ntohs(Response<GVCP_RESPONSE_HEADER>()->Length);
    if (length != 4 * Count) {
        GX_TRACE(FlagControlChannel, LevelError, "Unexpected read response size. Expected %d got %d items.",
                 static_cast<int>(4 * Count), length);
        return GX_E_SHORT_DATA;
    }
    const auto *items =
        reinterpret_cast<const std::uint32_t *>(Response<std::uint8_t>() + sizeof(GVCP_READREG_RESPONSE));
    for (std::uint32_t i = 0; i < Count; ++i)
        m_pValues[i] = ntohl(items[i]);
    return GX_SUCCESS;
}

std::unique_ptr<CControlChannel::CWriteRegXaction>
CControlChannel::CWriteRegXaction::Create(std::uint32_t count) noexcept {
    return CreateXaction<CWriteRegXaction>([count](CWriteRegXaction &xaction) {
        xaction.Count = count;
        return xaction.Allocate(std::size_t{8} * count + 16, sizeof(GVCP_WRITE_RESPONSE));
    });
}

GXSTATUS CControlChannel::CWriteRegXaction::Init(CControlChannel &channel, const std::uint32_t *addresses,
                                                 const std::uint32_t *values) noexcept {
    auto *items = reinterpret_cast<GVCP_WRITEREG_ITEM *>(Request<std::uint8_t>() + sizeof(GVCP_WRITEREG_REQUEST));
    for (std::uint32_t i = 0; i < Count; ++i)
        items[i] = {htonl(addresses[i]), htonl(values[i])};
    return CXaction::Init(channel, GEV_COMMAND_FLAG_ANSWER, TAG_WRITEREG_CMD, 8 * Count, channel.m_WriteRegTimeout_ms,
                          channel.m_MaxRetryCountWrite);
}

GXSTATUS CControlChannel::CWriteRegXaction::Complete() noexcept {
    std::size_t received = 0;
    return CompleteWith(TAG_WRITEREG_ACK, &received);
}

std::unique_ptr<CControlChannel::CReadMemXaction>
CControlChannel::CReadMemXaction::Create(std::uint32_t count) noexcept {
    return CreateXaction<CReadMemXaction>([count](CReadMemXaction &xaction) {
        xaction.Count = count;
        return xaction.Allocate(sizeof(GVCP_READMEM_REQUEST), std::size_t{count} + sizeof(GVCP_READMEM_RESPONSE));
    });
}

GXSTATUS CControlChannel::CReadMemXaction::Init(CControlChannel &channel, std::uint32_t address,
                                                void *buffer) noexcept {
    m_pBuffer = buffer;
    auto *request = Request<GVCP_READMEM_REQUEST>();
    request->Address = htonl(address);
    request->Count = htons(static_cast<std::uint16_t>(Count));
    return CXaction::Init(channel, GEV_COMMAND_FLAG_ANSWER, TAG_READMEM_CMD, 8, channel.m_ReadMemTimeout_ms,
                          channel.m_MaxRetryCountRead);
}

GXSTATUS CControlChannel::CReadMemXaction::Complete() noexcept {
    std::size_t received = 0;
    const GXSTATUS status = CompleteWith(TAG_READMEM_ACK, &received);
    if (status != GX_SUCCESS)
        return status;
    const std::size_t expected = sizeof(GVCP_READMEM_RESPONSE) + Count;
    if (received < expected)
        return Incomplete(expected, received);
    const std::uint16_t length = ntohs(Response<GVCP_RESPONSE_HEADER>()->Length);
    if (length != std::size_t{Count} + 4) {
        GX_TRACE(FlagControlChannel, LevelError, "Unexpected read memory response size. Expected %d got %d items.",
                 static_cast<int>(Count) + 4, length);
        return GX_E_SHORT_DATA;
    }
    std::memcpy(m_pBuffer, Response<std::uint8_t>() + sizeof(GVCP_READMEM_RESPONSE), Count);
    return GX_SUCCESS;
}

std::unique_ptr<CControlChannel::CWriteMemXaction>
CControlChannel::CWriteMemXaction::Create(std::uint32_t count) noexcept {
    return CreateXaction<CWriteMemXaction>([count](CWriteMemXaction &xaction) {
        xaction.Count = count;
        return xaction.Allocate(std::size_t{count} + 13, sizeof(GVCP_WRITE_RESPONSE));
    });
}

GXSTATUS CControlChannel::CWriteMemXaction::Init(CControlChannel &channel, std::uint32_t address,
                                                 const void *data) noexcept {
    Request<GVCP_WRITEMEM_REQUEST>()->Address = htonl(address);
    std::memcpy(Request<std::uint8_t>() + sizeof(GVCP_WRITEMEM_REQUEST), data, Count);
    return CXaction::Init(channel, GEV_COMMAND_FLAG_ANSWER, TAG_WRITEMEM_CMD, Count + 4, channel.m_WriteMemTimeout_ms,
                          channel.m_MaxRetryCountWrite);
}

GXSTATUS CControlChannel::CWriteMemXaction::Complete() noexcept {
    std::size_t received = 0;
    return CompleteWith(TAG_WRITEMEM_ACK, &received);
}

} // namespace GxImp
