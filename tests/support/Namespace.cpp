#include "support/Namespace.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sched.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace testnet {

namespace {

void writeFile(const char *path, const std::string &text) {
    std::ofstream file(path);
    file << text << std::flush;
    if (!file)
        throw std::runtime_error(std::string("cannot write ") + path + ": " + std::strerror(errno));
}

void mapToRoot(uid_t uid, gid_t gid) {
    writeFile("/proc/self/setgroups", "deny");
    writeFile("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1");
    writeFile("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1");
}

std::vector<std::string> split(const std::string &text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()};
}

/// The calling thread's namespace is the one the command runs in.
void runIp(const std::string &arguments) {
    std::vector<std::string> words = split("ip " + arguments);
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    pid_t child = 0;
    const int error = posix_spawnp(&child, "ip", nullptr, nullptr, argv.data(), environ);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), "ip");
    int status = 0;
    if (waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("failed: ip " + arguments);
}

/// Runs a function on a thread of its own, which may change its namespace without consequences.
template <typename Function> void onOwnThread(Function function) {
    std::exception_ptr failure;
    std::thread([&] {
        try {
            function();
        } catch (...) {
            failure = std::current_exception();
        }
    }).join();
    if (failure)
        std::rethrow_exception(failure);
}

void check(int result, const char *what) {
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

std::string enterPrivateNetwork() {
    const uid_t uid = getuid();
    const gid_t gid = getgid();
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return std::string("no user and network namespace: ") + std::strerror(errno);
    try {
        mapToRoot(uid, gid);
        runIp("link set lo up");
        // A new namespace starts with the machine's values, and anything but 0 hides foreign subnets.
        writeFile("/proc/sys/net/ipv4/conf/all/rp_filter", "0");
        writeFile("/proc/sys/net/ipv4/conf/default/rp_filter", "0");
    } catch (const std::exception &error) {
        return error.what();
    }
    return {};
}

void ip(const std::string &arguments) { runIp(arguments); }

Namespace::Namespace() {
    onOwnThread([this] {
        check(unshare(CLONE_NEWNET), "unshare");
        m_Descriptor = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
        check(m_Descriptor, "open network namespace");
    });
}

Namespace::~Namespace() { close(m_Descriptor); }

void Namespace::run(const std::function<void()> &work) const {
    onOwnThread([&] {
        check(setns(m_Descriptor, CLONE_NEWNET), "setns");
        work();
    });
}

void Namespace::ip(const std::string &arguments) const {
    run([&] { runIp(arguments); });
}

Adapter::Adapter(const std::string &name, const std::string &address) : m_Name(name) {
    const std::string peer = name + "c";
    testnet::ip("link add " + name + " type veth peer name " + peer);
    // iproute2 takes a path where it expects the name of a namespace.
    testnet::ip("link set " + peer + " netns /proc/" + std::to_string(getpid()) + "/fd/" +
                std::to_string(m_CameraSide.descriptor()));
    m_CameraSide.ip("link set " + peer + " name " + CameraInterface + " up");
    if (!address.empty())
        testnet::ip("address add " + address + " brd + dev " + name);
    testnet::ip("link set " + name + " up");
}

Adapter::~Adapter() {
    try {
        testnet::ip("link delete " + m_Name);
    } catch (const std::exception &) { // Gone with the process's namespace in any case.
    }
}

} // namespace testnet
