#pragma once

#include <arpa/inet.h>
#include <cstdint>
#include <sys/socket.h>

/// An address as functions on sockets take it; valid as long as the object.
class SocketAddress {
public:
    explicit SocketAddress(const char *address, std::uint16_t port = 0, sa_family_t family = AF_INET) {
        m_Address.sin_family = family;
        m_Address.sin_port = htons(port);
        m_Address.sin_addr.s_addr = inet_addr(address);
    }
    operator const sockaddr *() const { return reinterpret_cast<const sockaddr *>(&m_Address); }

private:
    sockaddr_in m_Address{};
};
