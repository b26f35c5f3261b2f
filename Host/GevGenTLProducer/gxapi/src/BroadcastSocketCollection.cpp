#include "BroadcastSocketCollection.h"

#include "Error.h"
#include "TraceImp.h"
#include "gxapi/Enumerator.h"

#include <atomic>
#include <cerrno>
#include <linux/sock_diag.h>
#include <net/if.h>
#include <new>
#include <unistd.h>

namespace GxImp {

int g_cBroadcastSocketRecvBufSize = 65536;

namespace {

std::atomic<std::uint64_t> g_DroppedDatagrams{0};

/// Of a search for a port that is free on every adapter.
constexpr int MaxPortAttempts = 8;

} // namespace

bool Pause::operator()(CSocket &) noexcept {
    ::usleep(m_Period_ms * 1000);
    return true;
}

GXSTATUS CBroadcastSocketCollection::Create(Ptr *pCollection) noexcept { return Build(false, nullptr, pCollection); }

GXSTATUS CBroadcastSocketCollection::CreateWithUnicastSocket(const sockaddr_in &target, Ptr *pCollection) noexcept {
    return Build(false, &target, pCollection);
}

GXSTATUS CBroadcastSocketCollection::CreateWithDedicatedReceiver(Ptr *pCollection) noexcept {
    return Build(true, nullptr, pCollection);
}

GXSTATUS CBroadcastSocketCollection::CreateWithDedicatedReceiverAndUnicastSocket(const sockaddr_in &target,
                                                                                 Ptr *pCollection) noexcept {
    return Build(true, &target, pCollection);
}

GXSTATUS CBroadcastSocketCollection::Build(bool dedicatedReceiver, const sockaddr_in *target,
                                           Ptr *pCollection) noexcept {
    Ptr collection(new (std::nothrow) CBroadcastSocketCollection);
    if (!collection)
        return GX_E_OUT_OF_MEMORY;
    GXSTATUS status = collection->EnumerateAdapters(dedicatedReceiver, target);
    if (status == GX_SUCCESS)
        status = collection->PrepareSockets();
    if (status == GX_SUCCESS)
        *pCollection = std::move(collection);
    return status;
}

GXSTATUS CBroadcastSocketCollection::EnumerateAdapters(bool dedicatedReceiver, const sockaddr_in *target) noexcept {
    m_HasDedicatedReceiver = dedicatedReceiver;
    if (dedicatedReceiver)
        AddSharedRow(htonl(INADDR_BROADCAST));
    if (target) {
        m_pUnicastSocket = &m_Sockets[m_Adapters.Count];
        m_Target = *target;
        AddSharedRow(htonl(INADDR_ANY));
    }
    return GxSocketEnumInterfaces(&CBroadcastSocketCollection::AddAdapter, this);
}

void CBroadcastSocketCollection::AddSharedRow(in_addr_t networkOrderAddress) noexcept {
    _GX_SOCKET_INTERFACE_INFO &row = m_Adapters.Rows[m_Adapters.Count++];
    row = {};
    row.InterfaceAddrIn = MakeAddress(networkOrderAddress, 0);
}

GXSTATUS CBroadcastSocketCollection::AddAdapter(void *self, const _GX_SOCKET_INTERFACE_INFO &info) noexcept {
    AdapterTable &adapters = static_cast<CBroadcastSocketCollection *>(self)->m_Adapters;
    const int usable = IFF_UP | IFF_BROADCAST;
    if ((info.Flags & (usable | IFF_LOOPBACK)) != usable)
        return GX_SUCCESS;
    if (adapters.Count == MaxAdapters) {
        GX_TRACE(FlagDiscovery, LevelError, "Too many network adapters.");
        return GX_SUCCESS;
    }
    adapters.Rows[adapters.Count++] = info;
    return GX_SUCCESS;
}

GXSTATUS CBroadcastSocketCollection::PrepareSockets() noexcept {
    GXSTATUS status = GX_SUCCESS;
    bool isPortTaken = true;
    for (int attempt = 0; attempt < MaxPortAttempts && isPortTaken; ++attempt)
        status = PrepareRows(&isPortTaken);
    return status;
}

GXSTATUS CBroadcastSocketCollection::PrepareRows(bool *pIsPortTaken) noexcept {
    *pIsPortTaken = false;
    bool anyReady = false;
    std::uint16_t commonPort = 0;
    GXSTATUS lastError = GxStatusFromSocket(ENODEV);
    for (std::size_t row = 0; row < m_Adapters.Count; ++row) {
        const GXSTATUS status = PrepareSocket(row, commonPort);
        if (status == GX_SUCCESS) {
            anyReady = anyReady || !IsDedicatedReceiver(row); // which alone could only listen
            continue;
        }
        lastError = status;
        m_Sockets[row].Close();
        // The first row's port is free on its own address; somebody else may have it on another.
        *pIsPortTaken = *pIsPortTaken || (commonPort != 0 && status == GxStatusFromSocket(EADDRINUSE));
    }
    return anyReady ? GX_SUCCESS : lastError;
}

GXSTATUS CBroadcastSocketCollection::PrepareSocket(std::size_t row, std::uint16_t &commonPort) noexcept {
    GXSTATUS status = m_Sockets[row].Open();
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagDiscovery, LevelError, "Failed to open socket %d. Status = 0x%08X.\n", static_cast<int>(row),
                 status);
        return status;
    }
    status = SetOptions(row);
    return status == GX_SUCCESS ? BindRow(row, commonPort) : status;
}

