#include "commissioning/CameraLock.h"

#include "Descriptor.h"
#include "HolderProcess.h"
#include "commissioning/Parsing.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <thread>

namespace commissioning {

namespace {

/// An address whose first byte is 0 is a name without a file, of the network namespace.
struct AbstractAddress {
    explicit AbstractAddress(const std::string &mac) {
        const std::string name = "ostra-lanvane/camera/" + mac;
        value.sun_family = AF_UNIX;
        std::copy_n(name.begin(), std::min(name.size(), sizeof value.sun_path - 1), value.sun_path + 1);
        size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    }
    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&value); }

    sockaddr_un value{};
    socklen_t size = 0;
};

Descriptor newSocket() {
    Descriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (made.get() < 0)
        throw std::system_error(errno, std::generic_category(), "socket");
    return made;
}

/// \returns false when somebody has it.
bool take(const Descriptor &lock, const AbstractAddress &address) {
    // Nobody is ever accepted: whoever connects only wants to know who listens.
    if (bind(lock.get(), address.get(), address.size) == 0 && listen(lock.get(), SOMAXCONN) == 0)
        return true;
    if (errno != EADDRINUSE)
        throw std::system_error(errno, std::generic_category(), "bind");
    return false;
}

/// Who has it; none when it is free again, or was just taken by somebody who does not listen yet.
std::optional<Process> holderAt(const AbstractAddress &address) {
    const Descriptor probe = newSocket();
    if (connect(probe.get(), address.get(), address.size) != 0)
        return errno == ECONNREFUSED ? std::nullopt : std::optional(Process{}); // full when thousands have asked
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (getsockopt(probe.get(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0)
        return Process{};
    return Process{credentials.pid, credentials.pid > 0 ? processName(credentials.pid) : ""};
}

std::string describe(const Process &holder) {
    if (holder.id <= 0) // of another process namespace
        return "another program";
    return (holder.name.empty() ? "another program" : holder.name) + " (process " + std::to_string(holder.id) + ")";
}

/// \param mac upper-case digits; empty for a text that was none.
Descriptor lockOf(const std::string &mac) {
    if (mac.empty())
        throw std::runtime_error("It is not known which camera is to be changed.");
    constexpr int Attempts = 50;
    const AbstractAddress address(mac);
    std::optional<Process> holder;
    Descriptor lock = newSocket();
    for (int i = 0; i < Attempts && !holder; ++i) {
        if (take(lock, address))
            return lock;
        holder = holderAt(address);
        if (!holder)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const Process named = holder.value_or(Process{});
    throw CameraBusy("The camera is being changed by " + describe(named) + ".", named);
}

/// What this process has.
struct Held {
    std::mutex mutex;
    std::set<std::string> macs;
};

Held &heldHere() {
    static Held held;
    return held;
}

} // namespace

CameraLock::CameraLock(const std::string &mac) : m_Mac(macFrom(mac)), m_Socket(lockOf(m_Mac).release()) {
    const std::lock_guard<std::mutex> lock(heldHere().mutex);
    heldHere().macs.insert(m_Mac);
}

CameraLock::~CameraLock() {
    const std::lock_guard<std::mutex> lock(heldHere().mutex);
    heldHere().macs.erase(m_Mac);
    close(m_Socket);
}

std::set<std::string> CameraLock::held() {
    const std::lock_guard<std::mutex> lock(heldHere().mutex);
    return heldHere().macs;
}

} // namespace commissioning
