#pragma once

#include "Clock.h"
#include "ControlChannelImp.h"

#include <optional>

namespace GxImp {

/// One request and its acknowledge. From Init until it is destroyed it holds the channel's lock, so it must be
/// destroyed on the thread that called Init. The channel must outlive it.
class CControlChannel::CXaction {
public:
    CXaction() noexcept = default;
    virtual ~CXaction();
    CXaction(const CXaction &) = delete;
    CXaction &operator=(const CXaction &) = delete;

protected:
    /// Allocates zeroed buffers. False when memory is exhausted.
    [[nodiscard]] bool Allocate(std::size_t requestSize, std::size_t responseSize) noexcept;

    /// Fills the header, locks the channel, takes the next request id and sends. \param length payload bytes.
    [[nodiscard]] GXSTATUS Init(CControlChannel &channel, std::uint8_t flags, std::uint16_t command,
                                std::uint32_t length, std::uint32_t timeout_ms, std::uint32_t retries) noexcept;
    /// Sends the request again.
    [[nodiscard]] GXSTATUS Start() noexcept;

    /// Waits for the acknowledge, re-sending on timeout, and returns its status. Checks header and id only.
    ///
    /// \param buffers the first one is the response buffer.
    [[nodiscard]] GXSTATUS Complete(const GXBUF *buffers, std::size_t count, std::size_t *pReceived) noexcept;
    /// Complete into the response buffer, with the check of the acknowledge code.
    [[nodiscard]] GXSTATUS CompleteWith(std::uint16_t acknowledge, std::size_t *pReceived) noexcept;

    template <typename Record> Record *Request() noexcept { return reinterpret_cast<Record *>(m_pRequestHeader.get()); }
    template <typename Record> Record *Response() noexcept {
        return reinterpret_cast<Record *>(m_pResponseHeader.get());
    }

private:
    [[nodiscard]] GXSTATUS Send() noexcept;
    /// What to do with a datagram that arrived: Retry asks for the next one.
    enum class Verdict { Done, Retry };
    /// How long to wait for the next datagram, in ms.
    std::uint32_t WaitTime() const noexcept;
    Verdict Judge(std::size_t received, GXSTATUS *pStatus) noexcept;
    Verdict HandleOutdated(GXSTATUS *pStatus) noexcept;
    Verdict HandlePending(std::uint16_t timeToCompletion_ms, GXSTATUS *pStatus) noexcept;
    Verdict HandleTimeout(GXSTATUS *pStatus) noexcept;
    GXSTATUS Lose(GXSTATUS status) noexcept;

    CControlChannel *m_pControlChannel = nullptr; ///< set, and its lock held, from Init on
    std::uint32_t m_CountOfAttempts = 0;
    std::unique_ptr<std::uint8_t[]> m_pRequestHeader;
    std::unique_ptr<std::uint8_t[]> m_pResponseHeader;
    std::size_t m_ResponseSize = 0;
    std::size_t m_RequestLength = 0; ///< bytes to send
    std::uint32_t m_Timeout = 0;     ///< ms
    std::uint32_t m_MaxAttempts = 0;
    std::optional<Deadline> m_Patience;   ///< with outdated acknowledges, from the first one on
    std::optional<Deadline> m_Completion; ///< while pending: when the device wants to be done
    std::optional<Deadline> m_PendingEnd; ///< of all that may be pending, from the first such message on
};

class CControlChannel::CReadRegXaction : public CXaction {
public:
    /// \return null when memory is exhausted, as the Create functions below.
    [[nodiscard]] static std::unique_ptr<CReadRegXaction> Create(std::uint32_t count) noexcept;
    [[nodiscard]] GXSTATUS Init(CControlChannel &channel, const std::uint32_t *addresses,
                                std::uint32_t *values) noexcept;
    [[nodiscard]] GXSTATUS Complete() noexcept;

private:
    std::uint32_t Count = 0;
    std::uint32_t *m_pValues = nullptr; ///< the caller's
};

class CControlChannel::CWriteRegXaction : public CXaction {
public:
    [[nodiscard]] static std::unique_ptr<CWriteRegXaction> Create(std::uint32_t count) noexcept;
    [[nodiscard]] GXSTATUS Init(CControlChannel &channel, const std::uint32_t *addresses,
                                const std::uint32_t *values) noexcept;
    [[nodiscard]] GXSTATUS Complete() noexcept;

private:
    std::uint32_t Count = 0;
};

class CControlChannel::CReadMemXaction : public CXaction {
public:
    [[nodiscard]] static std::unique_ptr<CReadMemXaction> Create(std::uint32_t count) noexcept;
    [[nodiscard]] GXSTATUS Init(CControlChannel &channel, std::uint32_t address, void *buffer) noexcept;
    [[nodiscard]] GXSTATUS Complete() noexcept;

private:
    std::uint32_t Count = 0;
    void *m_pBuffer = nullptr; ///< the caller's
};

class CControlChannel::CWriteMemXaction : public CXaction {
public:
    [[nodiscard]] static std::unique_ptr<CWriteMemXaction> Create(std::uint32_t count) noexcept;
    [[nodiscard]] GXSTATUS Init(CControlChannel &channel, std::uint32_t address, const void *data) noexcept;
    [[nodiscard]] GXSTATUS Complete() noexcept;

private:
    std::uint32_t Count = 0;
};

} // namespace GxImp
