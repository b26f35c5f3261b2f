#include "support/ScriptedPeer.h"

#include "gxapi/GvcpMessages.h"

#include <cerrno>
#include <chrono>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace {

int openSocket() { return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0); }

} // namespace

ScriptedPeer::ScriptedPeer(Script script) : m_Script(std::move(script)), m_Socket(openSocket()) {
    m_Address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    start();
}

ScriptedPeer::ScriptedPeer(Script script, const testnet::Namespace &where) : m_Script(std::move(script)) {
    where.run([this] { m_Socket = openSocket(); });
    m_Address.sin_port = htons(GVCP_PORT);
    start();
}

void ScriptedPeer::start() {
    m_Address.sin_family = AF_INET;
    socklen_t size = sizeof m_Address;
    if (bind(m_Socket, reinterpret_cast<sockaddr *>(&m_Address), size) != 0)
        throw std::system_error(errno, std::generic_category(), "bind");
    getsockname(m_Socket, reinterpret_cast<sockaddr *>(&m_Address), &size);
    m_Thread = std::thread([this] { run(); });
}

ScriptedPeer::~ScriptedPeer() {
    shutdown(m_Socket, SHUT_RDWR); // wakes the thread, although it reports ENOTCONN
    m_Thread.join();
    close(m_Socket);
}

void ScriptedPeer::answerByBroadcast() {
    const int on = 1;
    setsockopt(m_Socket, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    m_AnswersByBroadcast = true;
}

std::vector<Bytes> ScriptedPeer::requests() const {
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Requests;
}

void ScriptedPeer::run() {
    for (std::size_t number = 0;; ++number) {
        Bytes request(2048);
        sockaddr_in source{};
        socklen_t size = sizeof source;
        const ssize_t received =
            recvfrom(m_Socket, request.data(), request.size(), 0, reinterpret_cast<sockaddr *>(&source), &size);
        if (received <= 0)
            return;
        request.resize(static_cast<std::size_t>(received));
        {
            std::lock_guard<std::mutex> lock(m_Mutex);
            m_Requests.push_back(request);
        }
        if (m_AnswersByBroadcast)
            source.sin_addr.s_addr = htonl(INADDR_BROADCAST);
        const std::vector<Bytes> answers = m_Script(request, number);
        for (const Bytes &answer : answers) {
            sendto(m_Socket, answer.data(), answer.size(), 0, reinterpret_cast<sockaddr *>(&source), size);
            if (answers.size() > 1000)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
}

Bytes acknowledge(const Bytes &request, std::uint16_t status, std::uint16_t code, const Bytes &payload, int idOffset) {
    const auto id = static_cast<std::uint16_t>((request.at(6) << 8 | request.at(7)) + idOffset);
    const std::uint16_t header[] = {status, code, static_cast<std::uint16_t>(payload.size()), id};
    Bytes bytes;
    for (const std::uint16_t word : header) {
        bytes.push_back(static_cast<std::uint8_t>(word >> 8));
        bytes.push_back(static_cast<std::uint8_t>(word & 0xFF));
    }
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}