GXSTATUS CBroadcastSocketCollection::SetOptions(std::size_t row) noexcept {
    CSocket &socket = m_Sockets[row];
    const int number = static_cast<int>(row);
    const int on = 1;
    GXSTATUS status = socket.SetOpt(SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagDiscovery, LevelError, "Failed to enable broadcast on socket %d. Status = 0x%08X.\n", number,
                 status);
        return status;
    }
    status = socket.SetOpt(SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagDiscovery, LevelError, "Failed to set SO_REUSEADDR on socket %d. Status = 0x%08X.\n", number,
                 status);
        return status;
    }
    status = socket.SetOpt(SOL_SOCKET, SO_REUSEPORT, &on, sizeof on);
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagDiscovery, LevelError, "Failed to set SO_REUSEPORT on socket %d. Status = 0x%08X.\n", number,
                 status);
        return status;
    }
    const int size = g_cBroadcastSocketRecvBufSize;
    status = socket.SetOpt(SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagDiscovery, LevelWarning, "Failed to set SO_RCVBUF on socket %lu. Value = %d, Status = 0x%08X.\n",
                 static_cast<unsigned long>(row), size, status);
    // Only the rows that serve all adapters need it, and there it is needed.
    if (row >= static_cast<std::size_t>(m_HasDedicatedReceiver) + (m_pUnicastSocket ? 1 : 0))
        return GX_SUCCESS;
    status = socket.SetOpt(IPPROTO_IP, IP_PKTINFO, &on, sizeof on);
    if (status != GX_SUCCESS)
        GX_TRACE(FlagDiscovery, LevelError, "Failed to set IP_PKTINFO on socket %d. Status = 0x%08X.\n", number,
                 status);
    return status;
}

GXSTATUS CBroadcastSocketCollection::BindRow(std::size_t row, std::uint16_t &commonPort) noexcept {
    CSocket &socket = m_Sockets[row];
    const SOCKET descriptor = socket;
    sockaddr_in address = MakeAddress(m_Adapters.Rows[row].InterfaceAddrIn.sin_addr.s_addr, commonPort);
    const GXSTATUS status = socket.Bind(address);
    if (status != GX_SUCCESS) {
        const int error = GxGetSocketError();
        GX_TRACE(FlagDiscovery, LevelError, "Failed to bind address %s to socket %d, error %d: %s",
                 AddressText(address).c_str(), static_cast<int>(descriptor), error, ErrnoText(error).c_str());
        return status;
    }
    if (commonPort != 0)
        return GX_SUCCESS;

    socklen_t length = sizeof address;
    if (::getsockname(static_cast<int>(descriptor), reinterpret_cast<sockaddr *>(&address), &length) != 0) {
        const int error = GxGetSocketError();
        GX_TRACE(FlagDiscovery, LevelError, "Failed to get port for address %s to socket %d, error %d: %s",
                 AddressText(address).c_str(), static_cast<int>(descriptor), error, ErrnoText(error).c_str());
        return GxStatusFromSocket(error);
    }
    commonPort = ntohs(address.sin_port);
    return GX_SUCCESS;
}

