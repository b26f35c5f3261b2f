#include "ScriptedNetwork.h"

#include "Clock.h"
#include "gxapi/Trace.h"

#include <cerrno>
#include <cstring>
#include <ifaddrs.h>
#include <iterator>
#include <net/if.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

ScriptedNetwork *current = nullptr;

sockaddr_in Address(in_addr_t networkOrder) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = networkOrder;
    return address;
}

/// An adapter as getifaddrs lists it. Its address can be bound to on any machine.
struct Adapter {
    Adapter(const char *name, in_addr_t address, in_addr_t mask, ifaddrs *next)
        : m_Name(name), m_Address(Address(htonl(address))), m_Mask(Address(htonl(mask))),
          m_Broadcast(Address(htonl(address | ~mask))) {
        entry.ifa_next = next;
        entry.ifa_name = m_Name.data();
        entry.ifa_flags = IFF_UP | IFF_BROADCAST;
        entry.ifa_addr = reinterpret_cast<sockaddr *>(&m_Address);
        entry.ifa_netmask = reinterpret_cast<sockaddr *>(&m_Mask);
        entry.ifa_broadaddr = reinterpret_cast<sockaddr *>(&m_Broadcast);
    }
    ifaddrs entry{};

private:
    std::string m_Name;
    sockaddr_in m_Address, m_Mask, m_Broadcast;
};

std::size_t TotalSize(const msghdr &message) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < message.msg_iovlen; ++i)
        size += message.msg_iov[i].iov_len;
    return size;
}

std::size_t CopyDatagram(const Bytes &datagram, const msghdr &message) {
    std::size_t done = 0;
    for (std::size_t i = 0; i < message.msg_iovlen; ++i) {
        const std::size_t count = std::min(message.msg_iov[i].iov_len, datagram.size() - done);
        if (count > 0)
            std::memcpy(message.msg_iov[i].iov_base, datagram.data() + done, count);
        done += count;
    }
    return done;
}

void FillSource(const Arrival &arrival, msghdr &message) {
    const sockaddr_in sender = Address(arrival.sender);
    if (message.msg_name)
        std::memcpy(message.msg_name, &sender, std::min<std::size_t>(message.msg_namelen, sizeof sender));
    if (!message.msg_control)
        return;
    in_pktinfo info{};
    info.ipi_ifindex = arrival.interface;
    info.ipi_addr.s_addr = arrival.destination;
    info.ipi_spec_dst.s_addr = arrival.destination == INADDR_BROADCAST ? htonl(0x7F000001) : arrival.destination;
    cmsghdr *header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = IPPROTO_IP;
    header->cmsg_type = IP_PKTINFO;
    header->cmsg_len = CMSG_LEN(sizeof info);
    std::memcpy(CMSG_DATA(header), &info, sizeof info);
    message.msg_controllen = CMSG_SPACE(sizeof info);
}

ssize_t Fail(int error) {
    errno = error;
    return -1;
}

} // namespace

ScriptedNetwork::ScriptedNetwork(Script onSend) : m_OnSend(std::move(onSend)) {
    current = this;
    // So that the texts of traces are made, too.
    Gx::Trace::SetSink([](void *, std::uint32_t, std::uint32_t, const char *) {}, nullptr, Gx::Trace::FlagAll,
                       Gx::Trace::LevelMostVerbose);
}

ScriptedNetwork::~ScriptedNetwork() { current = nullptr; }

int ScriptedNetwork::Send(Bytes request) {
    lastSent = std::move(request);
    ++sendCount;
    return m_OnSend(lastSent);
}

int ScriptedNetwork::SocketOf(const Arrival &arrival) const { return m_Polled.at(arrival.row % m_Polled.size()); }

const Arrival *ScriptedNetwork::Next(int socket) const {
    const bool isHere = !queue.empty() && (m_Polled.empty() || SocketOf(queue.front()) == socket);
    return isHere ? &queue.front() : nullptr;
}

Arrival ScriptedNetwork::Take() {
    Arrival arrival = std::move(queue.front());
    queue.pop_front();
    if (arrival.error == 0)
        lastReceived = arrival.datagram;
    return arrival;
}

int ScriptedNetwork::Poll(std::vector<int> sockets) {
    m_Polled = std::move(sockets);
    return queue.empty() || m_Polled.empty() ? -1 : SocketOf(queue.front());
}

// A clock on which every wait is over at once, but never the patience of 5 seconds and more with chatty peers.
GxImp::Deadline::Deadline(std::uint32_t timeout_ms) noexcept : m_Deadline_ns(timeout_ms < 5000 ? 0 : -1) {}
bool GxImp::Deadline::HasPassed() const noexcept { return m_Deadline_ns == 0; }
int GxImp::Deadline::RemainingPollTimeout() const noexcept { return 0; }

// The linker sends the library's calls here.
extern "C" {

ssize_t __wrap_sendmsg(int, const msghdr *message, int) {
    Bytes request;
    for (std::size_t i = 0; i < message->msg_iovlen; ++i) {
        const auto *start = static_cast<const std::uint8_t *>(message->msg_iov[i].iov_base);
        request.insert(request.end(), start, start + message->msg_iov[i].iov_len);
    }
    const int error = current->Send(std::move(request));
    return error != 0 ? Fail(error) : static_cast<ssize_t>(TotalSize(*message));
}

ssize_t __wrap_recvmsg(int socket, msghdr *message, int flags) {
    const Arrival *next = current->Next(socket);
    if (!next)
        return Fail(EAGAIN);
    if (next->error != 0)
        return Fail(current->Take().error);
    FillSource(*next, *message);
    const std::size_t size = CopyDatagram(next->datagram, *message);
    if ((flags & MSG_PEEK) == 0)
        current->Take();
    return static_cast<ssize_t>(size);
}

ssize_t __wrap_recv(int socket, void *buffer, std::size_t size, int flags) {
    iovec part{buffer, size};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    return __wrap_recvmsg(socket, &message, flags);
}

int __wrap_poll(pollfd *sockets, nfds_t count, int) {
    std::vector<int> descriptors;
    for (nfds_t i = 0; i < count; ++i)
        descriptors.push_back(sockets[i].fd);
    const int ready = current->Poll(std::move(descriptors));
    for (nfds_t i = 0; i < count; ++i)
        sockets[i].revents = ready >= 0 && sockets[i].fd == ready ? POLLIN : short{0};
    return ready >= 0 ? 1 : 0;
}

int __wrap_usleep(useconds_t) { return 0; }

int __wrap_getifaddrs(ifaddrs **list) {
    static Adapter elsewhere("none", 0x7F000101, 0xFFFFFF00, nullptr);
    static Adapter second("lo", 0x7F000201, 0xFFFFFF00, &elsewhere.entry);
    static Adapter first("lo", 0x7F000001, 0xFFFFFF00, &second.entry);
    *list = &first.entry;
    return 0;
}

void __wrap_freeifaddrs(ifaddrs *) {}
}
