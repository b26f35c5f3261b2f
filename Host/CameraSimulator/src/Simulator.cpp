#include "SimulatorImpl.h"
#include "Wire.h"

#include <algorithm>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace camsim {
namespace {

std::uint64_t drawSeed() {
    std::random_device device;
    return (std::uint64_t{device()} << 32 | device()) | 1u; // 0 would mean "draw one"
}

template <typename Record>
std::uint16_t headerField(const std::vector<std::uint8_t> &bytes, std::uint16_t Record::*field) {
    return bytes.size() < sizeof(Record) ? std::uint16_t{0} : ntohs(loadRecord<Record>(bytes.data()).*field);
}

} // namespace

std::uint16_t ReceivedRequest::command() const { return headerField(bytes, &GVCP_REQUEST_HEADER::Command); }
std::uint16_t ReceivedRequest::requestId() const { return headerField(bytes, &GVCP_REQUEST_HEADER::ReqId); }
bool ReceivedRequest::isBroadcast() const { return destination == Ipv4::limitedBroadcast(); }

Simulator::Impl::Impl(SimulatorOptions given) : options(std::move(given)), faults(0), port(options.port) {
    if (options.mode == AddressMode::Managed && options.port == 0)
        throw std::invalid_argument("a simulator that manages addresses needs a fixed UDP port");
    if (options.interface.empty())
        throw std::invalid_argument("a simulator needs the name of a network interface");
    if (options.seed == 0)
        options.seed = drawSeed();
    faults = FaultInjector(options.seed);
}

Simulator::Impl::Entry &Simulator::Impl::find(const MacAddress &mac) {
    for (const auto &entry : entries)
        if (entry->camera.mac() == mac)
            return *entry;
    throw std::out_of_range("there is no camera " + mac.toString());
}

void Simulator::Impl::add(const std::vector<CameraConfig> &configs) {
    std::map<MacAddress, bool> taken;
    for (const auto &entry : entries)
        taken[entry->camera.mac()] = true;
    std::vector<std::unique_ptr<Entry>> added;
    std::vector<Entry *> changed;
    for (const CameraConfig &config : configs) {
        if (!taken.emplace(config.mac, true).second)
            throw std::invalid_argument("there are two cameras " + config.mac.toString());
        added.push_back(std::make_unique<Entry>(config, defaultFaults, now()));
        changed.push_back(added.back().get());
    }
    std::move(added.begin(), added.end(), std::back_inserter(entries));
    try {
        updateAddresses(changed);
    } catch (const std::system_error &) {
        for (const CameraConfig &config : configs)
            remove(config.mac);
        throw;
    }
}

void Simulator::Impl::remove(const MacAddress &mac) {
    Entry &entry = find(mac);
    disown(entry);
    if (entry.address)
        changeAddresses({*entry.address}, {});
    entries.erase(std::find_if(entries.begin(), entries.end(), [&](const auto &e) { return e.get() == &entry; }));
}

void Simulator::Impl::disown(Entry &entry) {
    if (!entry.address)
        return;
    const auto [first, last] = owners_.equal_range(entry.address->address);
    const auto own = std::find_if(first, last, [&](const auto &owner) { return owner.second == &entry; });
    if (own != last)
        owners_.erase(own);
}

void Simulator::Impl::updateAddresses(const std::vector<Entry *> &changed) {
    if (!socket_)
        return; // start() brings all addresses up to date
    std::vector<IpSettings> gone;
    std::vector<IpSettings> added;
    for (Entry *entry : changed) {
        const auto &current = entry->camera.current();
        if (current == entry->address)
            continue;
        disown(*entry);
        if (entry->address)
            gone.push_back(*entry->address);
        if (current) {
            added.push_back(*current);
            owners_.emplace(current->address, entry);
        }
        entry->address = current;
    }
    changeAddresses(gone, added);
}

