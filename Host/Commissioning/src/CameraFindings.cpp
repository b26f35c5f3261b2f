#include "FindingMaker.h"
#include "Remedies.h"

#include <algorithm>

namespace commissioning {

namespace {

bool isStatic(const Camera &camera) { return camera.mode == Mode::Static; }

/// What a camera has now and, where it will use it at its next start, has stored.
std::vector<std::pair<const char *, Address>> addressesOf(const Camera &camera) {
    std::vector<std::pair<const char *, Address>> addresses;
    if (camera.address != 0)
        addresses.emplace_back("current", camera.address);
    // In the other modes many cameras keep one from the factory, and all the same.
    if (isStatic(camera) && camera.stored && camera.stored->address != 0 && camera.stored->address != camera.address)
        addresses.emplace_back("stored", camera.stored->address);
    return addresses;
}

/// Who has which address.
using Owners = std::multimap<Address, const Camera *>;

Owners ownersOf(const std::vector<Camera> &cameras) {
    Owners owners;
    for (const Camera &camera : cameras) {
        for (const auto &[which, address] : addressesOf(camera))
            owners.emplace(address, &camera);
    }
    return owners;
}

/// A camera with what its adapter has to do with it.
class CameraRules {
public:
    CameraRules(FindingMaker &maker, const Owners &owners, const Camera &camera)
        : m_Maker(maker), m_Owners(owners), m_Camera(camera) {
        for (const std::string &name : camera.adapters) {
            const Adapter *adapter = maker.adapter(name);
            if (!adapter)
                continue;
            m_Adapter = m_Adapter ? m_Adapter : adapter;
            const AdapterAddress *subnet = FindingMaker::subnetOf(*adapter, camera.address);
            if (!subnet || m_Subnet)
                continue;
            m_Adapter = adapter;
            m_Subnet = subnet;
        }
    }

    void apply() {
        compareWithCameras();
        compareWithHost();
        if (m_Camera.hidden) {
            tellHidden();
            return;
        }
        checkSubnet();
        checkRoute();
        checkReachable();
        checkMask();
        checkGateway();
        checkStored();
        checkDhcp();
        tellHolder();
    }

private:
    const Observation &observation() const { return m_Maker.observation(); }
    void add(Code code, Evidence evidence, Commands remedies, std::optional<Severity> severity = {}) {
        m_Maker.add(code, m_Adapter ? m_Adapter->name : AllAdapters, m_Camera.mac, std::move(evidence),
                    std::move(remedies), severity);
    }
    Commands rescue(const char *rest = "") const { return {cameraCommand("rescue", m_Camera, rest)}; }
    Commands store(Address mask, Address gateway) const {
        const std::string rest = gateway != 0 ? " --gateway " + toText(gateway) : "";
        return {cameraCommand("set", m_Camera, " static " + toText({m_Camera.address, mask}) + rest)};
    }

    void compareWithCameras() {
        for (const auto &[which, address] : addressesOf(m_Camera)) {
            const auto [begin, end] = m_Owners.equal_range(address);
            const auto other =
                std::find_if(begin, end, [&](const auto &entry) { return entry.second->mac != m_Camera.mac; });
            if (other == end)
                continue;
            add(Code::DuplicateAddress,
                {{"which", which}, {"address", toText(address)}, {"other", macText(other->second->mac)}}, rescue());
            return;
        }
    }

    void compareWithHost() {
        for (const auto &[which, address] : addressesOf(m_Camera)) {
            for (const Adapter &adapter : observation().adapters) {
                const AdapterAddress *own = FindingMaker::subnetOf(adapter, address);
                if (!own || own->address != address)
                    continue;
                add(Code::AddressOfHost, {{"which", which}, {"address", toText(address)}, {"own", adapter.name}},
                    rescue());
                return;
            }
        }
    }

