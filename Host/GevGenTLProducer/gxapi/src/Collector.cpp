#include "Collector.h"

#include "Clock.h"
#include "Error.h"
#include "StopPoll.h"
#include "TraceImp.h"

#include <cerrno>
#include <memory>
#include <new>
#include <poll.h>

namespace GxImp {

namespace {

/// Datagrams handled per wake-up of a socket; bounded so that the others get their turn.
constexpr int MaxBurst = 64;
/// How long datagrams may keep a collection from falling quiet, beyond its timeout: a flood shall not hold its caller.
constexpr std::uint32_t MaxUnrest_ms = 5000;

/// True for the row that receives what is sent to the limited broadcast address. It is the first one, if any.
bool IsDedicated(const _GX_SOCKET_INTERFACE_INFO &info) noexcept {
    return info.InterfaceAddrIn.sin_addr.s_addr == htonl(INADDR_BROADCAST);
}

/// True for a row whose socket is not bound to one adapter's address.
bool IsShared(const _GX_SOCKET_INTERFACE_INFO &info) noexcept {
    return info.InterfaceAddrIn.sin_addr.s_addr == htonl(INADDR_ANY) || IsDedicated(info);
}

} // namespace

/// Where a datagram that waits in a socket arrived.
struct Arrival {
    sockaddr_in sender{};
    in_pktinfo info{}; ///< only of sockets with IP_PKTINFO
};

namespace {

bool PeekArrival(const CSocket &socket, Arrival &arrival) noexcept {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(in_pktinfo))];
    msghdr message{};
    message.msg_name = &arrival.sender;
    message.msg_namelen = sizeof arrival.sender;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    if (::recvmsg(static_cast<int>(SOCKET(socket)), &message, MSG_PEEK | MSG_DONTWAIT) < 0)
        return false;
    for (cmsghdr *header = CMSG_FIRSTHDR(&message); header; header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level == IPPROTO_IP && header->cmsg_type == IP_PKTINFO)
            arrival.info = *reinterpret_cast<const in_pktinfo *>(CMSG_DATA(header));
    }
    return true;
}

/// How well an address of the interface the datagram came in by stands for it; 0 for an address of another interface.
/// ipi_spec_dst alone would mislead: for a sender in a foreign subnet it is the address of the adapter that holds the
/// default route.
int MatchQuality(const _GX_SOCKET_INTERFACE_INFO &info, const Arrival &arrival) noexcept {
    if (IsShared(info) || info.InterfaceIndex != static_cast<std::uint32_t>(arrival.info.ipi_ifindex))
        return 0;
    const in_addr_t address = info.InterfaceAddrIn.sin_addr.s_addr;
    if (address == arrival.info.ipi_spec_dst.s_addr)
        return 3;
    return IsInSubnet(arrival.sender, info) ? 2 : 1;
}

const _GX_SOCKET_INTERFACE_INFO *FindAdapter(const _GX_SOCKET_INTERFACE_INFO *infos, std::size_t count,
                                             const Arrival &arrival) noexcept {
    const _GX_SOCKET_INTERFACE_INFO *best = nullptr;
    int bestQuality = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const int quality = MatchQuality(infos[i], arrival);
        if (quality > bestQuality) {
            best = &infos[i];
            bestQuality = quality;
        }
    }
    return best;
}

/// For a unicast answer on an interface that takes no broadcasts: the address it was sent to.
_GX_SOCKET_INTERFACE_INFO UnlistedAdapter(const Arrival &arrival) noexcept {
    _GX_SOCKET_INTERFACE_INFO info{};
    info.InterfaceAddrIn = MakeAddress(arrival.info.ipi_spec_dst.s_addr, 0);
    info.SubnetMask.s_addr = htonl(INADDR_BROADCAST);
    info.InterfaceIndex = static_cast<std::uint32_t>(arrival.info.ipi_ifindex);
    return info;
}

void DropDatagram(CSocket &socket) noexcept {
    char byte = 0;
    std::size_t received = 0;
    (void)socket.Recv(&byte, sizeof byte, 0, &received);
}

} // namespace

GXSTATUS ReceiveDatagram(CSocket &socket, void *buffer, std::size_t size, std::size_t &received, sockaddr_in &sender,
                         const char *failure) noexcept {
    const GXSTATUS status = socket.RecvFrom(buffer, size, 0, &received, &sender);
    if (status != GX_SUCCESS) {
        const int error = status == GX_E_TIMEOUT ? EAGAIN : static_cast<int>(status & 0xFFFF);
        GX_TRACE(FlagDiscovery, LevelError, "%s %d: %s", failure, error, ErrnoText(error).c_str());
        return status;
    }
    if (received == 0) {
        GX_TRACE(FlagDiscovery, LevelError, "recvfrom() returned zero, aborting");
        return GX_E_INTERNAL;
    }
    return GX_SUCCESS;
}

