#include "support/ScriptedNetwork.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

extern "C" {
ssize_t __real_sendmsg(int, const msghdr *, int);
ssize_t __real_recvmsg(int, msghdr *, int);
int __real_poll(pollfd *, nfds_t, int);
int __real_usleep(useconds_t);
int __real_bind(int, const sockaddr *, socklen_t);
int __real_getifaddrs(ifaddrs **);
void __real_freeifaddrs(ifaddrs *);
int __real_clock_gettime(clockid_t, timespec *);
int __real_pthread_cond_clockwait(pthread_cond_t *, pthread_mutex_t *, clockid_t, const timespec *);
int __real_pthread_cond_signal(pthread_cond_t *);
int __real_pthread_create(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *);
}

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;
using ThreadBody = std::function<void *()>;

constexpr std::int64_t Millisecond = 1000000; // of the clock, in ns
constexpr std::int64_t Second = 1000 * Millisecond;
constexpr std::int64_t Never = INT64_MAX;
/// How long a thread that holds nobody up may take to become idle. It does not while it waits for a lock of ours.
constexpr int MaxSettling_us = 50000;

std::atomic<ScriptedNetwork *> current{nullptr};

sockaddr_in addressOf(in_addr_t networkOrder) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = networkOrder;
    return address;
}

/// An adapter as getifaddrs lists it. Its address can be bound to on any machine.
struct Adapter {
    Adapter(const char *name, in_addr_t address, in_addr_t mask, ifaddrs *next)
        : m_Name(name), m_Address(addressOf(htonl(address))), m_Mask(addressOf(htonl(mask))),
          m_Broadcast(addressOf(htonl(address | ~mask))) {
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

std::size_t copyDatagram(const Bytes &datagram, const msghdr &message) {
    std::size_t done = 0;
    for (std::size_t i = 0; i < message.msg_iovlen; ++i) {
        const std::size_t count = std::min(message.msg_iov[i].iov_len, datagram.size() - done);
        if (count > 0)
            std::memcpy(message.msg_iov[i].iov_base, datagram.data() + done, count);
        done += count;
    }
    return done;
}

void fillSource(const Arrival &arrival, msghdr &message) {
    const sockaddr_in sender = addressOf(arrival.sender);
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

std::int64_t nanoseconds(const timespec &time) { return time.tv_sec * Second + time.tv_nsec; }
timespec timeOf(std::int64_t time) { return {static_cast<time_t>(time / Second), static_cast<long>(time % Second)}; }

timespec shortlyFromNow() {
    timespec now{};
    __real_clock_gettime(CLOCK_MONOTONIC, &now);
    return timeOf(nanoseconds(now) + Millisecond);
}

} // namespace

ScriptedNetwork::ScriptedNetwork(Script onSend) : m_OnSend(std::move(onSend)), m_Now(1000 * Second) {
    if (current)
        throw std::logic_error("one network at a time: its threads may outlive its channels");
    current = this;
}

ScriptedNetwork::~ScriptedNetwork() {
    for (bool done = false; !done; __real_usleep(100)) {
        const Lock lock(m_Mutex);
        done = m_ThreadCount == 0;
    }
    current = nullptr;
}

void ScriptedNetwork::queue(Arrival arrival) { insert(std::move(arrival), -1); }

void ScriptedNetwork::answer(Bytes datagram, std::uint32_t after_ms, int error) {
    const Lock lock(m_Mutex);
    Arrival arrival;
    arrival.datagram = std::move(datagram);
    arrival.error = error;
    arrival.after_ms = after_ms;
    insert(std::move(arrival), m_LastSender);
}

void ScriptedNetwork::insert(Arrival arrival, int socket) {
    const Lock lock(m_Mutex);
    const std::int64_t due = m_Now + arrival.after_ms * Millisecond;
    const auto isLater = [](std::int64_t time, const Queued &item) { return time < item.due; };
    m_Queue.insert(std::upper_bound(m_Queue.begin(), m_Queue.end(), due, isLater), {std::move(arrival), due, socket});
}

void ScriptedNetwork::clearQueue() {
    const Lock lock(m_Mutex);
    m_Queue.clear();
}

bool ScriptedNetwork::isQueueEmpty() const {
    const Lock lock(m_Mutex);
    return m_Queue.empty();
}

Bytes ScriptedNetwork::lastReceived() const {
    const Lock lock(m_Mutex);
    return m_LastReceived;
}

std::uint64_t ScriptedNetwork::now_ms() const { return static_cast<std::uint64_t>(m_Now / Millisecond); }
timespec ScriptedNetwork::clock() const { return timeOf(m_Now); }

void ScriptedNetwork::advance(std::uint32_t milliseconds) {
    pass(m_Now + milliseconds * Millisecond);
    settle();
}

/// Moves the clock when nobody has anything left to do before.
void ScriptedNetwork::pass(std::int64_t until) {
    settle();
    const Lock lock(m_Mutex);
    m_Now = std::max(m_Now.load(), until);
    if (onTime)
        onTime();
}

bool ScriptedNetwork::isSettled() const {
    const Lock lock(m_Mutex);
    return std::all_of(m_Threads.begin(), m_Threads.end(), [this](const auto &entry) {
        return pthread_equal(entry.first, pthread_self()) != 0 || (entry.second.idle && entry.second.until > m_Now);
    });
}

void ScriptedNetwork::settle() const {
    for (int waited = 0; waited < MaxSettling_us && !isSettled(); waited += 100)
        __real_usleep(100);
}

int ScriptedNetwork::send(int socket, Bytes request) {
    const Lock lock(m_Mutex);
    m_LastSender = socket;
    return m_OnSend(request);
}

int ScriptedNetwork::socketOf(const Queued &item) const {
    if (item.socket >= 0 || m_Polled.empty())
        return item.socket;
    return m_Polled[item.arrival.row % m_Polled.size()];
}

std::deque<ScriptedNetwork::Queued>::iterator ScriptedNetwork::find(const std::vector<int> &sockets,
                                                                    std::int64_t until) {
    return std::find_if(m_Queue.begin(), m_Queue.end(), [&](const Queued &item) {
        const int socket = socketOf(item);
        return item.due <= until && std::find(sockets.begin(), sockets.end(), socket) != sockets.end();
    });
}

ssize_t ScriptedNetwork::receive(int socket, msghdr &message, bool peek) {
    const Lock lock(m_Mutex);
    const auto next = find({socket}, m_Now);
    if (next == m_Queue.end())
        return -EAGAIN;
    const Arrival arrival = next->arrival;
    if (!peek || arrival.error != 0)
        m_Queue.erase(next);
    if (arrival.error != 0)
        return -arrival.error;
    fillSource(arrival, message);
    if (!peek)
        m_LastReceived = arrival.datagram;
    return static_cast<ssize_t>(copyDatagram(arrival.datagram, message));
}

int ScriptedNetwork::poll(const std::vector<int> &sockets, int timeout_ms) {
    std::int64_t until = Never;
    int ready = -1;
    {
        const Lock lock(m_Mutex);
        m_Polled = sockets;
        const std::int64_t end = timeout_ms < 0 ? Never : m_Now + timeout_ms * Millisecond;
        const auto next = find(sockets, end);
        until = next == m_Queue.end() ? end : next->due;
        ready = next == m_Queue.end() ? -1 : socketOf(*next);
    }
    if (until == Never) {
        std::fprintf(stderr, "a wait without end\n");
        std::abort();
    }
    if (until > m_Now)
        pass(until);
    return ready;
}

int ScriptedNetwork::wait(pthread_cond_t *condition, pthread_mutex_t *mutex, const timespec &deadline) {
    const std::int64_t until = nanoseconds(deadline);
    const auto note = [&](bool idle) {
        const Lock lock(m_Mutex);
        m_Threads[pthread_self()] = {idle, until, condition};
    };
    // A signal that comes while a real wait is about to end wakes nobody, but is noted.
    const auto isSignalled = [&] {
        const Lock lock(m_Mutex);
        return !m_Threads[pthread_self()].idle;
    };
    note(true);
    int error = ETIMEDOUT;
    while (error == ETIMEDOUT && m_Now < until && !isSignalled()) {
        const timespec soon = shortlyFromNow();
        error = __real_pthread_cond_clockwait(condition, mutex, CLOCK_MONOTONIC, &soon);
    }
    note(false);
    return m_Now < until ? 0 : ETIMEDOUT; // what came first, on this clock
}

void ScriptedNetwork::signalled(const pthread_cond_t *condition) {
    const Lock lock(m_Mutex);
    for (auto &[thread, state] : m_Threads)
        state.idle = state.idle && state.condition != condition;
}

int ScriptedNetwork::startThread(pthread_t *thread, const pthread_attr_t *attributes, void *(*run)(void *),
                                 void *argument) {
    if (refusesThreads)
        return EAGAIN;
    const Lock lock(m_Mutex); // so that the thread is known before it ends
    auto *start = new ThreadBody([this, run, argument] {
        void *result = run(argument);
        const Lock ending(m_Mutex);
        m_Threads.erase(pthread_self());
        --m_ThreadCount;
        return result;
    });
    const auto body = [](void *given) -> void * {
        const std::unique_ptr<ThreadBody> owned(static_cast<ThreadBody *>(given));
        return (*owned)();
    };
    const int error = __real_pthread_create(thread, attributes, body, start);
    if (error == 0) {
        m_Threads[*thread] = {false, 0, nullptr};
        ++m_ThreadCount;
    }
    return error;
}

namespace {

ssize_t fail(int error) {
    errno = error;
    return -1;
}

} // namespace

// The linker sends the calls of everything that is linked statically here.
extern "C" {

ssize_t __wrap_sendmsg(int socket, const msghdr *message, int flags) {
    ScriptedNetwork *network = current;
    if (!network)
        return __real_sendmsg(socket, message, flags);
    Bytes request;
    for (std::size_t i = 0; i < message->msg_iovlen; ++i) {
        const auto *start = static_cast<const std::uint8_t *>(message->msg_iov[i].iov_base);
        request.insert(request.end(), start, start + message->msg_iov[i].iov_len);
    }
    const auto size = static_cast<ssize_t>(request.size());
    const int error = network->send(socket, std::move(request));
    return error != 0 ? fail(error) : size;
}

ssize_t __wrap_recvmsg(int socket, msghdr *message, int flags) {
    ScriptedNetwork *network = current;
    if (!network)
        return __real_recvmsg(socket, message, flags);
    const ssize_t result = network->receive(socket, *message, (flags & MSG_PEEK) != 0);
    return result < 0 ? fail(static_cast<int>(-result)) : result;
}

int __wrap_poll(pollfd *sockets, nfds_t count, int timeout_ms) {
    ScriptedNetwork *network = current;
    if (!network)
        return __real_poll(sockets, count, timeout_ms);
    std::vector<int> descriptors;
    for (nfds_t i = 0; i < count; ++i)
        descriptors.push_back(sockets[i].fd);
    const int ready = network->poll(descriptors, timeout_ms);
    for (nfds_t i = 0; i < count; ++i)
        sockets[i].revents = ready >= 0 && sockets[i].fd == ready ? POLLIN : short{0};
    return ready >= 0 ? 1 : 0;
}

int __wrap_usleep(useconds_t microseconds) {
    ScriptedNetwork *network = current;
    if (!network)
        return __real_usleep(microseconds);
    network->advance(microseconds / 1000);
    return 0;
}

int __wrap_bind(int socket, const sockaddr *address, socklen_t size) {
    ScriptedNetwork *network = current;
    const bool isPortGiven = reinterpret_cast<const sockaddr_in *>(address)->sin_port != 0;
    if (network && isPortGiven && network->portsTaken > 0) {
        --network->portsTaken;
        return static_cast<int>(fail(EADDRINUSE));
    }
    return __real_bind(socket, address, size);
}

int __wrap_getifaddrs(ifaddrs **list) {
    if (!current)
        return __real_getifaddrs(list);
    static Adapter elsewhere("none", 0x7F000101, 0xFFFFFF00, nullptr);
    static Adapter second("lo", 0x7F000201, 0xFFFFFF00, &elsewhere.entry);
    static Adapter first("lo", 0x7F000001, 0xFFFFFF00, &second.entry);
    *list = &first.entry;
    return 0;
}

void __wrap_freeifaddrs(ifaddrs *list) {
    if (!current)
        __real_freeifaddrs(list);
}

int __wrap_clock_gettime(clockid_t clock, timespec *time) {
    ScriptedNetwork *network = current;
    if (!network || clock != CLOCK_MONOTONIC)
        return __real_clock_gettime(clock, time);
    *time = network->clock();
    return 0;
}

int __wrap_pthread_cond_clockwait(pthread_cond_t *condition, pthread_mutex_t *mutex, clockid_t clock,
                                  const timespec *deadline) {
    ScriptedNetwork *network = current;
    return network ? network->wait(condition, mutex, *deadline)
                   : __real_pthread_cond_clockwait(condition, mutex, clock, deadline);
}

int __wrap_pthread_cond_signal(pthread_cond_t *condition) {
    if (ScriptedNetwork *network = current)
        network->signalled(condition);
    return __real_pthread_cond_signal(condition);
}

int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*run)(void *), void *argument) {
    ScriptedNetwork *network = current;
    return network ? network->startThread(thread, attributes, run, argument)
                   : __real_pthread_create(thread, attributes, run, argument);
}
}
