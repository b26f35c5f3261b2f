#include "GvcpSocket.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace camsim {
namespace {

constexpr std::size_t batchSize = 64;
constexpr std::size_t maxDatagram = 2048; // GVCP never exceeds 576; longer ones are dropped as cut
constexpr int bufferBytes = 8 << 20;      // a thousand acknowledges that wait for one ARP answer fit
constexpr int maxWritableWait = 100;      // ms

[[noreturn]] void fail(const std::string &what) { throw std::system_error(errno, std::generic_category(), what); }

sockaddr_in toSocketAddress(const Endpoint &endpoint) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = htonl(endpoint.address.value);
    return address;
}

Endpoint fromSocketAddress(const sockaddr_in &address) {
    return {{ntohl(address.sin_addr.s_addr)}, ntohs(address.sin_port)};
}

/// Space for the control messages of one datagram, aligned for cmsghdr.
struct ControlSpace {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(in_pktinfo)) + CMSG_SPACE(sizeof(std::uint32_t))> bytes{};
};

bool findPacketInfo(msghdr &message, in_pktinfo &info) {
    for (cmsghdr *control = CMSG_FIRSTHDR(&message); control != nullptr; control = CMSG_NXTHDR(&message, control)) {
        if (control->cmsg_level == IPPROTO_IP && control->cmsg_type == IP_PKTINFO) {
            std::memcpy(&info, CMSG_DATA(control), sizeof info);
            return true;
        }
    }
    return false;
}

template <typename Value> cmsghdr *putControl(msghdr &message, cmsghdr *at, int level, int type, const Value &value) {
    at->cmsg_level = level;
    at->cmsg_type = type;
    at->cmsg_len = CMSG_LEN(sizeof value);
    std::memcpy(CMSG_DATA(at), &value, sizeof value);
    return CMSG_NXTHDR(&message, at);
}

/// One datagram of a sendmmsg() batch; must not move once prepared.
struct SendSlot {
    sockaddr_in destination{};
    iovec data{};
    ControlSpace control;

    void prepare(msghdr &message, const OutgoingDatagram &datagram, unsigned interface) {
        destination = toSocketAddress(datagram.reply.destination);
        data = {const_cast<std::uint8_t *>(datagram.reply.bytes.data()), datagram.reply.bytes.size()};
        message = {};
        message.msg_name = &destination;
        message.msg_namelen = sizeof destination;
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        message.msg_control = control.bytes.data();
        message.msg_controllen = control.bytes.size();
        in_pktinfo info{};
        info.ipi_ifindex = static_cast<int>(interface);
        info.ipi_spec_dst.s_addr = htonl(datagram.reply.source.value);
        cmsghdr *next = putControl(message, CMSG_FIRSTHDR(&message), IPPROTO_IP, IP_PKTINFO, info);
        if (datagram.mark != 0)
            putControl(message, next, SOL_SOCKET, SO_MARK, datagram.mark);
        else
            message.msg_controllen = CMSG_SPACE(sizeof info);
    }
};

} // namespace

GvcpSocket::GvcpSocket(const Settings &settings)
    : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)),
      interface_(if_nametoindex(settings.interface.c_str())), buffer_(batchSize * maxDatagram) {
    if (!socket_)
        fail("cannot open a UDP socket");
    if (interface_ == 0)
        throw std::runtime_error("there is no network interface '" + settings.interface + "'");
    if (settings.bindToInterface && setsockopt(fd(), SOL_SOCKET, SO_BINDTODEVICE, settings.interface.c_str(),
                                               static_cast<socklen_t>(settings.interface.size())) != 0)
        fail("cannot bind a socket to interface '" + settings.interface + "'");
    setOption(SOL_SOCKET, SO_BROADCAST, 1, "allow broadcasts");
    setOption(IPPROTO_IP, IP_PKTINFO, 1, "learn destination addresses");
    enlargeBuffers();
    bindTo(settings.port, settings.interface);
}

