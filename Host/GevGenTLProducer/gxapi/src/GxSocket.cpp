#include "GxSocket.h"

#include "Error.h"
#include "gxapi/GvcpMessages.h"

#include <arpa/inet.h>

namespace GxImp {

AddressText::AddressText(const sockaddr_in &address) noexcept {
    if (!inet_ntop(AF_INET, &address.sin_addr, m_Text, sizeof m_Text))
        m_Text[0] = '\0';
}

sockaddr_in MakeAddress(in_addr_t networkOrderAddress, std::uint16_t hostOrderPort) noexcept {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(hostOrderPort);
    address.sin_addr.s_addr = networkOrderAddress;
    return address;
}

bool IsIPv4(const sockaddr *address) noexcept { return address != nullptr && address->sa_family == AF_INET; }

sockaddr_in DeviceAddress(const sockaddr *address) noexcept {
    sockaddr_in device = *reinterpret_cast<const sockaddr_in *>(address);
    if (device.sin_port == 0)
        device.sin_port = htons(GVCP_PORT);
    return device;
}

const sockaddr *AsSockaddr(const sockaddr_in &address) noexcept { return reinterpret_cast<const sockaddr *>(&address); }

CSocket::~CSocket() { Close(); }

GXSTATUS CSocket::Open() noexcept {
    Close();
    return GxSocketCreate(nullptr, &m_Socket);
}

GXSTATUS CSocket::Open(const sockaddr_in &address) noexcept {
    Close();
    m_Address = address;
    return GxSocketCreate(&address, &m_Socket);
}

GXSTATUS CSocket::Close() noexcept {
    if (!IsOpen())
        return GX_SUCCESS;
    const SOCKET socket = m_Socket;
    m_Socket = INVALID_SOCKET;
    return GxSocketDestroy(socket);
}

namespace {

GXSTATUS StatusOf(int result) noexcept {
    return result == 0 ? static_cast<GXSTATUS>(GX_SUCCESS) : GxStatusFromSocket(GxGetSocketError());
}

GXBUF BufferOf(const void *data, std::size_t size) noexcept { return {const_cast<void *>(data), size}; }

} // namespace

GXSTATUS CSocket::Bind(const sockaddr_in &address) noexcept {
    m_Address = address;
    return StatusOf(::bind(static_cast<int>(m_Socket), AsSockaddr(address), sizeof address));
}

GXSTATUS CSocket::Bind(std::uint16_t port) noexcept { return Bind(MakeAddress(htonl(INADDR_ANY), port)); }

GXSTATUS CSocket::Connect(const sockaddr_in &address) noexcept {
    return StatusOf(::connect(static_cast<int>(m_Socket), AsSockaddr(address), sizeof address));
}

GXSTATUS CSocket::SetOpt(int level, int name, const void *value, socklen_t size) noexcept {
    return StatusOf(::setsockopt(static_cast<int>(m_Socket), level, name, value, size));
}

GXSTATUS CSocket::GetOpt(int level, int name, void *value, socklen_t *pSize) noexcept {
    return StatusOf(::getsockopt(static_cast<int>(m_Socket), level, name, value, pSize));
}

GXSTATUS CSocket::Recv(void *buffer, std::size_t size, std::uint32_t timeout_ms, std::size_t *pReceived) noexcept {
    const GXBUF buffers = BufferOf(buffer, size);
    return GxSocketRecv(m_Socket, &buffers, 1, timeout_ms, pReceived);
}

GXSTATUS CSocket::RecvFrom(void *buffer, std::size_t size, std::uint32_t timeout_ms, std::size_t *pReceived,
                           sockaddr_in *source) noexcept {
    const GXBUF buffers = BufferOf(buffer, size);
    return GxSocketRecvFrom(m_Socket, &buffers, 1, timeout_ms, pReceived, source);
}

GXSTATUS CSocket::Send(const void *data, std::size_t size) noexcept {
    const GXBUF buffers = BufferOf(data, size);
    std::size_t sent = 0;
    return GxSocketSend(m_Socket, &buffers, 1, &sent);
}

GXSTATUS CSocket::SendTo(const void *data, std::size_t size, const sockaddr_in &destination) noexcept {
    const GXBUF buffers = BufferOf(data, size);
    std::size_t sent = 0;
    return GxSocketSendTo(m_Socket, &buffers, 1, &sent, AsSockaddr(destination), sizeof destination);
}

} // namespace GxImp
