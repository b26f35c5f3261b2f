#include "commissioning/Survey.h"

#include <net/if.h> // before those of the kernel, which then leave out what it has

#include "Descriptor.h"
#include "Netlink.h"
#include "NetlinkReader.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <linux/wireless.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace commissioning {

namespace {

int filterSetting(const std::string &name) {
    int value = 0;
    // Of the reader's network namespace. A dot in the name is none of a path's.
    std::ifstream("/proc/sys/net/ipv4/conf/" + name + "/rp_filter") >> value;
    return value;
}

/// What only the driver of a link knows. /sys would show the links of another network namespace.
class Driver {
public:
    explicit Driver(const std::string &name) : m_Socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)), m_Name(name) {}

    bool isWireless() const {
        iwreq request{};
        return ask(SIOCGIWNAME, request, request.ifr_ifrn.ifrn_name);
    }
    std::optional<unsigned> speed_Mbit_s() const {
        // Room for the masks of modes that follow; how many words each has the kernel tells first, as a negative
        // number.
        alignas(ethtool_link_settings) char room[sizeof(ethtool_link_settings) + sizeof(std::uint32_t) * 3 * 127] = "";
        auto &settings = *reinterpret_cast<ethtool_link_settings *>(room);
        ifreq request{};
        request.ifr_data = room;
        settings.cmd = ETHTOOL_GLINKSETTINGS;
        if (!ask(SIOCETHTOOL, request, request.ifr_name) || settings.link_mode_masks_nwords >= 0)
            return {};
        settings.cmd = ETHTOOL_GLINKSETTINGS;
        settings.link_mode_masks_nwords = static_cast<signed char>(-settings.link_mode_masks_nwords);
        const auto unknown = static_cast<std::uint32_t>(SPEED_UNKNOWN);
        if (!ask(SIOCETHTOOL, request, request.ifr_name) || settings.speed == unknown || settings.speed == 0)
            return {};
        return settings.speed;
    }

private:
    template <class Request> bool ask(unsigned long code, Request &request, char (&name)[IFNAMSIZ]) const {
        std::strncpy(name, m_Name.c_str(), IFNAMSIZ - 1);
        return ioctl(m_Socket.get(), code, &request) == 0;
    }

    Descriptor m_Socket;
    std::string m_Name;
};

void complete(Link &link, const std::vector<OwnAddress> &addresses, int filterOfAll) {
    Adapter &adapter = link.adapter;
    for (const OwnAddress &own : addresses) {
        if (own.adapterIndex == adapter.index)
            adapter.addresses.push_back(own.value);
    }
    const Driver driver(adapter.name);
    if (adapter.kind == LinkKind::Physical && driver.isWireless())
        adapter.kind = LinkKind::Wireless;
    if (adapter.hasCarrier && !link.isLoopback)
        adapter.speed_Mbit_s = driver.speed_Mbit_s();
    adapter.rpFilter = std::max(filterOfAll, filterSetting(adapter.name));
}

std::string nameOf(int adapterIndex) {
    char name[IF_NAMESIZE] = "";
    return adapterIndex > 0 && if_indextoname(static_cast<unsigned>(adapterIndex), name) ? name : "";
}

} // namespace

std::vector<Adapter> surveyAdapters() {
    Netlink kernel;
    std::vector<Link> links = kernel.table<Link>(RTM_GETLINK, readLink);
    const std::vector<OwnAddress> addresses = kernel.table<OwnAddress>(RTM_GETADDR, readAddress);
    const int filterOfAll = filterSetting("all");
    std::vector<Adapter> adapters;
    for (Link &link : links) {
        complete(link, addresses, filterOfAll);
        adapters.push_back(std::move(link.adapter));
    }
    return adapters;
}

std::optional<Route> routeTo(Address address) {
    alignas(nlmsghdr) char bytes[128];
    nlmsghdr &message = *mnl_nlmsg_put_header(bytes);
    message.nlmsg_type = RTM_GETROUTE;
    auto *body = static_cast<rtmsg *>(mnl_nlmsg_put_extra_header(&message, sizeof(rtmsg)));
    body->rtm_family = AF_INET;
    body->rtm_dst_len = 32;
    mnl_attr_put_u32(&message, RTA_DST, htonl(address));
    std::vector<Route> routes;
    const auto take = [&](const nlmsghdr &answer) { routes = readRoutes(answer).value_or(routes); };
    if (Netlink().request(message, take) != 0 || routes.empty())
        return {};
    routes[0].adapter = nameOf(routes[0].adapterIndex);
    return routes[0];
}

std::vector<Route> surveyRoutes() {
    std::vector<Route> routes;
    for (const std::vector<Route> &some : Netlink().table<std::vector<Route>>(RTM_GETROUTE, readRoutes)) {
        for (const Route &route : some) {
            if (route.isLocal)
                continue;
            routes.push_back(route);
            routes.back().adapter = nameOf(route.adapterIndex);
        }
    }
    return routes;
}

std::vector<Neighbour> neighboursOf(int adapterIndex) {
    std::vector<Neighbour> neighbours = Netlink().table<Neighbour>(RTM_GETNEIGH, readNeighbour);
    const auto isElsewhere = [&](const Neighbour &n) { return n.adapterIndex != adapterIndex; };
    neighbours.erase(std::remove_if(neighbours.begin(), neighbours.end(), isElsewhere), neighbours.end());
    return neighbours;
}

bool isUsable(const Adapter &adapter) {
    return adapter.isUp && adapter.hasCarrier && adapter.canBroadcast && !adapter.addresses.empty();
}

bool isStillUsable(const Adapter &adapter) {
    const std::vector<Adapter> all = surveyAdapters();
    return std::any_of(all.begin(), all.end(),
                       [&](const Adapter &now) { return now.index == adapter.index && isUsable(now); });
}

} // namespace commissioning
