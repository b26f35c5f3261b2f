#include "Remedies.h"

#include "commissioning/AddressText.h"

#include <algorithm>
#include <utility>

namespace commissioning {

namespace {

/// For a POSIX shell.
std::string shellWord(const std::string &word) {
    const std::string harmless = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-/:@+=";
    if (!word.empty() && word.find_first_not_of(harmless) == std::string::npos)
        return word;
    std::string result = "'";
    for (const char c : word)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string sudo(const Observation &host) { return host.isRoot ? "" : "sudo "; }

/// Changes a setting of an adapter's connection, where NetworkManager manages it.
Commands changeConnection(const Observation &host, const Adapter &adapter, const std::string &change) {
    const std::string device = shellWord(adapter.name);
    const std::string &connection = host.connections.at(adapter.name);
    if (connection.empty())
        return {sudo(host) + "nmcli connection add type ethernet ifname " + device + " con-name " + device +
                " ipv4.method manual " + change.substr(change.find_first_not_of('+'))};
    return {sudo(host) + "nmcli connection modify " + shellWord(connection) + " " + change + " && " + sudo(host) +
            "nmcli device reapply " + device};
}

bool isManaged(const Observation &host, const Adapter &adapter) { return host.connections.count(adapter.name) != 0; }

/// A dot in an adapter's name is a slash in that of its setting.
std::string filterSetting(std::string adapter) {
    std::replace(adapter.begin(), adapter.end(), '.', '/');
    return "net.ipv4.conf." + adapter + ".rp_filter";
}

std::string assignment(std::string name, const char *sign, const std::string &value) {
    return std::move(name.append(sign).append(value));
}

/// Sets kernel settings now, and prints the lines into a file that is read at start-up.
Commands setKernel(const Observation &host, const std::vector<std::pair<std::string, std::string>> &settings) {
    std::string now = sudo(host) + "sysctl -w";
    std::string lines;
    for (const auto &[name, value] : settings) {
        now.append(" ").append(shellWord(assignment(name, "=", value)));
        lines.append(" ").append(shellWord(assignment(name, " = ", value)));
    }
    return {now, "printf '%s\\n'" + lines + " | " + sudo(host) + "tee -a /etc/sysctl.d/60-lanvane.conf"};
}

} // namespace

Commands switchOn(const Observation &host, const Adapter &adapter) {
    if (isManaged(host, adapter))
        return {sudo(host) + "nmcli device connect " + shellWord(adapter.name)};
    return {sudo(host) + "ip link set dev " + shellWord(adapter.name) + " up"};
}

Commands addAddress(const Observation &host, const Adapter &adapter, const AdapterAddress &added) {
    if (isManaged(host, adapter))
        return changeConnection(host, adapter, "+ipv4.addresses " + toText(added));
    return {sudo(host) + "ip address add " + toText(added) + " brd + dev " + shellWord(adapter.name)};
}

Commands replaceAddress(const Observation &host, const Adapter &adapter, const AdapterAddress &old,
                        const AdapterAddress &replacement) {
    if (isManaged(host, adapter))
        return changeConnection(host, adapter, "ipv4.method manual ipv4.addresses " + toText(replacement));
    return {addAddress(host, adapter, replacement)[0] + " && " + sudo(host) + "ip address delete " + toText(old) +
            " dev " + shellWord(adapter.name)};
}

Commands addRoute(const Observation &host, const Adapter &adapter, Address destination) {
    const std::string target = toText(destination) + "/32";
    if (isManaged(host, adapter))
        return changeConnection(host, adapter, "+ipv4.routes " + target);
    return {sudo(host) + "ip route replace " + target + " dev " + shellWord(adapter.name)};
}

Commands stopFiltering(const Observation &host, const std::vector<const Adapter *> &adapters) {
    std::vector<std::pair<std::string, std::string>> settings{{filterSetting("all"), "0"}};
    for (const Adapter *adapter : adapters)
        settings.emplace_back(filterSetting(adapter->name), "0");
    return setKernel(host, settings);
}

Commands letAnswersIn(const Observation &host) {
    switch (host.firewall.manager) {
    case Firewall::Manager::Ufw:
        return {sudo(host) + "ufw allow proto udp from any port 3956"};
    case Firewall::Manager::Firewalld:
        return {sudo(host) + "firewall-cmd --add-source-port=3956/udp",
                sudo(host) + "firewall-cmd --permanent --add-source-port=3956/udp"};
    case Firewall::Manager::None:
    case Firewall::Manager::Nftables:
        break;
    }
    std::string command;
    for (const std::string &chain : host.firewall.droppingChains)
        command += (command.empty() ? "" : " && ") + sudo(host) + "nft insert rule " + chain + " udp sport 3956 accept";
    // Which chain it is cannot be known without the rights to read the rules.
    return {command.empty() ? sudo(host) + "nft list ruleset" : command};
}

Commands grantListening(const Observation &host, const std::string &program) {
    return {sudo(host) + "setcap cap_net_raw=p " + shellWord(program)};
}

Commands enlargeBuffers(const Observation &host) {
    constexpr std::int64_t Wanted = 1000000;
    const std::string size = std::to_string(Wanted);
    if (host.bufferLimit >= Wanted)
        return {"export CORVO_BROADCAST_RECV_BUF_SIZE=" + size};
    return setKernel(host, {{"net.core.rmem_max", size}});
}

Commands enlargeTable(const Observation &host) {
    return setKernel(host,
                     {{"net.ipv4.neigh.default.gc_thresh2", "4096"}, {"net.ipv4.neigh.default.gc_thresh3", "8192"}});
}

std::string cameraCommand(const std::string &verb, const Camera &camera, const std::string &rest) {
    return "lanvanectl " + verb + " " + macText(camera.mac) + rest;
}

AdapterAddress unusedSubnet(const Observation &host, unsigned skipped) {
    constexpr Address Mask = 0xFFFFFF00;
    AdapterAddress candidate;
    const auto isUsed = [&](const Adapter &adapter) {
        return std::any_of(adapter.addresses.begin(), adapter.addresses.end(), [&](const AdapterAddress &own) {
            return isInSubnet(candidate.address, own) || isInSubnet(own.address, candidate);
        });
    };
    for (const Address first : {0xC0A80A01U, 0xAC140001U, 0x0A140001U}) { // 192.168.10.1, 172.20.0.1, 10.20.0.1
        for (Address third = 0; third < 0xF0; ++third) {
            candidate = {first + third * (~Mask + 1), Mask};
            if (std::none_of(host.adapters.begin(), host.adapters.end(), isUsed) && skipped-- == 0)
                return candidate;
        }
    }
    return candidate;
}

} // namespace commissioning
