#pragma once

#include "FuzzInput.h"

#include <deque>
#include <functional>
#include <netinet/in.h>

/// What a socket has to tell.
struct Arrival {
    Bytes datagram;
    int error = 0;             ///< not 0: this errno in place of the datagram
    std::size_t row = 0;       ///< the socket among those that are polled, modulo their number
    in_addr_t sender = 0;      ///< network order, as the next
    in_addr_t destination = 0; ///< of IP_PKTINFO
    int interface = 0;         ///< of IP_PKTINFO
};

/// Stands in for the network below the protocol library while it lives, one at a time: what is sent goes to a script,
/// what the script queues is received. Sockets are real but carry nothing, there are three adapters, two of them on
/// interface 1, and nothing ever waits: with nothing queued every wait times out at once.
///
/// Linked by lanvane_fuzzer(... SCRIPTED_NETWORK), which puts it in the place of the system calls.
class ScriptedNetwork {
public:
    /// Called with each datagram that is sent. \return 0, or the errno that the sending fails with.
    using Script = std::function<int(const Bytes &request)>;

    explicit ScriptedNetwork(Script onSend);
    ~ScriptedNetwork();
    ScriptedNetwork(const ScriptedNetwork &) = delete;
    ScriptedNetwork &operator=(const ScriptedNetwork &) = delete;

    std::deque<Arrival> queue;
    Bytes lastReceived; ///< in full, even when the receiver cut it
    Bytes lastSent;
    std::size_t sendCount = 0;

    /// The calls of the library.
    int Send(Bytes request);
    const Arrival *Next(int socket) const;
    Arrival Take();
    int Poll(std::vector<int> sockets);

private:
    int SocketOf(const Arrival &arrival) const;

    Script m_OnSend;
    std::vector<int> m_Polled;
};
