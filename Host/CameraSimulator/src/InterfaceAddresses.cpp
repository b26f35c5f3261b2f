#include "InterfaceAddresses.h"

#include <arpa/inet.h>
#include <linux/ip.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace camsim {
namespace {

unsigned indexOf(const std::string &interface) {
    const unsigned index = if_nametoindex(interface.c_str());
    if (index == 0)
        throw std::runtime_error("there is no network interface '" + interface + "'");
    return index;
}

const rtattr *findAttribute(const rtattr *attribute, std::size_t size, std::uint16_t type) {
    for (auto left = static_cast<unsigned>(size); RTA_OK(attribute, left); attribute = RTA_NEXT(attribute, left))
        if ((attribute->rta_type & NLA_TYPE_MASK) == type)
            return attribute;
    return nullptr;
}

const rtattr *findNested(const rtattr *outer, std::uint16_t type) {
    return outer == nullptr ? nullptr
                            : findAttribute(static_cast<const rtattr *>(RTA_DATA(outer)), RTA_PAYLOAD(outer), type);
}

/// Value of an IPV4_DEVCONF_ setting in the array of all settings; 0 when the kernel did not send it.
std::uint32_t settingOf(const rtattr *settings, unsigned id) {
    std::uint32_t value = 0;
    const std::size_t offset = (id - 1) * sizeof value;
    if (settings != nullptr && RTA_PAYLOAD(settings) >= offset + sizeof value)
        std::memcpy(&value, static_cast<const std::uint8_t *>(RTA_DATA(settings)) + offset, sizeof value);
    return value;
}

ifinfomsg linkBody(unsigned index) {
    ifinfomsg body{};
    body.ifi_index = static_cast<int>(index);
    return body;
}

} // namespace

InterfaceAddresses::InterfaceAddresses(Netlink &netlink, std::string interface)
    : netlink_(netlink), interface_(std::move(interface)), index_(indexOf(interface_)),
      oldConfiguration_(readConfiguration()) {
    writeConfiguration(
        {{IPV4_DEVCONF_PROMOTE_SECONDARIES, 1}, {IPV4_DEVCONF_ARP_IGNORE, 1}, {IPV4_DEVCONF_RP_FILTER, 0}});
}

InterfaceAddresses::~InterfaceAddresses() {
    try {
        std::vector<Key> keys;
        for (const auto &[key, use] : uses_)
            if (use.order != 0)
                keys.push_back(key);
        remove(keys);
        writeConfiguration(oldConfiguration_);
    } catch (const std::exception &) {
        // The interface is gone, and its addresses with it.
    }
}

InterfaceAddresses::Configuration InterfaceAddresses::readConfiguration() const {
    Configuration configuration;
    const ifinfomsg body = linkBody(index_);
    netlink_.query(
        {RTM_GETLINK, 0, &body, sizeof body}, "cannot read the settings of interface '" + interface_ + "'",
        [&](const nlmsghdr &header) {
            const auto *link = reinterpret_cast<const ifinfomsg *>(payloadOf(header));
            if ((link->ifi_flags & IFF_UP) == 0)
                throw std::runtime_error("the network interface '" + interface_ + "' is down");
            const auto *perFamily = findAttribute(IFLA_RTA(link), IFLA_PAYLOAD(&header), IFLA_AF_SPEC);
            const auto *settings = findNested(findNested(perFamily, AF_INET), IFLA_INET_CONF);
            for (const auto id : {IPV4_DEVCONF_PROMOTE_SECONDARIES, IPV4_DEVCONF_ARP_IGNORE, IPV4_DEVCONF_RP_FILTER})
                configuration[static_cast<std::uint16_t>(id)] = settingOf(settings, id);
        });
    return configuration;
}

void InterfaceAddresses::writeConfiguration(const Configuration &configuration) {
    const ifinfomsg body = linkBody(index_);
    std::vector<NetlinkMessage> messages{{RTM_SETLINK, NLM_F_ACK, &body, sizeof body}};
    NetlinkMessage &message = messages.front();
    const auto perFamily = message.begin(IFLA_AF_SPEC);
    const auto inet = message.begin(AF_INET);
    const auto settings = message.begin(IFLA_INET_CONF);
    for (const auto &[id, value] : configuration)
        message.attribute32(id, value);
    message.end(settings);
    message.end(inet);
    message.end(perFamily);
    if (const int error = netlink_.execute(messages).front(); error != 0)
        throw std::system_error(error, std::generic_category(),
                                "cannot prepare the network interface '" + interface_ + "' for cameras' addresses");
}

NetlinkMessage InterfaceAddresses::message(std::uint16_t type, std::uint16_t flags, const Key &key) const {
    ifaddrmsg body{};
    body.ifa_family = AF_INET;
    body.ifa_prefixlen = static_cast<std::uint8_t>(key.second);
    body.ifa_index = index_;
    NetlinkMessage message(type, static_cast<std::uint16_t>(NLM_F_ACK | flags), &body, sizeof body);
    const IpSettings settings{key.first, Ipv4::maskOf(key.second), {}};
    message.attribute32(IFA_LOCAL, htonl(settings.address.value));
    message.attribute32(IFA_ADDRESS, htonl(settings.address.value));
    if (key.second < 31)
        message.attribute32(IFA_BROADCAST, htonl(settings.broadcast().value));
    return message;
}

void InterfaceAddresses::change(const std::vector<IpSettings> &gone, const std::vector<IpSettings> &added) {
    // Added before gone, so that an address that moves from one camera to another stays.
    std::vector<Key> toSet;
    for (const IpSettings &settings : added)
        if (uses_[{settings.address, settings.prefixLength()}].count++ == 0)
            toSet.emplace_back(settings.address, settings.prefixLength());
    std::vector<Key> toRemove;
    for (const IpSettings &settings : gone) {
        const auto use = uses_.find({settings.address, settings.prefixLength()});
        if (use == uses_.end() || --use->second.count > 0)
            continue;
        if (use->second.order != 0)
            toRemove.push_back(use->first);
        else
            uses_.erase(use);
    }
    remove(toRemove);
    set(toSet);
}

void InterfaceAddresses::set(const std::vector<Key> &keys) {
    std::vector<NetlinkMessage> messages;
    messages.reserve(keys.size());
    for (const Key &key : keys)
        messages.push_back(message(RTM_NEWADDR, NLM_F_CREATE | NLM_F_EXCL, key));
    const std::vector<int> errors = netlink_.execute(messages);
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (errors[i] == 0)
            uses_[keys[i]].order = ++additions_;
    const auto failed = std::find_if(errors.begin(), errors.end(), [](int e) { return e != 0 && e != EEXIST; });
    if (failed == errors.end())
        return;
    const Key &key = keys[static_cast<std::size_t>(failed - errors.begin())];
    throw std::system_error(*failed, std::generic_category(),
                            "cannot set " + key.first.toString() + "/" + std::to_string(key.second) +
                                " on interface '" + interface_ + "'");
}

void InterfaceAddresses::remove(std::vector<Key> keys) {
    // Last added first: removing the first address of a subnet makes the kernel rework all later ones.
    std::sort(keys.begin(), keys.end(),
              [this](const Key &a, const Key &b) { return uses_.at(a).order > uses_.at(b).order; });
    std::vector<NetlinkMessage> messages;
    messages.reserve(keys.size());
    for (const Key &key : keys) {
        messages.push_back(message(RTM_DELADDR, 0, key));
        uses_.erase(key);
    }
    (void)netlink_.execute(messages); // an address that somebody else removed meanwhile is gone as wanted
}

} // namespace camsim
