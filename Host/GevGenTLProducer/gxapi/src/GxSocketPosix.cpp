#include "Clock.h"
#include "Error.h"
#include "GxSocket.h"
#include "StopPoll.h"
#include "TraceImp.h"

#include <cerrno>
#include <ifaddrs.h>
#include <net/if.h>
#include <poll.h>
#include <unistd.h>

using GxImp::ErrnoText;

namespace {

int Descriptor(SOCKET socket) noexcept { return static_cast<int>(socket); }

GXSTATUS TraceSocketError(const char *what, int error) noexcept {
    GX_TRACE(FlagGeneral, LevelError, "%s %d: %s", what, error, ErrnoText(error).c_str());
    return GxStatusFromSocket(error);
}

} // namespace

GXSTATUS GxSocketCreate(const sockaddr_in *address, SOCKET *pSocket) noexcept {
    const int descriptor = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return TraceSocketError("Error Opening socket, error", errno);
    if (address && ::bind(descriptor, GxImp::AsSockaddr(*address), sizeof *address) != 0) {
        const int error = errno;
        ::close(descriptor);
        return TraceSocketError("Error binding socket, error", error);
    }
    *pSocket = static_cast<SOCKET>(descriptor);
    return GX_SUCCESS;
}

GXSTATUS GxSocketDestroy(SOCKET socket) noexcept {
    return ::close(Descriptor(socket)) == 0 ? static_cast<GXSTATUS>(GX_SUCCESS) : GxStatusFromSocket(errno);
}

GXSTATUS GxSocketSend(SOCKET socket, const GXBUF *buffers, std::size_t count, std::size_t *pSent) noexcept {
    return GxSocketSendTo(socket, buffers, count, pSent, nullptr, 0);
}

GXSTATUS GxSocketSendTo(SOCKET socket, const GXBUF *buffers, std::size_t count, std::size_t *pSent,
                        const sockaddr *destination, socklen_t destinationLength) noexcept {
    msghdr message{};
    message.msg_name = const_cast<sockaddr *>(destination);
    message.msg_namelen = destinationLength;
    message.msg_iov = const_cast<GXBUF *>(buffers);
    message.msg_iovlen = count;
    const ssize_t sent = ::sendmsg(Descriptor(socket), &message, MSG_NOSIGNAL);
    if (sent < 0)
        return TraceSocketError("Socket sendmsg failed", errno);
    *pSent = static_cast<std::size_t>(sent);
    return GX_SUCCESS;
}

namespace {

/// Waits until the socket has something to tell, the deadline passes or a stop is requested.
GXSTATUS WaitReadable(SOCKET socket, const GxImp::Deadline &deadline) noexcept {
    for (;;) {
        if (GxImp::IsStopRequested())
            return GX_E_ABORTED;
        pollfd descriptor{Descriptor(socket), POLLIN, 0};
        const int ready = ::poll(&descriptor, 1, GxImp::StopPollTimeout(deadline.RemainingPollTimeout()));
        // POLLERR and POLLNVAL count as ready too: the receive that follows reports what is wrong.
        if (ready > 0)
            return GX_SUCCESS;
        if (ready < 0 && errno != EINTR)
            return TraceSocketError("Socket select failed", errno);
        if (deadline.HasPassed()) {
            GX_TRACE(FlagGeneral, LevelMostVerbose, "GxSocketRecv: timeout occured");
            return GX_E_TIMEOUT;
        }
    }
}

GXSTATUS ReceiveMessage(SOCKET socket, msghdr &message, std::uint32_t timeout_ms, std::size_t *pReceived) noexcept {
    const bool blocks = timeout_ms == GX_INFINITE && GxImp::StopPollTimeout(-1) == -1;
    const int flags = blocks ? 0 : MSG_DONTWAIT;
    const GxImp::Deadline deadline(timeout_ms);
    const socklen_t nameLength = message.msg_namelen;
    for (;;) {
        message.msg_namelen = nameLength;
        const ssize_t received = ::recvmsg(Descriptor(socket), &message, flags);
        if (received >= 0) {
            *pReceived = static_cast<std::size_t>(received);
            return GX_SUCCESS;
        }
        const int error = errno;
        if (error == EINTR)
            continue;
        if (error != EAGAIN)
            return TraceSocketError("Socket recvmsg failed", error);
        if (timeout_ms == 0) {
            GX_TRACE(FlagGeneral, LevelMostVerbose, "GxSocketRecv: no packet available");
            return GX_E_TIMEOUT;
        }
        const GXSTATUS status = WaitReadable(socket, deadline);
        if (status != GX_SUCCESS)
            return status;
    }
}

} // namespace