void GvcpSocket::setOption(int level, int option, int value, const char *what) {
    if (setsockopt(fd(), level, option, &value, sizeof value) != 0)
        fail(std::string("cannot ") + what);
}

void GvcpSocket::enlargeBuffers() {
    for (const auto &[forced, plain] : {std::pair{SO_SNDBUFFORCE, SO_SNDBUF}, std::pair{SO_RCVBUFFORCE, SO_RCVBUF}})
        if (setsockopt(fd(), SOL_SOCKET, forced, &bufferBytes, sizeof bufferBytes) != 0)
            setOption(SOL_SOCKET, plain, bufferBytes, "enlarge a socket buffer");
}

void GvcpSocket::bindTo(std::uint16_t port, const std::string &interface) {
    // Without SO_REUSEADDR: a second simulator on the interface would silently take this one's unicast commands.
    sockaddr_in address = toSocketAddress({{}, port});
    if (bind(fd(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        fail("cannot bind UDP port " + std::to_string(port) + " on interface '" + interface + "'");
    socklen_t size = sizeof address;
    if (getsockname(fd(), reinterpret_cast<sockaddr *>(&address), &size) != 0)
        fail("cannot read the socket's port");
    port_ = ntohs(address.sin_port);
}

std::size_t GvcpSocket::receive(const std::function<void(const Request &)> &visit) {
    std::array<mmsghdr, batchSize> messages{};
    std::array<sockaddr_in, batchSize> sources{};
    std::array<iovec, batchSize> data{};
    std::array<ControlSpace, batchSize> controls;
    for (std::size_t i = 0; i < batchSize; ++i) {
        data[i] = {&buffer_[i * maxDatagram], maxDatagram};
        msghdr &header = messages[i].msg_hdr;
        header.msg_name = &sources[i];
        header.msg_namelen = sizeof sources[i];
        header.msg_iov = &data[i];
        header.msg_iovlen = 1;
        header.msg_control = controls[i].bytes.data();
        header.msg_controllen = controls[i].bytes.size();
    }
    const int count = recvmmsg(fd(), messages.data(), batchSize, MSG_DONTWAIT, nullptr);
    for (std::size_t i = 0; count > 0 && i < static_cast<std::size_t>(count); ++i) {
        in_pktinfo info{};
        const bool whole = (messages[i].msg_hdr.msg_flags & MSG_TRUNC) == 0;
        if (whole && findPacketInfo(messages[i].msg_hdr, info) && info.ipi_ifindex == static_cast<int>(interface_))
            visit({fromSocketAddress(sources[i]),
                   {ntohl(info.ipi_addr.s_addr)},
                   &buffer_[i * maxDatagram],
                   messages[i].msg_len});
    }
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool GvcpSocket::waitWritable() const {
    pollfd waiting{fd(), POLLOUT, 0};
    return poll(&waiting, 1, maxWritableWait) > 0;
}

std::size_t GvcpSocket::send(const std::vector<OutgoingDatagram> &datagrams) {
    std::array<SendSlot, batchSize> slots;
    std::array<mmsghdr, batchSize> messages{};
    std::size_t done = 0;
    std::size_t refused = 0;
    while (done < datagrams.size()) {
        const std::size_t count = std::min(batchSize, datagrams.size() - done);
        for (std::size_t i = 0; i < count; ++i)
            slots[i].prepare(messages[i].msg_hdr, datagrams[done + i], interface_);
        const int sent = sendmmsg(fd(), messages.data(), static_cast<unsigned>(count), 0);
        if (sent > 0) {
            done += static_cast<std::size_t>(sent);
            continue;
        }
        if (errno == EINTR || (errno == EAGAIN && waitWritable()))
            continue;
        ++done; // the first of the batch is what failed
        ++refused;
    }
    return refused;
}

} // namespace camsim
