#pragma once

#include "Clock.h"
#include "gxapi/GxStatus.h"

#include <cstddef>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/uio.h>

/// A socket descriptor; all ones means none.
using SOCKET = std::uint32_t;
constexpr SOCKET INVALID_SOCKET = 0xFFFFFFFF;

/// Scatter-gather element.
using GXBUF = iovec;

/// One IPv4 address of a host interface.
struct _GX_SOCKET_INTERFACE_INFO {
    std::int32_t Flags; ///< IFF_UP, IFF_BROADCAST, IFF_LOOPBACK ... as the host reports them
    sockaddr_in InterfaceAddrIn;
    in_addr SubnetMask;
    sockaddr_in BroadcastAddrIn;  ///< As reported; wrong for an address that was added without one.
    std::uint32_t InterfaceIndex; ///< if_nametoindex; tells on which interface a broadcast arrived
};

/// Called for each interface; a non-zero result ends the walk.
using GX_INTERFACE_CALLBACK = GXSTATUS (*)(void *context, const _GX_SOCKET_INTERFACE_INFO &info);

/// UDP over IPv4. Failures are returned as the status of their errno.
[[nodiscard]] GXSTATUS GxSocketCreate(const sockaddr_in *address, SOCKET *pSocket) noexcept;
[[nodiscard]] GXSTATUS GxSocketDestroy(SOCKET socket) noexcept;
[[nodiscard]] GXSTATUS GxSocketSend(SOCKET socket, const GXBUF *buffers, std::size_t count,
                                    std::size_t *pSent) noexcept;
[[nodiscard]] GXSTATUS GxSocketSendTo(SOCKET socket, const GXBUF *buffers, std::size_t count, std::size_t *pSent,
                                      const sockaddr *destination, socklen_t destinationLength) noexcept;

/// Receives one datagram, cut to the buffers. \param timeout_ms 0 only looks, GX_INFINITE waits without end. Signals do
/// not extend the wait. Returns GX_E_TIMEOUT when nothing came, GX_E_ABORTED after a stop request.
[[nodiscard]] GXSTATUS GxSocketRecv(SOCKET socket, const GXBUF *buffers, std::size_t count, std::uint32_t timeout_ms,
                                    std::size_t *pReceived) noexcept;
[[nodiscard]] GXSTATUS GxSocketRecvFrom(SOCKET socket, const GXBUF *buffers, std::size_t count,
                                        std::uint32_t timeout_ms, std::size_t *pReceived, sockaddr_in *source) noexcept;

/// Walks the IPv4 interfaces that have a netmask and a broadcast or destination address.
[[nodiscard]] GXSTATUS GxSocketEnumInterfaces(GX_INTERFACE_CALLBACK callback, void *context) noexcept;

namespace GxImp {

/// Dotted quad for traces, valid as long as the object.
class AddressText {
public:
    explicit AddressText(const sockaddr_in &address) noexcept;
    const char *c_str() const noexcept { return m_Text; }

private:
    char m_Text[INET_ADDRSTRLEN];
};

sockaddr_in MakeAddress(in_addr_t networkOrderAddress, std::uint16_t hostOrderPort) noexcept;
/// False for null and for every family but AF_INET.
bool IsIPv4(const sockaddr *address) noexcept;
/// A copy of an IPv4 address with the GVCP port filled in when it has none.
sockaddr_in DeviceAddress(const sockaddr *address) noexcept;
const sockaddr *AsSockaddr(const sockaddr_in &address) noexcept;

/// Owns one descriptor and remembers a socket address. Not thread-safe.
class CSocket {
public:
    CSocket() noexcept = default;
    ~CSocket();
    CSocket(const CSocket &) = delete;
    CSocket &operator=(const CSocket &) = delete;

    [[nodiscard]] GXSTATUS Open() noexcept;
    [[nodiscard]] GXSTATUS Open(const sockaddr_in &address) noexcept;
    GXSTATUS Close() noexcept;
    bool IsOpen() const noexcept { return m_Socket != INVALID_SOCKET; }
    operator SOCKET() const noexcept { return m_Socket; }

    [[nodiscard]] GXSTATUS Bind(const sockaddr_in &address) noexcept;
    /// To a port on the wildcard address.
    [[nodiscard]] GXSTATUS Bind(std::uint16_t port) noexcept;
    [[nodiscard]] GXSTATUS Connect(const sockaddr_in &address) noexcept;

    const sockaddr_in &GetAddress() const noexcept { return m_Address; }
    void SetAddress(const sockaddr_in &address) noexcept { m_Address = address; }

    [[nodiscard]] GXSTATUS SetOpt(int level, int name, const void *value, socklen_t size) noexcept;
    [[nodiscard]] GXSTATUS GetOpt(int level, int name, void *value, socklen_t *pSize) noexcept;

    [[nodiscard]] GXSTATUS Recv(void *buffer, std::size_t size, std::uint32_t timeout_ms,
                                std::size_t *pReceived) noexcept;
    [[nodiscard]] GXSTATUS RecvFrom(void *buffer, std::size_t size, std::uint32_t timeout_ms, std::size_t *pReceived,
                                    sockaddr_in *source) noexcept;
    [[nodiscard]] GXSTATUS Send(const void *data, std::size_t size) noexcept;
    [[nodiscard]] GXSTATUS SendTo(const void *data, std::size_t size, const sockaddr_in &destination) noexcept;

private:
    SOCKET m_Socket = INVALID_SOCKET;
    sockaddr_in m_Address{};
};

} // namespace GxImp
