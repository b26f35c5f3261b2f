#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <netinet/in.h>
#include <pthread.h>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// What a socket has to tell.
struct Arrival {
    Bytes datagram;
    int error = 0;              ///< not 0: this errno in place of the datagram
    std::size_t row = 0;        ///< the socket among those that are polled, modulo their number
    in_addr_t sender = 0;       ///< network order, as the next
    in_addr_t destination = 0;  ///< of IP_PKTINFO
    int interface = 0;          ///< of IP_PKTINFO
    std::uint32_t after_ms = 0; ///< from its queueing, on the scripted clock
};

/// Stands in for network, clock and threads below the protocol library while it lives, one at a time: what is sent
/// goes to a script, what is queued is received. Sockets are real but carry nothing, and there are three adapters, two
/// of them on interface 1. A wait takes no time: it moves the clock to what it waits for. Its end waits for the
/// library's threads.
///
/// Linked by lanvane_scripted_network, which puts it in the place of the system calls; without an object those work.
class ScriptedNetwork {
public:
    /// Called with each datagram that is sent. \return 0, or the errno that the sending fails with.
    using Script = std::function<int(const Bytes &request)>;

    explicit ScriptedNetwork(Script onSend);
    ~ScriptedNetwork();
    ScriptedNetwork(const ScriptedNetwork &) = delete;
    ScriptedNetwork &operator=(const ScriptedNetwork &) = delete;

    void queue(Arrival arrival);
    /// Queues a datagram for the socket that sent last: in a script, the one whose request is at hand.
    void answer(Bytes datagram, std::uint32_t after_ms = 0, int error = 0);
    void clearQueue();
    bool isQueueEmpty() const;
    Bytes lastReceived() const; ///< in full, even when the receiver cut it

    std::uint64_t now_ms() const;
    /// Moves the clock on; timers that are due then have run when this returns.
    void advance(std::uint32_t milliseconds);

    std::atomic<bool> refusesThreads{false};
    std::function<void()> onTime;   ///< called when the clock has moved
    std::atomic<int> portsTaken{0}; ///< that many times a bind to a given port finds it taken

    // What the library calls.
    int send(int socket, Bytes request);
    /// \return the bytes of a datagram that lies in the socket's queue, or the negative of an errno.
    ssize_t receive(int socket, msghdr &message, bool peek);
    int poll(const std::vector<int> &sockets, int timeout_ms);
    int wait(pthread_cond_t *condition, pthread_mutex_t *mutex, const timespec &deadline);
    void signalled(const pthread_cond_t *condition);
    int startThread(pthread_t *thread, const pthread_attr_t *attributes, void *(*run)(void *), void *argument);
    timespec clock() const;

private:
    struct Queued {
        Arrival arrival;
        std::int64_t due = 0;
        int socket = -1; ///< -1: by its row
    };
    /// A thread of the library; it is idle while it waits for a time that has not come.
    struct Thread {
        bool idle;
        std::int64_t until;
        const pthread_cond_t *condition;
    };

    void insert(Arrival arrival, int socket);
    std::deque<Queued>::iterator find(const std::vector<int> &sockets, std::int64_t until);
    int socketOf(const Queued &item) const;
    bool isSettled() const;
    void settle() const;
    void pass(std::int64_t until);

    mutable std::recursive_mutex m_Mutex; ///< guards all below but the clock; scripts run with it held
    Script m_OnSend;
    std::deque<Queued> m_Queue; ///< by time
    std::vector<int> m_Polled;
    int m_LastSender = -1;
    Bytes m_LastReceived;
    std::map<pthread_t, Thread> m_Threads;
    int m_ThreadCount = 0;
    std::atomic<std::int64_t> m_Now;
};
