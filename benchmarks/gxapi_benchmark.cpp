// What the control channel costs above the bare sockets: register and memory reads against a peer on loopback that
// answers at once, beside a sendto/recvfrom ping-pong with datagrams of the same sizes to the same peer. Both are
// measured in turns, so that a noisy machine spoils both alike; the medians and their ratio are printed.

#include "gxapi/ControlChannel.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::uint32_t MemorySize = 1024 * 1024;
constexpr std::size_t PieceSize = 536;

const sockaddr *raw(const sockaddr_in &address) { return reinterpret_cast<const sockaddr *>(&address); }

[[noreturn]] void fail(const char *what) {
    std::perror(what);
    std::exit(1); // NOLINT(concurrency-mt-unsafe): whatever other threads do, the process is over
}

int openSocket(sockaddr_in &address) {
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (descriptor < 0 || bind(descriptor, raw(address), size) != 0 ||
        getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        fail("socket");
    return descriptor;
}

/// Answers READREG, WRITEREG and READMEM with the right sizes and whatever bytes.
class Peer {
public:
    Peer() : m_Socket(openSocket(address)), m_Thread([this] { run(); }) {}
    ~Peer() {
        shutdown(m_Socket, SHUT_RDWR);
        m_Thread.join();
        close(m_Socket);
    }

    sockaddr_in address{};

private:
    static std::size_t answerSize(const std::uint8_t *request) {
        if (request[3] != TAG_READMEM_CMD)
            return sizeof(GVCP_RESPONSE_HEADER) + 4;
        return sizeof(GVCP_READMEM_RESPONSE) + static_cast<std::size_t>(request[14] << 8 | request[15]);
    }

    void run() {
        std::uint8_t request[64] = {};
        std::uint8_t answer[1024] = {};
        sockaddr_in client{};
        socklen_t size = sizeof client;
        while (recvfrom(m_Socket, request, sizeof request, 0, reinterpret_cast<sockaddr *>(&client), &size) > 0) {
            const std::size_t bytes = answerSize(request);
            const auto payload = static_cast<std::uint16_t>(bytes - sizeof(GVCP_RESPONSE_HEADER));
            const GVCP_RESPONSE_HEADER header = {0, htons(static_cast<std::uint16_t>(request[3] + 1)), htons(payload),
                                                 static_cast<std::uint16_t>(request[6] | request[7] << 8)};
            std::memcpy(answer, &header, sizeof header);
            sendto(m_Socket, answer, bytes, 0, raw(client), size);
        }
    }

    int m_Socket;
    std::thread m_Thread;
};

/// The same datagrams without the library.
class Bare {
public:
    explicit Bare(const sockaddr_in &peer) : m_Peer(peer) {
        sockaddr_in own{};
        m_Socket = openSocket(own);
    }
    ~Bare() { close(m_Socket); }

    void exchange(std::uint16_t command, std::size_t requestSize, std::size_t dataSize) {
        std::uint8_t request[16] = {0x42, 0x01, 0, static_cast<std::uint8_t>(command)};
        std::uint8_t answer[1024];
        request[14] = static_cast<std::uint8_t>(dataSize >> 8);
        request[15] = static_cast<std::uint8_t>(dataSize & 0xFF);
        if (sendto(m_Socket, request, requestSize, 0, raw(m_Peer), sizeof m_Peer) < 0 ||
            recvfrom(m_Socket, answer, sizeof answer, 0, nullptr, nullptr) < 0)
            fail("bare exchange");
    }

private:
    sockaddr_in m_Peer;
    int m_Socket;
};

template <typename Work> double microseconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

template <typename Library, typename Sockets>
void compare(const char *name, int rounds, double divisor, Library library, Sockets sockets) {
    std::vector<double> ours;
    std::vector<double> bare;
    for (int round = -2; round < rounds; ++round) { // two rounds to warm up
        const double a = microseconds(library) / divisor;
        const double b = microseconds(sockets) / divisor;
        if (round >= 0) {
            ours.push_back(a);
            bare.push_back(b);
        }
    }
    std::printf("%-22s library %9.2f us, bare sockets %9.2f us, ratio %.3f\n", name, median(ours), median(bare),
                median(ours) / median(bare));
}

} // namespace

int main() {
    Peer peer;
    Bare bare(peer.address);
    Gx::ControlChannel *channel = nullptr;
    if (Gx::ControlChannel::Create(raw(peer.address), 0, 600000, &channel) != GX_SUCCESS)
        fail("control channel");

    constexpr int Batch = 500;
    const auto check = [](GXSTATUS status) {
        if (status != GX_SUCCESS)
            fail("control channel");
    };
    compare(
        "READREG round trip", 101, Batch,
        [&] {
            std::uint32_t address = 0x1000;
            std::uint32_t value = 0;
            for (int i = 0; i < Batch; ++i)
                check(channel->ReadReg(&address, &value, 1));
        },
        [&] {
            for (int i = 0; i < Batch; ++i)
                bare.exchange(TAG_READREG_CMD, 12, 0);
        });
    std::vector<std::uint8_t> memory(MemorySize);
    compare(
        "1 MiB memory read", 31, 1, [&] { check(channel->ReadMem(0, memory.data(), MemorySize)); },
        [&] {
            for (std::size_t left = MemorySize; left > 0; left -= std::min(left, PieceSize))
                bare.exchange(TAG_READMEM_CMD, 16, std::min(left, PieceSize));
        });
    check(channel->Destroy());
    return 0;
}
