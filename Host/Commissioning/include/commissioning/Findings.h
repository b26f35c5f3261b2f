#pragma once

#include "commissioning/Counters.h"
#include "commissioning/Firewall.h"
#include "commissioning/Inventory.h"
#include "commissioning/ListenerClient.h"
#include "commissioning/Survey.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace commissioning {

/// One answer to a discovery, before the answers of a camera became one entry.
struct Answer {
    std::string mac;
    Address address = 0;
    std::string vendor;
    std::string model;
    std::string serial;
};

/// Everything a search knows, as findings are made of it.
struct Observation {
    std::vector<Adapter> adapters;
    std::set<std::string> searched; ///< names of the adapters that the search used
    std::vector<Camera> cameras;    ///< the hidden ones, too
    std::vector<Answer> answers;    ///< of one discovery
    Counters during;                ///< how far the counters moved during the search
    std::optional<Counters> quiet;  ///< and in as much time without one, where that was measured
    std::uint64_t overrun = 0;      ///< answers dropped by the search's own sockets
    Firewall firewall;
    ListenerReport listener;
    std::map<Address, Route> routeTo;               ///< cameras' addresses; without those that have no route
    std::vector<Route> routes;                      ///< all of the host's
    std::map<std::string, std::string> connections; ///< NetworkManager's, by adapter
    std::int64_t bufferLimit = 0;                   ///< net.core.rmem_max in bytes; 0 where it cannot be read
    bool isRoot = false;                            ///< commands need no sudo
};

/// What is wrong, errors first. Asks nothing and nobody: everything is in the observation.
std::vector<Finding> findingsOf(const Observation &observation);

/// Why a camera is hidden: the code of the finding that is its cause ("answers-filtered", "answers-blocked",
/// "answers-overrun", "address-of-host").
std::string hidingCause(const Observation &observation, const Camera &camera);

/// Asks the host for what a search does not know: routes, connections, firewall, rights. Takes 4 s at most, on a usual
/// host 50 ms. adapters, searched and cameras must be there. \param earlier whose connections and firewall are taken
/// instead of running the programs that know them; null for none. \throws std::system_error
void completeFromHost(Observation &observation, const Observation *earlier = nullptr);

/// One row for each kind of finding.
struct FindingKind {
    const char *code;
    Severity severity; ///< the usual one
    const char *text;  ///< {adapter}, {camera} and {KEY} stand for the subject and the evidence
};
/// All of them, in the order of docs/findings.md.
const std::vector<FindingKind> &findingKinds();

} // namespace commissioning
