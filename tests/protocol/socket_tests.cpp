#include "BroadcastSocketCollection.h"
#include "gxapi/Gx.h"
#include "support/Leaks.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/time.h>
#include <thread>

using namespace GxImp;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

namespace {

sockaddr_in boundAddress(const CSocket &socket) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(static_cast<int>(SOCKET(socket)), reinterpret_cast<sockaddr *>(&address), &size);
    return address;
}

const sockaddr_in Loopback = MakeAddress(htonl(INADDR_LOOPBACK), 0);

TEST(Socket, OpenFailureLeavesNoDescriptor) {
    const Holdings before = Holdings::now();
    CSocket socket;
    EXPECT_EQ(socket.Open(MakeAddress(inet_addr("192.0.2.1"), 0)), 0xE1020000u | EADDRNOTAVAIL);
    EXPECT_FALSE(socket.IsOpen());
    EXPECT_EQ(Holdings::now(), before);
}

/// Interrupts all waits of the process every millisecond.
class SignalStorm {
public:
    SignalStorm() {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, nullptr); // no SA_RESTART: every signal interrupts
        repeat(1000);
    }
    ~SignalStorm() { repeat(0); }

private:
    static void repeat(suseconds_t interval_us) {
        const itimerval timer{{0, interval_us}, {0, interval_us}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
};

/// Takes its time with each datagram and then fails.
class SlowCollector : public CCollector {
public:
    GXSTATUS OnReady(CSocket &socket, const _GX_SOCKET_INTERFACE_INFO &) noexcept override {
        char byte = 0;
        std::size_t received = 0;
        EXPECT_EQ(socket.Recv(&byte, 1, 0, &received), 0u);
        text += byte;
        std::this_thread::sleep_for(milliseconds(150));
        return GX_E_NOT_IMPLEMENTED;
    }
    std::string text;
};

TEST(Waiting, SignalsNeitherEndNorExtendIt) {
    CSocket sockets[2];
    _GX_SOCKET_INTERFACE_INFO infos[2]{};
    for (int row : {1, 0}) {
        ASSERT_EQ(sockets[row].Open(Loopback), 0u);
        infos[row].InterfaceAddrIn = Loopback;
        ASSERT_EQ(sockets[row].SendTo(row == 0 ? "a" : "b", 1, boundAddress(sockets[row])), 0u);
    }
    const SignalStorm storm;
    SlowCollector collector;
    auto start = Clock::now();
    EXPECT_EQ(collector.Collect(sockets, 2, 200, infos), 0xE1000007u);
    // The first datagram is handled for 150 ms, the second up to 300 ms; then comes a quiet period of the timeout.
    EXPECT_GE(Clock::now() - start, milliseconds(500));
    EXPECT_EQ(collector.text, "ab");

    char byte = 0;
    std::size_t received = 0;
    start = Clock::now();
    EXPECT_EQ(sockets[0].Recv(&byte, 1, 300, &received), 0xE1000007u);
    EXPECT_GE(Clock::now() - start, milliseconds(300));
    EXPECT_LT(Clock::now() - start, milliseconds(3000));
}

TEST(Collector, ReceiveBufferSizeComesFromTheEnvironment) {
    for (const auto &[text, size] : {std::pair{"0", 65536}, {"abc", 65536}, {"1000000", 1000000}}) {
        setenv("CORVO_BROADCAST_RECV_BUF_SIZE", text, 1);
        EXPECT_EQ(Gx::Init(), 0u);
        EXPECT_EQ(g_cBroadcastSocketRecvBufSize, size) << text;
    }
    unsetenv("CORVO_BROADCAST_RECV_BUF_SIZE");
    g_cBroadcastSocketRecvBufSize = 65536;
}

TEST(Socket, PendingErrorsEndTheWait) {
    CSocket socket;
    CSocket other;
    ASSERT_EQ(socket.Open(Loopback), 0u);
    ASSERT_EQ(other.Open(Loopback), 0u);
    const sockaddr_in closed = boundAddress(other);
    other.Close();
    ASSERT_EQ(socket.Connect(closed), 0u);
    ASSERT_EQ(socket.Send("x", 1), 0u);
    char byte = 0;
    std::size_t received = 0;
    EXPECT_EQ(socket.Recv(&byte, 1, 10000, &received), 0xE1020000u | ECONNREFUSED);
    EXPECT_EQ(socket.Recv(&byte, 1, 20, &received), 0xE1000007u); // taken once, then quiet again

    GXBUF buffer{&byte, 1};
    EXPECT_EQ(GxSocketRecv(INVALID_SOCKET, &buffer, 1, 10000, &received), 0xE1020000u | EBADF);
}

} // namespace
