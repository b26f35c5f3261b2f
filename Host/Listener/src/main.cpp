// lanvane-listen: tells of the answers of cameras as the adapters receive them, before the kernel drops any. Its lines
// and its exit status are described in packaging/lanvane-listen.1.

#include "Capabilities.h"
#include "Frame.h"
#include "Sockets.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace listener;

enum Exit { Done = 0, NoAdapter = 1, WrongUse = 2, NoCapability = 3 };

void print(const std::string &line) {
    std::fputs(line.c_str(), stdout);
    std::fflush(stdout);
}

std::int64_t now_us() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000000 + now.tv_nsec / 1000;
}

std::string ownPath() {
    char path[PATH_MAX];
    const ssize_t size = readlink("/proc/self/exe", path, sizeof path);
    return {path, size > 0 ? static_cast<std::size_t>(size) : 0};
}

std::vector<Socket> openAll(const std::vector<std::string> &adapters) {
    std::vector<Socket> sockets;
    for (const std::string &adapter : adapters) {
        const int descriptor = openOn(adapter);
        if (descriptor >= 0)
            sockets.push_back({adapter, descriptor});
        else
            print("failed " + adapter + " " + std::strerror(errno) + "\n"); // NOLINT(concurrency-mt-unsafe): one thread
    }
    return sockets;
}

/// Reads what has arrived, as long as others can wait.
void drain(const Socket &socket) {
    std::uint8_t buffer[2048];
    for (int i = 0; i < 1000; ++i) {
        const ssize_t size = recv(socket.descriptor, buffer, sizeof buffer, 0);
        if (size < 0)
            return;
        if (const auto acknowledge = readFrame(buffer, static_cast<std::size_t>(size)))
            std::fputs(acknowledgeLine(socket.adapter, now_us(), *acknowledge).c_str(), stdout);
    }
}

bool hasEnded(const pollfd &input) {
    char ignored[256];
    return input.revents != 0 && read(STDIN_FILENO, ignored, sizeof ignored) <= 0;
}

void listenUntilInputEnds(const std::vector<Socket> &sockets) {
    std::vector<pollfd> entries{{STDIN_FILENO, POLLIN, 0}};
    for (const Socket &socket : sockets)
        entries.push_back({socket.descriptor, POLLIN, 0});
    while (poll(entries.data(), entries.size(), -1) >= 0 || errno == EINTR) {
        for (const Socket &socket : sockets)
            drain(socket);
        std::fflush(stdout);
        if (hasEnded(entries[0]))
            return;
    }
}

int run(const std::vector<std::string> &adapters) {
    if (!raiseNetRaw()) {
        print("denied " + ownPath() + "\n");
        return NoCapability;
    }
    const std::vector<Socket> sockets = openAll(adapters);
    if (!dropEverything()) {
        print("failed * capabilities remain\n");
        return NoCapability;
    }
    if (sockets.empty())
        return NoAdapter;
    for (const Socket &socket : sockets)
        print("ready " + socket.adapter + "\n");
    listenUntilInputEnds(sockets);
    std::uint64_t dropped = 0;
    for (const Socket &socket : sockets)
        dropped += takeDropCount(socket);
    print("dropped " + std::to_string(dropped) + "\n");
    return Done;
}

} // namespace

int main(int argc, char **argv) {
    const std::vector<std::string> adapters(argv + 1, argv + argc);
    if (adapters == std::vector<std::string>{"--version"}) {
        print("lanvane-listen " LISTENER_VERSION "\n");
        return Done;
    }
    if (adapters.empty() || adapters[0][0] == '-') {
        std::fputs("Usage: lanvane-listen ADAPTER...\n"
                   "Writes what answers of cameras arrive there until its input ends; see lanvane-listen(1).\n",
                   stderr);
        return WrongUse;
    }
    return run(adapters);
}
