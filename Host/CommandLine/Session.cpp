#include "Session.h"

#include "MinimalCorvo/TraceLog.h"
#include "MinimalCorvoGigETL/TlFactory.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Selection.h"
#include "commissioning/TakenAddresses.h"

#include <algorithm>
#include <cmath>

using namespace commissioning;

namespace commandline {

namespace {

Corvo::IGigETransportLayer &createLayer() {
    auto *layer = dynamic_cast<Corvo::IGigETransportLayer *>(Corvo::CTlFactory::GetInstance().CreateTl("QuorelGigE"));
    if (!layer)
        throw std::runtime_error("Failed to create transport layer object");
    return *layer;
}

bool contains(const std::vector<std::string> &names, const std::string &name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Without what is about other adapters.
void limitTo(const std::vector<std::string> &adapters, Inventory *pInventory) {
    if (adapters.empty())
        return;
    const auto isElsewhere = [&](const std::string &name) { return !contains(adapters, name); };
    const auto drop = [](auto &values, auto &&predicate) {
        values.erase(std::remove_if(values.begin(), values.end(), predicate), values.end());
    };
    drop(pInventory->adapters, [&](const Adapter &adapter) { return isElsewhere(adapter.name); });
    drop(pInventory->cameras, [&](const Camera &camera) {
        return std::all_of(camera.adapters.begin(), camera.adapters.end(), isElsewhere);
    });
    drop(pInventory->findings, [&](const Finding &finding) {
        const auto isOfCamera = [&](const Camera &camera) { return camera.mac == finding.camera; };
        const auto &cameras = pInventory->cameras;
        return finding.camera.empty() ? !finding.adapter.empty() && isElsewhere(finding.adapter)
                                      : std::none_of(cameras.begin(), cameras.end(), isOfCamera);
    });
}

} // namespace

Session::Session(const Arguments &arguments, const Terminal &terminal, Interruption &interruption)
    : m_Arguments(arguments), m_Terminal(terminal), m_Interruption(interruption),
      m_Interaction(terminal, interruption,
                    [this](const std::string &mac, const std::string &adapter) { return freeAddress(mac, adapter); }),
      m_Layer(createLayer()) {}

Session::~Session() {
    m_Connection.close();
    Corvo::CTlFactory::GetInstance().ReleaseTl(&m_Layer);
}

void Session::search(DiagnosisOptions options) {
    m_Terminal.progress("Searching for cameras...");
    options.measuresQuiet = m_Arguments.command == Command::Doctor || m_Arguments.command == Command::Report;
    options.search.ask = m_Arguments.ask;
    std::size_t count = 0;
    std::size_t judged = 0;
    options.search.found = [&](const Corvo::DeviceInfoList &devices) { count = devices.size(); };
    options.search.judged = [&, told = options.search.judged](const Corvo::CDeviceInfo &device) {
        if (told)
            told(device);
        m_Terminal.progress(std::to_string(++judged) + " of " + std::to_string(count) + " cameras asked...");
    };
    const Gx::CStopScope stoppable(&m_Interruption.token());
    m_Diagnosis = diagnose(m_Layer, options);
    m_Inventory = inventoryOf(m_Diagnosis);
    for (const std::string &name : m_Arguments.adapters) {
        const auto isNamed = [&](const Adapter &adapter) { return adapter.name == name; };
        if (std::none_of(m_Inventory.adapters.begin(), m_Inventory.adapters.end(), isNamed))
            throw std::invalid_argument("There is no adapter " + name + ".");
    }
    limitTo(m_Arguments.adapters, &m_Inventory);
    m_Terminal.progress("");
}

Corvo::CQuorelGigEDeviceInfo Session::deviceOf(const std::string &mac) {
    if (const Corvo::CDeviceInfo *known = findByMac(m_Diagnosis.devices, mac))
        return *known;
    for (const Camera &camera : m_Diagnosis.observation.cameras) {
        if (camera.mac == mac)
            return infoOf(camera);
    }
    Corvo::CQuorelGigEDeviceInfo device;
    device.SetMacAddress(mac.c_str());
    return device;
}

const Adapter *Session::adapterOf(const Camera &camera, Address wanted) const {
    return commissioning::adapterOf(camera, m_Inventory, wanted);
}

std::map<Address, std::string> Session::findTaken(const PlanReview &review) {
    m_Terminal.progress("Looking whether the new addresses are free...");
    std::set<Address> free;
    auto taken = commissioning::findTaken(review, inventoryOf(m_Diagnosis), &free,
                                          [this] { return m_Interruption.isRequested(); });
    m_Terminal.progress("");
    if (m_Interruption.isRequested())
        throw Cancelled();
    return taken;
}

FreeAddresses &Session::freeAddresses() {
    if (!m_FreeAddresses) {
        m_FreeAddresses.emplace(inventoryOf(m_Diagnosis));
        m_FreeAddresses->exclude(m_Arguments.address.value_or(0));
    }
    return *m_FreeAddresses;
}

std::optional<TemporaryAddress> Session::freeAddress(const std::string &mac, const std::string &adapterName) {
    for (const Adapter &adapter : m_Inventory.adapters) {
        const AdapterAddress *subnet = homeSubnet(adapter);
        if (adapter.name != adapterName || !subnet)
            continue;
        const auto found = freeAddresses().take(adapter, *subnet, {0}, [this] { return m_Interruption.isRequested(); });
        if (found.front())
            return TemporaryAddress{mac, *found.front(), subnet->mask, 0};
    }
    return std::nullopt;
}

AddressSurroundings Session::surroundingsOf(const Camera &camera, Address wanted) {
    AddressSurroundings around = surroundingsOn(m_Diagnosis.observation.adapters, adapterOf(camera, wanted));
    around.devices = &m_Diagnosis.devices;
    const auto &cameras = m_Diagnosis.observation.cameras;
    std::copy_if(cameras.begin(), cameras.end(), std::back_inserter(around.hidden),
                 [](const Camera &one) { return one.hidden; });
    return around;
}

Context Session::context() {
    static const unsigned long category = tracelog::LogGetCatID("Lanvane.Ctl");
    Context context{m_Layer, m_Diagnosis.devices, m_Connection, m_Interaction, Tracer(category), {}};
    const double rounds = std::ceil(m_Arguments.timeout_s * 1000 / static_cast<double>(context.patience.pause.count()));
    context.patience.rounds = static_cast<int>(rounds);
    context.journal = &m_Journal;
    return context;
}

} // namespace commandline
