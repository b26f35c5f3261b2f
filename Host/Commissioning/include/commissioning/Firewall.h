#pragma once

#include <string>
#include <vector>

namespace commissioning {

/// What is known of this host's packet filter.
struct Firewall {
    /// By whose command something is let in.
    enum class Manager { None, Nftables, Ufw, Firewalld };

    Manager manager = Manager::None;
    /// The rules, or the default that the manager's state tells, drop UDP datagrams from port 3956.
    bool drops = false;
    /// The rules cannot be read, or cannot be told to let such datagrams pass.
    bool mayDrop = false;
    /// The rules let datagrams pass that this host sends to port 3956 by broadcast and hears itself.
    bool ownRequestsPass = false;
    /// Base chains of nftables that drop, as in "inet filter input".
    std::vector<std::string> droppingChains;
};

/// Reads the ruleset (which takes root's rights), else the state of ufw and firewalld. Takes 3 s at most, on a usual
/// host some 20 ms. Thread-safe. \param adapters names of those that answers arrive by.
Firewall surveyFirewall(const std::vector<std::string> &adapters);

} // namespace commissioning
