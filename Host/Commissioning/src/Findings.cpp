#include "commissioning/Findings.h"

#include "FindingMaker.h"
#include "NetworkManager.h"
#include "Remedies.h"

#include <algorithm>
#include <fstream>
#include <unistd.h>

namespace commissioning {

namespace {

const char *const Causes =
    "Most frequent causes: the camera has no power or no link; it is behind another adapter or in "
    "another VLAN; a firewall drops UDP datagrams from port 3956; it answers other hosts only.";
const char *const FirewallFirst =
    "A firewall of this host drops what it does not know: UDP datagrams from port 3956 must "
    "be let in. ";

std::string asText(const Evidence::value_type::second_type &value) {
    const auto *number = std::get_if<std::int64_t>(&value);
    return number ? std::to_string(*number) : std::get<std::string>(value);
}

std::string fill(std::string text, const Finding &finding) {
    Evidence values = finding.evidence;
    values.emplace_back("adapter", finding.adapter);
    values.emplace_back("camera", macText(finding.camera));
    for (const auto &[key, value] : values) {
        const std::string place = "{" + key + "}";
        const std::size_t start = text.find(place);
        if (start != std::string::npos)
            text.replace(start, place.size(), asText(value));
    }
    return text;
}

/// More than chance: counts of unrelated traffic vary by their root, and a false alarm costs more than a missed one.
bool exceeds(std::int64_t during, std::int64_t quiet) {
    const double excess = static_cast<double>(during) - static_cast<double>(quiet);
    return excess > 0 && excess * excess > 16 * static_cast<double>(std::max<std::int64_t>(quiet, 0));
}

/// Datagrams that vanished without another reason than a firewall; those that this host sent to everybody, and hears
/// itself, may be among them.
std::int64_t vanished(const Observation &o, const Counters &counters) {
    return counters.unexplained() - (o.firewall.ownRequestsPass ? 0 : counters.broadcasts);
}

bool vanishedMoreThanUsual(const Observation &o) {
    return o.quiet && exceeds(vanished(o, o.during), vanished(o, *o.quiet));
}

bool anyHidden(const Observation &o, const char *cause) {
    return std::any_of(o.cameras.begin(), o.cameras.end(),
                       [&](const Camera &camera) { return camera.hidden && hidingCause(o, camera) == cause; });
}

bool isOnlyPhysical(const Observation &o, const Adapter &adapter) {
    const auto count = std::count_if(o.adapters.begin(), o.adapters.end(),
                                     [](const Adapter &one) { return one.kind == LinkKind::Physical; });
    return adapter.kind == LinkKind::Physical && count == 1;
}

void addLinkFindings(FindingMaker &maker) {
    const Observation &o = maker.observation();
    const bool anyUsable = std::any_of(o.adapters.begin(), o.adapters.end(), isUsable);
    unsigned proposed = 0;
    if (std::none_of(o.adapters.begin(), o.adapters.end(), [](const Adapter &one) { return one.canBroadcast; }))
        maker.add(Code::NoAdapter, AllAdapters, NoCamera, {}, {});
    for (const Adapter &adapter : o.adapters) {
        if (!adapter.canBroadcast || adapter.isPort)
            continue;
        const Severity severity = isOnlyPhysical(o, adapter) ? Severity::Warning : Severity::Info;
        if (!adapter.isUp)
            maker.add(Code::LinkDown, adapter.name, NoCamera, {}, switchOn(o, adapter), severity);
        else if (!adapter.hasCarrier && adapter.kind != LinkKind::Bridge) // a bridge without ports has none
            maker.add(Code::NoCarrier, adapter.name, NoCamera, {}, {}, severity);
        else if (adapter.hasCarrier && adapter.addresses.empty()) // as that of an adapter with VLANs may well be
            maker.add(Code::NoIpv4, adapter.name, NoCamera, {}, addAddress(o, adapter, unusedSubnet(o, proposed++)),
                      anyUsable ? Severity::Info : severity);
    }
}

bool hasAddressIn(const Adapter &adapter, const AdapterAddress &subnet) {
    return std::any_of(adapter.addresses.begin(), adapter.addresses.end(),
                       [&](const AdapterAddress &own) { return isInSubnet(own.address, subnet); });
}

/// The first adapter's address that shares a subnet with one of the other's.
const AdapterAddress *commonSubnet(const Adapter &one, const Adapter &other) {
    for (const AdapterAddress &own : one.addresses) {
        if (FindingMaker::subnetOf(other, own.address) || hasAddressIn(other, own))
            return &own;
    }
    return nullptr;
}

bool hasGateway(const Observation &o, const Adapter &adapter) {
    return std::any_of(o.routes.begin(), o.routes.end(),
                       [&](const Route &route) { return route.adapterIndex == adapter.index && route.gateway != 0; });
}

void compareSubnets(FindingMaker &maker, const Adapter &first, const Adapter &second) {
    const Observation &o = maker.observation();
    // The one that leads to the rest of the network should keep its address.
    const Adapter &kept = hasGateway(o, second) ? second : first;
    const Adapter &moved = &kept == &first ? second : first;
    const AdapterAddress *subnet = commonSubnet(moved, kept);
    if (!subnet)
        return;
    const std::string text = toText({subnet->address & subnet->mask, subnet->mask});
    maker.add(Code::SameSubnetTwice, moved.name, NoCamera, {{"other", kept.name}, {"subnet", text}},
              replaceAddress(o, moved, *subnet, unusedSubnet(o, 0)));
}

void addSubnetFindings(FindingMaker &maker) {
    const std::vector<Adapter> &adapters = maker.observation().adapters;
    for (auto second = adapters.begin(); second != adapters.end(); ++second) {
        for (auto first = adapters.begin(); first != second; ++first) {
            if (isUsable(*first) && isUsable(*second))
                compareSubnets(maker, *first, *second);
        }
    }
}

void addFilterFindings(FindingMaker &maker) {
    const Observation &o = maker.observation();
    std::vector<const Adapter *> filtering;
    std::string names;
    for (const Adapter &adapter : o.adapters) {
        if (!maker.isSearched(adapter) || !isFiltering(o, adapter))
            continue;
        filtering.push_back(&adapter);
        names += (names.empty() ? "" : ", ") + adapter.name;
    }
    if (filtering.empty())
        return;
    if (exceeds(o.during.filtered, o.quiet ? o.quiet->filtered : 0) || anyHidden(o, "answers-filtered")) {
        maker.add(Code::AnswersFiltered, filtering.size() == 1 ? names : AllAdapters, NoCamera,
                  {{"dropped", o.during.filtered}, {"filtering", names}}, stopFiltering(o, filtering));
        return;
    }
    for (const Adapter *adapter : filtering)
        maker.add(Code::FilterOn, adapter->name, NoCamera, {{"rp_filter", std::int64_t{adapter->rpFilter}}},
                  stopFiltering(o, {adapter}));
}

void addLossFindings(FindingMaker &maker) {
    const Observation &o = maker.observation();
    const bool isSeen = anyHidden(o, "answers-blocked");
    if (isSeen || (o.firewall.drops && vanishedMoreThanUsual(o)))
        maker.add(Code::AnswersBlocked, AllAdapters, NoCamera, {{"vanished", vanished(o, o.during)}}, letAnswersIn(o),
                  isSeen ? Severity::Error : Severity::Warning);
    if (o.listener.state == ListenerReport::State::Denied)
        maker.add(Code::ListenerDenied, AllAdapters, NoCamera, {{"program", o.listener.program}},
                  grantListening(o, o.listener.program));
    if (o.overrun > 0)
        maker.add(Code::AnswersOverrun, AllAdapters, NoCamera, {{"dropped", static_cast<std::int64_t>(o.overrun)}},
                  enlargeBuffers(o));
    if (o.during.tableFulls > 0)
        maker.add(Code::NeighboursFull, AllAdapters, NoCamera, {{"refused", o.during.tableFulls}}, enlargeTable(o));
}

/// Adapters on which a camera would be missed. A bridge is so only where there is nothing else: most are for
/// containers.
std::vector<const Adapter *> awaited(const FindingMaker &maker) {
    std::vector<const Adapter *> adapters;
    std::vector<const Adapter *> bridges;
    for (const Adapter &adapter : maker.observation().adapters) {
        if (maker.isSearched(adapter) && isUsable(adapter))
            (adapter.kind == LinkKind::Bridge ? bridges : adapters).push_back(&adapter);
    }
    return adapters.empty() ? bridges : adapters;
}

void addSilenceFindings(FindingMaker &maker) {
    const Observation &o = maker.observation();
    const bool suspectsFirewall = o.firewall.drops || (o.firewall.mayDrop && vanishedMoreThanUsual(o));
    for (const Adapter *adapter : awaited(maker)) {
        const bool hasCamera = std::any_of(o.cameras.begin(), o.cameras.end(), [&](const Camera &camera) {
            return std::count(camera.adapters.begin(), camera.adapters.end(), adapter->name) != 0;
        });
        if (hasCamera)
            continue;
        maker.add(Code::NoAnswer, adapter->name, NoCamera,
                  {{"causes", (suspectsFirewall ? FirewallFirst : std::string()) + Causes}},
                  suspectsFirewall ? letAnswersIn(o) : Commands(),
                  o.cameras.empty() ? Severity::Warning : Severity::Info);
    }
}

} // namespace

const std::vector<FindingKind> &findingKinds() {
    static const std::vector<FindingKind> kinds = {
#define FINDING(name, code, severity, text) {code, Severity::severity, text},
#include "FindingTable.inc"
#undef FINDING
    };
    return kinds;
}

Finding &FindingMaker::add(Code code, const std::string &adapter, const std::string &camera, Evidence evidence,
                           std::vector<std::string> remedies, std::optional<Severity> severity) {
    const FindingKind &kind = findingKinds()[static_cast<std::size_t>(code)];
    Finding finding{kind.code,          severity.value_or(kind.severity), adapter, camera, std::move(evidence), "",
                    std::move(remedies)};
    finding.text = fill(kind.text, finding);
    m_Findings.push_back(std::move(finding));
    return m_Findings.back();
}

std::vector<Finding> FindingMaker::take() {
    std::stable_sort(m_Findings.begin(), m_Findings.end(),
                     [](const Finding &a, const Finding &b) { return a.severity < b.severity; });
    return std::move(m_Findings);
}

const Adapter *FindingMaker::adapter(const std::string &name) const {
    for (const Adapter &adapter : m_Observation.adapters) {
        if (adapter.name == name)
            return &adapter;
    }
    return nullptr;
}

const AdapterAddress *FindingMaker::subnetOf(const Adapter &adapter, Address address) {
    for (const AdapterAddress &own : adapter.addresses) {
        if (isInSubnet(address, own))
            return &own;
    }
    return nullptr;
}

bool isFiltering(const Observation &o, const Adapter &adapter) {
    const bool hasDefaultRoute =
        std::any_of(o.routes.begin(), o.routes.end(), [](const Route &route) { return route.prefix == 0; });
    return adapter.rpFilter == 1 || (adapter.rpFilter == 2 && !hasDefaultRoute);
}

std::vector<Finding> findingsOf(const Observation &observation) {
    FindingMaker maker(observation);
    addLinkFindings(maker);
    addSubnetFindings(maker);
    addFilterFindings(maker);
    addLossFindings(maker);
    addCameraFindings(maker);
    addSilenceFindings(maker);
    return maker.take();
}

void completeFromHost(Observation &observation, const Observation *earlier) {
    observation.routes = surveyRoutes();
    for (const Camera &camera : observation.cameras) {
        if (const std::optional<Route> route = routeTo(camera.address))
            observation.routeTo[camera.address] = *route;
    }
    observation.connections = earlier ? earlier->connections : managedConnections();
    observation.firewall =
        earlier ? earlier->firewall
                : surveyFirewall(std::vector<std::string>(observation.searched.begin(), observation.searched.end()));
    std::ifstream("/proc/sys/net/core/rmem_max") >> observation.bufferLimit;
    observation.isRoot = geteuid() == 0;
}

} // namespace commissioning
