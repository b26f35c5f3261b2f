#pragma once

#include "support/Namespace.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <netinet/in.h>
#include <thread>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// A peer that answers each datagram as a script says; for what a well-behaved camera never does.
class ScriptedPeer {
public:
    /// Called with each datagram and its number, from 0; returns the datagrams to answer with, in order;
    /// more than 1000 go out at 1 ms intervals.
    using Script = std::function<std::vector<Bytes>(const Bytes &request, std::size_t number)>;

    /// On loopback, at a port of the kernel's choice.
    explicit ScriptedPeer(Script script);
    /// In a network namespace, where it hears broadcasts to the GVCP port too.
    ScriptedPeer(Script script, const testnet::Namespace &where);
    ~ScriptedPeer();
    ScriptedPeer(const ScriptedPeer &) = delete;
    ScriptedPeer &operator=(const ScriptedPeer &) = delete;

    /// From now on the answers go to everybody's address, whatever was asked for.
    void answerByBroadcast();
    sockaddr_in address() const { return m_Address; }
    std::vector<Bytes> requests() const;

private:
    void start();
    void run();

    Script m_Script;
    int m_Socket = -1;
    std::atomic<bool> m_AnswersByBroadcast{false};
    sockaddr_in m_Address{};
    mutable std::mutex m_Mutex;
    std::vector<Bytes> m_Requests;
    std::thread m_Thread;
};

/// An acknowledge of a request: status, code, payload, with the request's id moved by idOffset.
Bytes acknowledge(const Bytes &request, std::uint16_t status, std::uint16_t code, const Bytes &payload,
                  int idOffset = 0);