    void tellHidden() {
        const std::string cause = hidingCause(observation(), m_Camera);
        const Commands rescueIt = rescue();
        const auto with = [&](Commands commands) {
            commands.insert(commands.end(), rescueIt.begin(), rescueIt.end());
            return commands;
        };
        const auto tell = [&](const char *text, Commands remedies) {
            add(Code::Hidden, {{"address", toText(m_Camera.address)}, {"reason", cause}, {"cause", text}},
                std::move(remedies));
        };
        if (cause == "address-of-host")
            tell("it has an address of this host", rescueIt);
        else if (cause == "answers-filtered")
            tell("reverse path filtering dropped it", with(stopFiltering(observation(), {m_Adapter})));
        else if (cause == "answers-overrun")
            tell("it did not fit into the receive buffer", enlargeBuffers(observation()));
        else
            tell("a firewall of this host dropped it", with(letAnswersIn(observation())));
    }

    /// An address that the adapter could have in the camera's subnet.
    std::optional<AdapterAddress> besideCamera() const {
        const Address network = m_Camera.address & m_Camera.mask;
        const Address last = network | ~m_Camera.mask;
        for (Address address = network + 1; address < last && address - network < 1000; ++address) {
            if (address != m_Camera.gateway && m_Owners.count(address) == 0)
                return AdapterAddress{address, m_Camera.mask};
        }
        return {};
    }

    void checkSubnet() {
        if (!m_Adapter || m_Subnet || m_Adapter->addresses.empty())
            return;
        std::string subnets;
        for (const AdapterAddress &own : m_Adapter->addresses)
            subnets += (subnets.empty() ? "" : ", ") + toText({own.address & own.mask, own.mask});
        Commands remedies = rescue();
        if (const auto address = besideCamera())
            remedies.push_back(addAddress(observation(), *m_Adapter, *address)[0]);
        add(Code::ForeignSubnet, {{"address", toText(m_Camera.address)}, {"subnets", subnets}}, std::move(remedies));
    }

    void checkRoute() {
        const auto route = observation().routeTo.find(m_Camera.address);
        if (m_Adapter == nullptr || route == observation().routeTo.end() || route->second.isLocal ||
            std::count(m_Camera.adapters.begin(), m_Camera.adapters.end(), route->second.adapter) != 0)
            return;
        // Where it is foreign, a way over a gateway is no news.
        if (!m_Subnet && route->second.gateway != 0)
            return;
        add(Code::RoutedElsewhere, {{"address", toText(m_Camera.address)}, {"route", route->second.adapter}},
            addRoute(observation(), *m_Adapter, m_Camera.address));
    }

    void checkReachable() {
        const bool couldBeAsked = observation().during.tableFulls == 0; // or it is the host that needs help
        if (m_Subnet && m_Camera.status == Status::NotReachable && couldBeAsked)
            add(Code::Unanswering, {{"address", toText(m_Camera.address)}}, rescue());
    }

    bool anyAdapterHas(Address mask) const {
        return std::any_of(m_Camera.adapters.begin(), m_Camera.adapters.end(), [&](const std::string &name) {
            const Adapter *adapter = m_Maker.adapter(name);
            return adapter != nullptr &&
                   std::any_of(adapter->addresses.begin(), adapter->addresses.end(),
                               [&](const auto &own) { return own.mask == mask && isInSubnet(m_Camera.address, own); });
        });
    }

    Address fittingGateway() const { return isInSubnet(m_Camera.gateway, *m_Subnet) ? m_Camera.gateway : 0; }

    void checkMask() {
        if (!m_Subnet || anyAdapterHas(m_Camera.mask))
            return;
        add(Code::MaskDiffers, {{"mask", toText(m_Camera.mask)}, {"expected", toText(m_Subnet->mask)}},
            store(m_Subnet->mask, fittingGateway()));
    }

    void checkGateway() {
        if (!m_Subnet || m_Camera.gateway == 0 || fittingGateway() != 0)
            return;
        const std::string subnet = toText({m_Subnet->address & m_Subnet->mask, m_Subnet->mask});
        add(Code::GatewayOutside, {{"gateway", toText(m_Camera.gateway)}, {"subnet", subnet}},
            store(m_Subnet->mask, hostsGateway()));
    }