GXSTATUS GxSocketRecv(SOCKET socket, const GXBUF *buffers, std::size_t count, std::uint32_t timeout_ms,
                      std::size_t *pReceived) noexcept {
    return GxSocketRecvFrom(socket, buffers, count, timeout_ms, pReceived, nullptr);
}

GXSTATUS GxSocketRecvFrom(SOCKET socket, const GXBUF *buffers, std::size_t count, std::uint32_t timeout_ms,
                          std::size_t *pReceived, sockaddr_in *source) noexcept {
    msghdr message{};
    message.msg_name = source;
    message.msg_namelen = source ? sizeof *source : 0;
    message.msg_iov = const_cast<GXBUF *>(buffers);
    message.msg_iovlen = count;
    return ReceiveMessage(socket, message, timeout_ms, pReceived);
}

namespace {

bool IsUsableEntry(const ifaddrs &entry) noexcept {
    return entry.ifa_netmask != nullptr && entry.ifa_broadaddr != nullptr && GxImp::IsIPv4(entry.ifa_addr);
}

const sockaddr_in &AsIPv4(const sockaddr *address) noexcept { return *reinterpret_cast<const sockaddr_in *>(address); }

_GX_SOCKET_INTERFACE_INFO InfoOf(const ifaddrs &entry) noexcept {
    _GX_SOCKET_INTERFACE_INFO info{};
    info.Flags = static_cast<std::int32_t>(entry.ifa_flags);
    info.InterfaceAddrIn = AsIPv4(entry.ifa_addr);
    info.SubnetMask = AsIPv4(entry.ifa_netmask).sin_addr;
    info.BroadcastAddrIn = AsIPv4(entry.ifa_broadaddr);
    info.InterfaceIndex = ::if_nametoindex(entry.ifa_name);
    return info;
}

GXSTATUS WalkInterfaces(GX_INTERFACE_CALLBACK callback, void *context) noexcept {
    ifaddrs *list = nullptr;
    if (::getifaddrs(&list) != 0)
        return TraceSocketError("Error reading the list of interfaces, error", errno);
    GXSTATUS status = GX_SUCCESS;
    for (const ifaddrs *entry = list; entry && status == GX_SUCCESS; entry = entry->ifa_next) {
        if (!IsUsableEntry(*entry))
            continue;
        const _GX_SOCKET_INTERFACE_INFO info = InfoOf(*entry);
        GX_TRACE(FlagGeneral, LevelVerbose, "Local IP address %s found",
                 GxImp::AddressText(info.InterfaceAddrIn).c_str());
        status = callback(context, info);
        if (status != GX_SUCCESS) // The text carries no number: its conversion is incomplete.
            GX_TRACE(FlagGeneral, LevelError, "%s", "Callback on IP address enumeration failed. Status 0x%08.");
    }
    ::freeifaddrs(list);
    return status;
}

} // namespace

GXSTATUS GxSocketEnumInterfaces(GX_INTERFACE_CALLBACK callback, void *context) noexcept {
    // The descriptor shows early, with its own trace, that the process cannot open sockets at all.
    SOCKET auxiliary = INVALID_SOCKET;
    GXSTATUS status = GxSocketCreate(nullptr, &auxiliary);
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagGeneral, LevelError, "Failed to create socket. Status = 0x%08x\n", status);
        return status;
    }
    status = WalkInterfaces(callback, context);
    if (GxSocketDestroy(auxiliary) != GX_SUCCESS)
        GX_TRACE(FlagGeneral, LevelError, "Error while closing socket %d", Descriptor(auxiliary));
    return status;
}
