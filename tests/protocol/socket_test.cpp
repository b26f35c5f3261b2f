#include "GxSocket.h"
#include "support/Leaks.h"
#include "support/TraceLog.h"

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <pthread.h>
#include <thread>
#include <unistd.h>

using namespace GxImp;
using Clock = std::chrono::steady_clock;

namespace {

sockaddr_in boundAddress(const CSocket &socket) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(static_cast<int>(SOCKET(socket)), reinterpret_cast<sockaddr *>(&address), &size);
    return address;
}

const sockaddr_in Loopback = MakeAddress(htonl(INADDR_LOOPBACK), 0);

TEST(Socket, CarriesADatagramWithItsSource) {
    CSocket a;
    CSocket b;
    ASSERT_EQ(a.Open(Loopback), 0u);
    ASSERT_EQ(b.Open(Loopback), 0u);
    ASSERT_EQ(a.SendTo("hello", 5, boundAddress(b)), 0u);
    char buffer[3]; // shorter than the datagram, which is cut
    std::size_t received = 0;
    sockaddr_in source{};
    ASSERT_EQ(b.RecvFrom(buffer, sizeof buffer, 1000, &received, &source), 0u);
    EXPECT_EQ(received, 3u);
    EXPECT_EQ(source.sin_port, boundAddress(a).sin_port);

    ASSERT_EQ(a.Connect(boundAddress(b)), 0u);
    ASSERT_EQ(a.Send("x", 1), 0u);
    ASSERT_EQ(b.Recv(buffer, sizeof buffer, GX_INFINITE, &received), 0u);
    EXPECT_EQ(received, 1u);
}

TEST(Socket, OpenFailureIsReportedAndLeavesNoDescriptor) {
    const Holdings before = Holdings::now();
    CSocket socket;
    TraceLog traces;
    EXPECT_EQ(socket.Open(MakeAddress(inet_addr("192.0.2.1"), 0)), 0xE1020000u | EADDRNOTAVAIL);
    EXPECT_TRUE(traces.contains("Error binding socket, error 99: Cannot assign requested address"));
    EXPECT_FALSE(socket.IsOpen());
    EXPECT_EQ(Holdings::now(), before);
}

TEST(Socket, TimeoutZeroOnlyLooks) {
    CSocket socket;
    ASSERT_EQ(socket.Open(Loopback), 0u);
    TraceLog traces;
    char byte = 0;
    std::size_t received = 0;
    EXPECT_EQ(socket.Recv(&byte, 1, 0, &received), 0xE1000007u);
    EXPECT_TRUE(traces.contains("GxSocketRecv: no packet available"));
    EXPECT_EQ(socket.Recv(&byte, 1, 20, &received), 0xE1000007u);
    EXPECT_TRUE(traces.contains("GxSocketRecv: timeout occured"));
}

TEST(Socket, SignalsDoNotExtendTheWait) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    struct sigaction before {};
    ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0); // no SA_RESTART: every signal interrupts
    CSocket socket;
    ASSERT_EQ(socket.Open(Loopback), 0u);

    const pthread_t receiver = pthread_self();
    std::atomic<bool> done{false};
    std::thread storm([&] {
        while (!done) {
            pthread_kill(receiver, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    char byte = 0;
    std::size_t received = 0;
    const auto start = Clock::now();
    const GXSTATUS status = socket.Recv(&byte, 1, 300, &received);
    const auto elapsed = Clock::now() - start;
    done = true;
    storm.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_EQ(status, 0xE1000007u);
    EXPECT_GE(elapsed, std::chrono::milliseconds(300));
    EXPECT_LT(elapsed, std::chrono::milliseconds(2000));
}

TEST(Socket, PendingErrorsEndTheWait) {
    CSocket socket;
    ASSERT_EQ(socket.Open(Loopback), 0u);
    sockaddr_in closed{};
    {
        CSocket other;
        ASSERT_EQ(other.Open(Loopback), 0u);
        closed = boundAddress(other);
    }
    ASSERT_EQ(socket.Connect(closed), 0u);
    ASSERT_EQ(socket.Send("x", 1), 0u);
    char byte = 0;
    std::size_t received = 0;
    TraceLog traces;
    EXPECT_EQ(socket.Recv(&byte, 1, 10000, &received), 0xE1020000u | ECONNREFUSED);
    EXPECT_TRUE(traces.contains("Socket recvmsg failed 111: Connection refused"));
    EXPECT_EQ(socket.Recv(&byte, 1, 20, &received), 0xE1000007u); // taken once, then quiet again

    GXBUF buffer{&byte, 1};
    EXPECT_EQ(GxSocketRecv(INVALID_SOCKET, &buffer, 1, 10000, &received), 0xE1020000u | EBADF);
}

TEST(Socket, EnumerationStopsAtTheCallbacksWish) {
    int calls = 0;
    const auto callback = [](void *context, const _GX_SOCKET_INTERFACE_INFO &) -> GXSTATUS {
        ++*static_cast<int *>(context);
        return GX_E_ABORTED;
    };
    const Holdings before = Holdings::now();
    TraceLog traces;
    EXPECT_EQ(GxSocketEnumInterfaces(callback, &calls), GX_E_ABORTED); // loopback is always there
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(traces.contains("Callback on IP address enumeration failed. Status 0x%08."));
    EXPECT_EQ(Holdings::now(), before);
}

} // namespace
