#include "commissioning/Firewall.h"

#include "ChildProcess.h"
#include "Ruleset.h"

#include <fstream>
#include <unistd.h>

namespace commissioning {

namespace {

/// Whether a file of settings has one of these lines.
bool hasLine(const char *path, const std::vector<std::string> &wanted) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        for (const std::string &text : wanted) {
            if (line == text)
                return true;
        }
    }
    return false;
}

bool ufwDropsByDefault() {
    return hasLine("/etc/default/ufw", {"DEFAULT_INPUT_POLICY=\"DROP\"", "DEFAULT_INPUT_POLICY=\"REJECT\""});
}

bool firewalldRuns() {
    // Its command is a script that takes a third of a second to start.
    if (access("/run/systemd/system", F_OK) != 0)
        return outputOf({"firewall-cmd", "--state"}, std::chrono::seconds(2)).has_value();
    return access("/sys/fs/cgroup/system.slice/firewalld.service", F_OK) == 0 ||
           access("/sys/fs/cgroup/systemd/system.slice/firewalld.service", F_OK) == 0;
}

/// What is known without root's rights. Rules that somebody else loaded remain unknown.
Firewall byStates() {
    Firewall firewall;
    firewall.mayDrop = true;
    if (hasLine("/etc/ufw/ufw.conf", {"ENABLED=yes"})) {
        firewall.manager = Firewall::Manager::Ufw;
        firewall.drops = ufwDropsByDefault();
    } else if (firewalldRuns()) {
        firewall.manager = Firewall::Manager::Firewalld;
        firewall.drops = true; // all of its zones but "trusted" do unless told otherwise
    }
    return firewall;
}

} // namespace

Firewall surveyFirewall(const std::vector<std::string> &adapters) {
    const auto text = outputOf({"nft", "--json", "list", "ruleset"}, std::chrono::seconds(1));
    std::optional<Firewall> firewall = text ? judgeRuleset(*text, adapters) : std::nullopt;
    if (!firewall)
        return byStates();
    // Its rules are made of matches that nftables cannot show.
    if (firewall->manager == Firewall::Manager::Ufw && firewall->mayDrop)
        firewall->drops = firewall->drops || ufwDropsByDefault();
    return *firewall;
}

} // namespace commissioning