void Simulator::Impl::changeAddresses(const std::vector<IpSettings> &gone, const std::vector<IpSettings> &added) {
    if (!addresses_ || (gone.empty() && added.empty()))
        return;
    if (!gone.empty())
        gateways_->renew();
    addresses_->change(gone, added);
}

/// For changes that a command or time brought about: there is nobody to tell, the camera just cannot be reached.
void Simulator::Impl::tryUpdateAddresses(const std::vector<Entry *> &changed) {
    try {
        updateAddresses(changed);
    } catch (const std::system_error &) {
        ++counters.addressFailures;
    }
}

Simulator::Simulator(SimulatorOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}
Simulator::~Simulator() { impl_->stop(); }

void Simulator::addCamera(const CameraConfig &config) { addCameras({config}); }

void Simulator::addCameras(const std::vector<CameraConfig> &configs) {
    impl_->queue.call([&] { impl_->add(configs); });
}

void Simulator::removeCamera(const MacAddress &mac) {
    impl_->queue.call([&] { impl_->remove(mac); });
}

void Simulator::start() { impl_->start(); }
void Simulator::stop() noexcept { impl_->stop(); }
bool Simulator::running() const { return impl_->running; }
std::uint16_t Simulator::port() const { return impl_->port; }
std::uint64_t Simulator::seed() const { return impl_->options.seed; }

std::vector<MacAddress> Simulator::cameras() const {
    return impl_->queue.call([this] {
        std::vector<MacAddress> macs;
        for (const auto &entry : impl_->entries)
            macs.push_back(entry->camera.mac());
        return macs;
    });
}

CameraStatus Simulator::status(const MacAddress &mac) const {
    return impl_->queue.call([&] { return impl_->find(mac).camera.status(); });
}

std::uint32_t Simulator::readRegister(const MacAddress &mac, std::uint32_t address) const {
    return load32(readMemory(mac, address, 4).data());
}

std::vector<std::uint8_t> Simulator::readMemory(const MacAddress &mac, std::uint32_t address, std::size_t count) const {
    return impl_->queue.call([&] { return impl_->find(mac).camera.readMemory(address, count); });
}

void Simulator::writeRegister(const MacAddress &mac, std::uint32_t address, std::uint32_t value) {
    std::vector<std::uint8_t> bytes;
    append32(bytes, value);
    impl_->queue.call([&] { impl_->find(mac).camera.writeMemory(address, bytes); });
}

void Simulator::powerCycle(const MacAddress &mac) {
    impl_->queue.call([&] { impl_->change(mac, [](Camera &camera, TimePoint now) { camera.powerCycle(now); }); });
}

void Simulator::setReachable(const MacAddress &mac, bool reachable) {
    impl_->queue.call([&] { impl_->find(mac).camera.setReachable(reachable); });
}

void Simulator::setHolder(const MacAddress &mac, std::optional<Holder> holder) {
    impl_->queue.call([&] { impl_->find(mac).camera.setHolder(holder, Impl::now()); });
}

void Simulator::setFaults(const MacAddress &mac, const FaultConfig &faults) {
    faults.check();
    impl_->queue.call([&] { impl_->find(mac).faults = {faults}; });
}

void Simulator::setFaults(const FaultConfig &faults) {
    faults.check();
    impl_->queue.call([&] {
        impl_->defaultFaults = faults;
        for (const auto &entry : impl_->entries)
            entry->faults = {faults};
    });
}

std::vector<ReceivedRequest> Simulator::requests() const {
    return impl_->queue.call(
        [this] { return std::vector<ReceivedRequest>(impl_->requests.begin(), impl_->requests.end()); });
}

void Simulator::clearRequests() {
    impl_->queue.call([this] { impl_->requests.clear(); });
}

TrafficCounters Simulator::counters() const {
    return impl_->queue.call([this] {
        TrafficCounters counters = impl_->counters;
        counters.faults = impl_->faults.applied();
        return counters;
    });
}

} // namespace camsim
