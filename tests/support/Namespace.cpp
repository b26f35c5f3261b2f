#include "support/Namespace.h"

#include "support/NetworkMain.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <sched.h>
#include <stdexcept>
#include <system_error>
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

/// Runs a function on a thread of its own, which may change its namespace without consequences.
template <typename Function> void onOwnThread(Function function) { std::async(std::launch::async, function).get(); }

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
        ip("link set lo up");
        // A new namespace starts with the machine's values, and anything but 0 hides foreign subnets.
        writeFile("/proc/sys/net/ipv4/conf/all/rp_filter", "0");
        writeFile("/proc/sys/net/ipv4/conf/default/rp_filter", "0");
    } catch (const std::exception &error) {
        return error.what();
    }
    return {};
}

int runInPrivateNetwork(int argc, char **argv, const std::function<int()> &run) {
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    const std::string failure = enterPrivateNetwork();
    if (failure.empty())
        return run();
    const char *ci = std::getenv("CI");
    const bool mustRun = ci != nullptr && std::strcmp(ci, "true") == 0;
    std::fprintf(stderr, "%s: %s\n", mustRun ? "FAILED" : "SKIPPED", failure.c_str());
    return mustRun ? 1 : 77;
}

void ip(const std::string &arguments) {
    if (std::system(("ip " + arguments).c_str()) != 0) // in the calling thread's namespace
        throw std::runtime_error("failed: ip " + arguments);
}

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
    run([&] { testnet::ip(arguments); });
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