bool CBroadcastSocketCollection::IsSender(std::size_t row) const noexcept {
    return m_Sockets[row].IsOpen() && !IsDedicatedReceiver(row) && &m_Sockets[row] != m_pUnicastSocket;
}

GXSTATUS CBroadcastSocketCollection::SendBroadcast(const GXBUF &request, bool limitedBroadcast,
                                                   std::uint16_t port) noexcept {
    GXSTATUS result = GX_FALSE;
    for (std::size_t row = 0; row < m_Adapters.Count; ++row) {
        if (!IsSender(row) || (m_PreFilter && !(*m_PreFilter)(m_Sockets[row])))
            continue;
        const _GX_SOCKET_INTERFACE_INFO &adapter = m_Adapters.Rows[row];
        // Not BroadcastAddrIn: that is wrong for addresses that were added without one.
        const in_addr_t mask = adapter.SubnetMask.s_addr;
        const in_addr_t subnetBroadcast = (adapter.InterfaceAddrIn.sin_addr.s_addr & mask) | ~mask;
        const sockaddr_in destination =
            MakeAddress(limitedBroadcast ? htonl(INADDR_BROADCAST) : subnetBroadcast, port != 0 ? port : GVCP_PORT);
        const GXSTATUS status = m_Sockets[row].SendTo(request.iov_base, request.iov_len, destination);
        if (status == GX_SUCCESS)
            result = GX_SUCCESS;
        else
            GX_TRACE(FlagDiscovery, LevelError, "Error sending broadcast, Status 0x%08x.", status);
        if (m_PostOperation && !(*m_PostOperation)(m_Sockets[row]))
            break;
    }
    return result;
}

GXSTATUS CBroadcastSocketCollection::SendUnicast(const GXBUF &request) noexcept {
    if (!m_pUnicastSocket)
        return GX_E_INVALID_PARAMETER;
    return m_pUnicastSocket->SendTo(request.iov_base, request.iov_len, m_Target);
}

GXSTATUS CBroadcastSocketCollection::Collect(CCollector &collector, std::uint32_t timeout_ms) noexcept {
    const GXSTATUS status = collector.Collect(m_Sockets.data(), m_Adapters.Count, timeout_ms, m_Adapters.Rows.data());
    CountDrops();
    if (status == GX_E_TIMEOUT)
        GX_TRACE(FlagDiscovery, LevelVerbose, "No responses - collection timed out");
    else if (status != GX_SUCCESS)
        GX_TRACE(FlagDiscovery, LevelError, "Collection failed, status 0x%08x", status);
    return status;
}

void CBroadcastSocketCollection::CountDrops() noexcept {
    for (std::size_t row = 0; row < m_Adapters.Count; ++row) {
        const SOCKET descriptor = m_Sockets[row];
        std::uint32_t memory[SK_MEMINFO_VARS] = {};
        socklen_t size = sizeof memory;
        // The socket's own count; that of SO_RXQ_OVFL stays 0 for sockets which were not asked before.
        if (m_Sockets[row].IsOpen() &&
            ::getsockopt(static_cast<int>(descriptor), SOL_SOCKET, SO_MEMINFO, memory, &size) == 0)
            g_DroppedDatagrams += memory[SK_MEMINFO_DROPS];
    }
}

} // namespace GxImp

namespace Gx {

std::uint64_t Enumerator::DroppedDatagrams() noexcept { return GxImp::g_DroppedDatagrams; }

} // namespace Gx
