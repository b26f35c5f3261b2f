#include "HostText.h"

#include "commissioning/AddressText.h"
#include "commissioning/Survey.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sys/utsname.h>
#include <system_error>

using namespace commissioning;

namespace commandline {

namespace {

std::string contentOf(const std::string &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

utsname kernel() {
    utsname names{};
    uname(&names);
    return names;
}

std::string routeText(const Route &route) {
    std::string text = route.prefix == 0 ? "default" : toText(route.destination) + "/" + std::to_string(route.prefix);
    if (route.gateway != 0)
        text += " via " + toText(route.gateway);
    return text + (route.adapter.empty() ? "" : " dev " + route.adapter) + "\n";
}

} // namespace

std::string hostName() { return kernel().nodename; }

std::string versionsText() {
    const utsname names = kernel();
    return std::string("lanvanectl " LANVANE_VERSION "\n") + names.sysname + " " + names.release + " " + names.version +
           " " + names.machine + "\n" + contentOf("/etc/os-release");
}

std::string routesText() try {
    std::string text;
    for (const Route &route : surveyRoutes())
        text += routeText(route);
    return text;
} catch (const std::system_error &error) {
    return std::string("The kernel tells none: ") + error.what() + "\n";
}

std::string sysctlsText() {
    const std::string ipv4 = "/proc/sys/net/ipv4/";
    std::set<std::string> paths = {"/proc/sys/net/core/rmem_default", "/proc/sys/net/core/rmem_max",
                                   "/proc/sys/net/core/netdev_max_backlog", ipv4 + "ip_forward",
                                   ipv4 + "ip_local_port_range"};
    for (const char *threshold : {"gc_thresh1", "gc_thresh2", "gc_thresh3"})
        paths.insert(ipv4 + "neigh/default/" + threshold);
    std::error_code error;
    for (const auto &adapter : std::filesystem::directory_iterator(ipv4 + "conf", error)) {
        for (const char *name : {"rp_filter", "accept_local", "arp_announce", "arp_filter", "arp_ignore", "forwarding",
                                 "log_martians", "route_localnet"})
            paths.insert(adapter.path().string() + "/" + name);
    }
    std::string text;
    for (const std::string &path : paths) {
        const std::string value = contentOf(path);
        text += path.substr(sizeof "/proc/sys/" - 1) + " = " + (value.empty() ? "?\n" : value);
    }
    return text;
}

std::string countersText() {
    std::string text;
    for (const char *path : {"/proc/net/snmp", "/proc/net/netstat", "/proc/net/softnet_stat"})
        text += std::string(path) + ":\n" + contentOf(path) + "\n";
    return text;
}

std::string endOf(const std::string &path, std::size_t bytes) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file)
        return {};
    const auto size = static_cast<std::size_t>(std::max<std::streamoff>(file.tellg(), 0));
    const std::size_t count = std::min(size, bytes);
    file.seekg(static_cast<std::streamoff>(size - count));
    std::string text(count, '\0');
    file.read(text.data(), static_cast<std::streamsize>(count));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

} // namespace commandline