bool IsInSubnet(const sockaddr_in &sender, const _GX_SOCKET_INTERFACE_INFO &adapter) noexcept {
    const in_addr_t difference = sender.sin_addr.s_addr ^ adapter.InterfaceAddrIn.sin_addr.s_addr;
    return (difference & adapter.SubnetMask.s_addr) == 0;
}

bool AcceptSender(const sockaddr_in &sender, const _GX_SOCKET_INTERFACE_INFO &adapter, bool acceptAll) noexcept {
    GX_TRACE(FlagDiscovery, LevelVerbose, "indication from %s:%hu", AddressText(sender).c_str(),
             ntohs(sender.sin_port));
    GX_TRACE(FlagDiscovery, LevelVerbose, "\tvia %s", AddressText(adapter.InterfaceAddrIn).c_str());
    if (acceptAll || IsInSubnet(sender, adapter))
        return true;
    GX_TRACE(FlagDiscovery, LevelVerbose, "\t==>dropped");
    return false;
}

void CCollector::CallOnReady(const Rows &rows, std::size_t row, const _GX_SOCKET_INTERFACE_INFO &info) noexcept {
    m_Row = static_cast<int>(row);
    TraceResult(m_Row, OnReady(rows.sockets[row], info));
}

void CCollector::TraceResult(int row, GXSTATUS status) noexcept {
    if (status != GX_SUCCESS)
        GX_TRACE(FlagDiscovery, LevelWarning, "Interface %d OnReady() returned 0x%x.", row, status);
}

void CCollector::HandleRow(const Rows &rows, std::size_t row) noexcept {
    const bool isShared = IsShared(rows.infos[row]);
    Arrival arrival;
    for (int i = 0; i < MaxBurst && !m_Stop; ++i) {
        // An adapter's own row needs no look ahead for its first datagram, and then reports a pending socket error.
        if ((isShared || i > 0) && !PeekArrival(rows.sockets[row], arrival))
            return;
        if (isShared)
            HandleSharedRow(rows, row, arrival);
        else
            CallOnReady(rows, row, rows.infos[row]);
    }
}

void CCollector::HandleSharedRow(const Rows &rows, std::size_t row, const Arrival &arrival) noexcept {
    const bool isDedicated = IsDedicated(rows.infos[row]);
    const bool isBroadcast = arrival.info.ipi_addr.s_addr == htonl(INADDR_BROADCAST);
    // A limited broadcast reaches the wildcard row too; the dedicated row, where there is one, reports it.
    const bool isOther = isDedicated ? !isBroadcast : isBroadcast && IsDedicated(rows.infos[0]);
    const _GX_SOCKET_INTERFACE_INFO *adapter = FindAdapter(rows.infos, rows.count, arrival);
    if (isOther || (isDedicated && !adapter))
        DropDatagram(rows.sockets[row]);
    else
        CallOnReady(rows, row, adapter ? *adapter : UnlistedAdapter(arrival));
}

GXSTATUS CCollector::Collect(CSocket *sockets, std::size_t count, std::uint32_t timeout_ms,
                             const _GX_SOCKET_INTERFACE_INFO *infos) noexcept {
    const Rows rows{sockets, count, infos};
    const std::unique_ptr<pollfd[]> descriptors(new (std::nothrow) pollfd[count]);
    if (!descriptors)
        return GX_E_OUT_OF_MEMORY;
    // A closed socket has descriptor -1, which poll skips.
    for (std::size_t row = 0; row < count; ++row)
        descriptors[row] = {static_cast<int>(SOCKET(sockets[row])), POLLIN, 0};

    Deadline deadline(timeout_ms);
    const Deadline last(timeout_ms < GX_INFINITE - MaxUnrest_ms ? timeout_ms + MaxUnrest_ms : GX_INFINITE);
    while (!m_Stop) {
        if (IsStopRequested())
            return GX_E_ABORTED;
        const int ready = ::poll(descriptors.get(), count, StopPollTimeout(deadline.RemainingPollTimeout()));
        const int error = errno;
        if (ready > 0 && last.HasPassed()) {
            GX_TRACE(FlagDiscovery, LevelError, "Datagrams arrive without end. Collection aborted.");
            return OnTimeout();
        }
        if (ready > 0) {
            for (std::size_t row = 0; row < count && !m_Stop && !IsStopRequested(); ++row) {
                if (descriptors[row].revents != 0)
                    HandleRow(rows, row);
            }
            deadline = Deadline(timeout_ms);
        } else if (ready == 0) {
            if (deadline.HasPassed())
                return OnTimeout();
        } else if (error == EINTR) {
            GX_TRACE(FlagDiscovery, LevelVerbose, "select interrupted");
        } else {
            GX_TRACE(FlagDiscovery, LevelError, "select failed with error %d: %s", error, ErrnoText(error).c_str());
            return GxStatusFromSocket(error);
        }
    }
    return GX_SUCCESS;
}

} // namespace GxImp
