#pragma once

#include "Collector.h"

#include <array>
#include <memory>

namespace GxImp {

/// Receive buffer of each broadcast socket in bytes. Set by Gx::Init.
extern int g_cBroadcastSocketRecvBufSize;

/// Called for each socket of a broadcast.
class BroadcastFilter {
public:
    virtual ~BroadcastFilter() = default;
    virtual bool operator()(CSocket &) noexcept { return true; }
};

/// Sleeps after each send, so that sends on successive adapters do not coincide.
class Pause : public BroadcastFilter {
public:
    explicit Pause(std::uint32_t period_ms) noexcept : m_Period_ms(period_ms) {}
    bool operator()(CSocket &) noexcept override;

private:
    std::uint32_t m_Period_ms;
};

/// One UDP socket per usable IPv4 adapter, all on one port, to send a request everywhere and gather the acknowledges.
///
/// Rows stand in this order: the dedicated receiver (bound to 255.255.255.255, where acknowledges sent to the limited
/// broadcast address arrive; never sent from), the unicast row (bound to 0.0.0.0, sends to one device), the adapters.
/// Belongs to the one call that made it.
class CBroadcastSocketCollection {
public:
    using Ptr = std::unique_ptr<CBroadcastSocketCollection>;

    [[nodiscard]] static GXSTATUS Create(Ptr *pCollection) noexcept;
    [[nodiscard]] static GXSTATUS CreateWithUnicastSocket(const sockaddr_in &target, Ptr *pCollection) noexcept;
    [[nodiscard]] static GXSTATUS CreateWithDedicatedReceiver(Ptr *pCollection) noexcept;
    [[nodiscard]] static GXSTATUS CreateWithDedicatedReceiverAndUnicastSocket(const sockaddr_in &target,
                                                                              Ptr *pCollection) noexcept;

    /// Sends from every adapter to 255.255.255.255 or to the adapter's subnet broadcast address.
    ///
    /// \param port host order; 0 for 3956.
    /// \return 0 when at least one send succeeded, else GX_FALSE.
    [[nodiscard]] GXSTATUS SendBroadcast(const GXBUF &request, bool limitedBroadcast, std::uint16_t port) noexcept;
    /// Sends to the target of the unicast row. \return GX_E_INVALID_PARAMETER without that row.
    [[nodiscard]] GXSTATUS SendUnicast(const GXBUF &request) noexcept;

    /// Neither filter is owned. A pre-filter that returns false skips the socket; a post-operation that returns false
    /// ends the sending.
    void AddPreFilter(BroadcastFilter &filter) noexcept { m_PreFilter = &filter; }
    void AddPostOperation(BroadcastFilter &filter) noexcept { m_PostOperation = &filter; }

    /// See CCollector::Collect.
    [[nodiscard]] GXSTATUS Collect(CCollector &collector, std::uint32_t timeout_ms) noexcept;

private:
    static constexpr std::size_t MaxAdapters = 1024;

    struct AdapterTable {
        std::size_t Count = 0;
        std::array<_GX_SOCKET_INTERFACE_INFO, MaxAdapters> Rows{};
    };

    CBroadcastSocketCollection() noexcept = default;

    [[nodiscard]] static GXSTATUS Build(bool dedicatedReceiver, const sockaddr_in *target, Ptr *pCollection) noexcept;
    [[nodiscard]] GXSTATUS EnumerateAdapters(bool dedicatedReceiver, const sockaddr_in *target) noexcept;
    void AddSharedRow(in_addr_t networkOrderAddress) noexcept;
    static GXSTATUS AddAdapter(void *self, const _GX_SOCKET_INTERFACE_INFO &info) noexcept;
    [[nodiscard]] GXSTATUS PrepareSockets() noexcept;
    /// One attempt, with one common port. \param pIsPortTaken whether an adapter is missing because of the port.
    [[nodiscard]] GXSTATUS PrepareRows(bool *pIsPortTaken) noexcept;
    [[nodiscard]] GXSTATUS PrepareSocket(std::size_t row, std::uint16_t &commonPort) noexcept;
    [[nodiscard]] GXSTATUS SetOptions(std::size_t row) noexcept;
    [[nodiscard]] GXSTATUS BindRow(std::size_t row, std::uint16_t &commonPort) noexcept;
    bool IsDedicatedReceiver(std::size_t row) const noexcept { return m_HasDedicatedReceiver && row == 0; }
    bool IsSender(std::size_t row) const noexcept;
    void CountDrops() noexcept;

    AdapterTable m_Adapters;
    std::array<CSocket, MaxAdapters> m_Sockets; ///< parallel to the adapters
    CSocket *m_pUnicastSocket = nullptr;        ///< one of m_Sockets
    sockaddr_in m_Target{};                     ///< of the unicast row
    BroadcastFilter *m_PreFilter = nullptr;
    BroadcastFilter *m_PostOperation = nullptr;
    bool m_HasDedicatedReceiver = false;
};

} // namespace GxImp