    /// The one that this host uses in the camera's subnet, or none.
    Address hostsGateway() const {
        for (const Route &route : observation().routes) {
            if (route.gateway != 0 && isInSubnet(route.gateway, *m_Subnet))
                return route.gateway;
        }
        return 0;
    }

    void checkStored() {
        if (!isStatic(m_Camera) || !m_Camera.stored || m_Camera.stored->address == m_Camera.address)
            return;
        Commands remedies = store(m_Camera.mask, m_Camera.gateway);
        const bool hasStored = m_Camera.stored->address != 0;
        if (hasStored)
            remedies.push_back(cameraCommand("restart", m_Camera));
        const std::string stored = hasStored ? toText(m_Camera.stored->address) : "another one";
        add(Code::TemporaryAddress, {{"address", toText(m_Camera.address)}, {"stored", stored}}, std::move(remedies));
    }

    void checkDhcp() {
        if (m_Camera.mode != Mode::Dhcp || !isLinkLocal(m_Camera.address))
            return;
        add(Code::NoDhcpAnswer, {{"address", toText(m_Camera.address)}}, rescue(" --static"),
            m_Subnet ? Severity::Info : Severity::Warning);
    }

    void tellHolder() {
        if (m_Camera.status != Status::InUse)
            return;
        std::string holder;
        Evidence evidence;
        if (m_Camera.holder) {
            const std::optional<Process> &process = m_Camera.holder->process;
            holder = " by " + toText(m_Camera.holder->address) + ":" + std::to_string(m_Camera.holder->port);
            if (process)
                holder += ", program " + process->name + " (process " + std::to_string(process->id) + ") of this host";
            evidence.emplace_back("address", toText(m_Camera.holder->address));
            evidence.emplace_back("port", std::int64_t{m_Camera.holder->port});
        }
        evidence.emplace_back("holder", holder);
        add(Code::InUse, std::move(evidence), {});
    }

    FindingMaker &m_Maker;
    const Owners &m_Owners;
    const Camera &m_Camera;
    const Adapter *m_Adapter = nullptr;       ///< the one whose subnet it is in, else the first it was found through
    const AdapterAddress *m_Subnet = nullptr; ///< the adapter's in which it is; null when it is in none
};

bool differs(const Answer &a, const Answer &b) {
    return a.address != b.address || a.vendor != b.vendor || a.model != b.model || a.serial != b.serial;
}

void addMacFindings(FindingMaker &maker) {
    std::map<std::string, const Answer *> first;
    std::set<std::string> told;
    for (const Answer &answer : maker.observation().answers) {
        const Answer *known = first.emplace(answer.mac, &answer).first->second;
        if (answer.mac.empty() || !differs(*known, answer) || !told.insert(answer.mac).second)
            continue;
        const auto describe = [](const Answer &one) { return one.serial + " at " + toText(one.address); };
        maker.add(Code::DuplicateMac, AllAdapters, answer.mac,
                  {{"first", describe(*known)}, {"second", describe(answer)}}, {});
    }
}

} // namespace

std::string hidingCause(const Observation &o, const Camera &camera) {
    bool isFiltered = false;
    const auto route = o.routeTo.find(camera.address);
    for (const Adapter &adapter : o.adapters) {
        if (std::any_of(adapter.addresses.begin(), adapter.addresses.end(),
                        [&](const AdapterAddress &own) { return own.address == camera.address; }))
            return "address-of-host";
        const bool leadsBack = route != o.routeTo.end() && route->second.adapter == adapter.name;
        const bool isDropping = adapter.rpFilter == 1 ? !leadsBack : adapter.rpFilter == 2 && route == o.routeTo.end();
        isFiltered =
            isFiltered || (isDropping && std::count(camera.adapters.begin(), camera.adapters.end(), adapter.name) != 0);
    }
    if (isFiltered)
        return "answers-filtered";
    return o.overrun > 0 ? "answers-overrun" : "answers-blocked";
}

void addCameraFindings(FindingMaker &maker) {
    addMacFindings(maker);
    const Owners owners = ownersOf(maker.observation().cameras);
    for (const Camera &camera : maker.observation().cameras)
        CameraRules(maker, owners, camera).apply();
}

} // namespace commissioning
