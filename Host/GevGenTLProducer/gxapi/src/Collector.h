#pragma once

#include "GxSocket.h"

namespace GxImp {

/// Takes one datagram, cut to size, from a socket that is readable. \param failure starts the trace of a receive error.
/// \return GX_E_INTERNAL for an empty datagram.
[[nodiscard]] GXSTATUS ReceiveDatagram(CSocket &socket, void *buffer, std::size_t size, std::size_t &received,
                                       sockaddr_in &sender, const char *failure) noexcept;

/// True when a sender is in the subnet of an adapter.
bool IsInSubnet(const sockaddr_in &sender, const _GX_SOCKET_INTERFACE_INFO &adapter) noexcept;

/// Traces where an acknowledge comes from and decides whether it counts: one from outside the adapter's subnet does
/// only when all are accepted.
bool AcceptSender(const sockaddr_in &sender, const _GX_SOCKET_INTERFACE_INFO &adapter, bool acceptAll) noexcept;

struct Arrival;

/// Gathers the acknowledges that arrive on several sockets.
class CCollector {
public:
    CCollector() noexcept = default;
    virtual ~CCollector() = default;
    CCollector(const CCollector &) = delete;
    CCollector &operator=(const CCollector &) = delete;

    /// Reads and handles what one readable socket holds. A non-zero result is traced and collecting goes on.
    ///
    /// \param interfaceInfo the adapter on which the next datagram of the socket arrived.
    virtual GXSTATUS OnReady(CSocket &socket, const _GX_SOCKET_INTERFACE_INFO &interfaceInfo) noexcept = 0;
    /// Called after a quiet period of the timeout, or when there has been none for too long; the result ends the
    /// collection.
    virtual GXSTATUS OnTimeout() noexcept { return GX_E_TIMEOUT; }
    void StopCollecting() noexcept { m_Stop = true; }

    /// Waits on all open sockets until a quiet period of the timeout has passed or StopCollecting was called, at most
    /// 5 seconds longer than the timeout.
    ///
    /// \param infos parallel to sockets. A row whose address is the wildcard or the limited broadcast address takes the
    ///        adapter of each datagram from its IP_PKTINFO: one of the other rows. A row bound to 255.255.255.255 drops
    ///        datagrams from no listed adapter.
    [[nodiscard]] GXSTATUS Collect(CSocket *sockets, std::size_t count, std::uint32_t timeout_ms,
                                   const _GX_SOCKET_INTERFACE_INFO *infos) noexcept;

protected:
    /// Number of the row that OnReady is called for.
    int CurrentRow() const noexcept { return m_Row; }
    /// Traces what handling a row's datagram came to, unless it is 0.
    static void TraceResult(int row, GXSTATUS status) noexcept;

private:
    /// The sockets of one collection with their adapters.
    struct Rows {
        CSocket *sockets;
        std::size_t count;
        const _GX_SOCKET_INTERFACE_INFO *infos;
    };

    void HandleRow(const Rows &rows, std::size_t row) noexcept;
    void HandleSharedRow(const Rows &rows, std::size_t row, const Arrival &arrival) noexcept;
    void CallOnReady(const Rows &rows, std::size_t row, const _GX_SOCKET_INTERFACE_INFO &info) noexcept;

    bool m_Stop = false;
    int m_Row = 0;
};

} // namespace GxImp
