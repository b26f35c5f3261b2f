#include "camsim/Simulator.h"

#include "FaultInjector.h"
#include "GatewayRoutes.h"
#include "GvcpSocket.h"
#include "InterfaceAddresses.h"
#include "JobQueue.h"
#include "Wire.h"

#include <poll.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <deque>
#include <future>
#include <map>
#include <random>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace camsim {
namespace {

constexpr std::chrono::milliseconds maxHoldBack{50};

std::uint64_t drawSeed() {
    std::random_device device;
    return (std::uint64_t{device()} << 32 | device()) | 1u; // 0 would mean "draw one"
}

template <typename Record>
std::uint16_t headerField(const std::vector<std::uint8_t> &bytes, std::uint16_t Record::*field) {
    return bytes.size() < sizeof(Record) ? std::uint16_t{0} : ntohs(loadRecord<Record>(bytes.data()).*field);
}

void blockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

} // namespace

std::uint16_t ReceivedRequest::command() const { return headerField(bytes, &GVCP_REQUEST_HEADER::Command); }
std::uint16_t ReceivedRequest::requestId() const { return headerField(bytes, &GVCP_REQUEST_HEADER::ReqId); }
bool ReceivedRequest::isBroadcast() const { return destination == Ipv4::limitedBroadcast(); }

/// All members but the queue, the thread, the port and the stop flag belong to whoever runs inside queue.call() or to
/// the thread.
class Simulator::Impl {
public:
    explicit Impl(SimulatorOptions given);

    struct Entry {
        Entry(const CameraConfig &config, const FaultConfig &faultConfig, TimePoint now)
            : camera(config, now), faults{faultConfig} {}
        Camera camera;
        FaultState faults;
        std::optional<IpSettings> address; ///< what the interface has for the camera
    };

    void start();
    void stop() noexcept;
    void add(const std::vector<CameraConfig> &configs);
    void remove(const MacAddress &mac);
    Entry &find(const MacAddress &mac);
    /// Changes a camera and brings its address up to date.
    template <typename Change> void change(const MacAddress &mac, Change change) {
        Entry &entry = find(mac);
        change(entry.camera, now());
        updateAddresses({&entry});
    }

    static TimePoint now() { return std::chrono::steady_clock::now(); }

    SimulatorOptions options;
    JobQueue queue;
    FaultInjector faults;
    FaultConfig defaultFaults;
    std::vector<std::unique_ptr<Entry>> entries;
    std::deque<ReceivedRequest> requests;
    TrafficCounters counters;
    std::atomic<std::uint16_t> port;
    std::atomic<bool> running{false};

private:
    void runThread(std::promise<void> started);
    void open();
    void close();
    void loop();
    int pollTimeout() const;
    void advance(TimePoint time);
    void receive(const Request &request, TimePoint time);
    void deliver(Entry &entry, const Request &request, std::uint16_t code, TimePoint time);
    void updateAddresses(const std::vector<Entry *> &changed);
    void tryUpdateAddresses(const std::vector<Entry *> &changed);
    void changeAddresses(const std::vector<IpSettings> &gone, const std::vector<IpSettings> &added);
    void disown(Entry &entry);
    void queueReply(Outgoing item);
    void post(Reply reply);
    void releaseDelayed(TimePoint time);
    void flush();

    std::multimap<Ipv4, Entry *> owners_;
    std::multimap<TimePoint, Outgoing> delayed_;
    std::vector<Outgoing> heldBack_;
    std::vector<OutgoingDatagram> outbox_;

    std::optional<Netlink> netlink_;
    std::optional<InterfaceAddresses> addresses_;
    std::optional<GatewayRoutes> gateways_;
    std::optional<GvcpSocket> socket_;
    std::thread thread_;
    std::mutex startStop_; ///< one start() or stop() at a time; taken before the queue's
    std::atomic<bool> stopping_{false};
};

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

void Simulator::Impl::start() {
    const std::lock_guard lock(startStop_);
    if (thread_.joinable())
        throw std::logic_error("the simulator runs already");
    stopping_ = false;
    queue.open();
    std::promise<void> promise;
    auto started = promise.get_future();
    thread_ = std::thread(&Impl::runThread, this, std::move(promise));
    try {
        started.get();
    } catch (...) {
        thread_.join();
        throw;
    }
}

void Simulator::Impl::stop() noexcept {
    const std::lock_guard lock(startStop_);
    if (!thread_.joinable())
        return;
    stopping_ = true;
    queue.wake();
    thread_.join();
}

void Simulator::Impl::runThread(std::promise<void> started) {
    blockSignals();
    try {
        open();
        running = true;
        started.set_value();
        loop();
    } catch (...) {
        if (!running)
            started.set_exception(std::current_exception());
    }
    running = false;
    close();
    queue.close();
}

void Simulator::Impl::open() {
    if (options.networkNamespace >= 0 && setns(options.networkNamespace, CLONE_NEWNET) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot enter the network namespace");
    const bool managed = options.mode == AddressMode::Managed;
    if (managed) {
        netlink_.emplace();
        addresses_.emplace(*netlink_, options.interface);
        gateways_.emplace(*netlink_, addresses_->index());
    }
    socket_.emplace(GvcpSocket::Settings{options.interface, managed, options.port});
    port = socket_->port();
    std::vector<Entry *> all;
    for (const auto &entry : entries)
        all.push_back(entry.get());
    advance(now());
    updateAddresses(all);
}

void Simulator::Impl::close() {
    delayed_.clear();
    heldBack_.clear();
    outbox_.clear();
    owners_.clear();
    for (const auto &entry : entries)
        entry->address.reset();
    socket_.reset();
    gateways_.reset();
    addresses_.reset();
    netlink_.reset();
}

int Simulator::Impl::pollTimeout() const {
    auto next = TimePoint::max();
    for (const auto &entry : entries)
        if (const auto deadline = entry->camera.nextDeadline())
            next = std::min(next, *deadline);
    if (!delayed_.empty())
        next = std::min(next, delayed_.begin()->first);
    for (const Outgoing &held : heldBack_)
        next = std::min(next, held.due + maxHoldBack);
    if (next == TimePoint::max())
        return -1;
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(next - now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(wait, 0, 60000));
}

void Simulator::Impl::loop() {
    pollfd events[] = {{socket_->fd(), POLLIN, 0}, {queue.event(), POLLIN, 0}};
    while (!stopping_) {
        (void)poll(events, std::size(events), pollTimeout());
        queue.runAll();
        const TimePoint time = now();
        advance(time);
        counters.received += socket_->receive([this](const Request &request) { receive(request, now()); });
        releaseDelayed(now());
        flush();
    }
}

void Simulator::Impl::advance(TimePoint time) {
    std::vector<Entry *> changed;
    for (const auto &entry : entries) {
        const auto deadline = entry->camera.nextDeadline();
        if (!deadline || *deadline > time)
            continue;
        entry->camera.advance(time);
        changed.push_back(entry.get());
    }
    tryUpdateAddresses(changed);
}

void Simulator::Impl::receive(const Request &request, TimePoint time) {
    requests.push_back({time, request.source, request.destination, {request.data, request.data + request.size}});
    if (requests.size() > options.requestLogSize)
        requests.pop_front();
    const std::uint16_t code = request.size < sizeof(GVCP_REQUEST_HEADER)
                                   ? std::uint16_t{0}
                                   : ntohs(loadRecord<GVCP_REQUEST_HEADER>(request.data).Command);
    if (const auto owner = owners_.find(request.destination); owner != owners_.end())
        deliver(*owner->second, request, code, time);
    else
        for (const auto &entry : entries)
            deliver(*entry, request, code, time);
}

void Simulator::Impl::deliver(Entry &entry, const Request &request, std::uint16_t code, TimePoint time) {
    if (!entry.camera.hears(request))
        return;
    const CommandFate fate = faults.command(entry.faults, code);
    if (fate.lost)
        return;
    const std::optional<IpSettings> before = entry.address;
    std::vector<Outgoing> outgoing;
    for (Reply &reply : entry.camera.receive(request, time))
        faults.acknowledge(entry.faults, fate, std::move(reply), time, outgoing);
    const bool moves = entry.camera.current() != before;
    for (Outgoing &item : outgoing)
        if (!moves || (before && item.reply.source == before->address))
            queueReply(item);
    if (!moves)
        return;
    flush(); // while the old address is still there
    tryUpdateAddresses({&entry});
    for (Outgoing &item : outgoing)
        if (!before || item.reply.source != before->address)
            queueReply(item);
}

void Simulator::Impl::queueReply(Outgoing item) {
    if (item.due > now()) {
        delayed_.emplace(item.due, std::move(item));
        return;
    }
    if (item.heldBack) {
        heldBack_.push_back(std::move(item));
        return;
    }
    post(std::move(item.reply));
    for (Outgoing &held : std::exchange(heldBack_, {}))
        post(std::move(held.reply));
}

void Simulator::Impl::post(Reply reply) {
    try {
        const std::uint32_t mark = reply.gateway && gateways_ ? gateways_->mark(reply.gateway) : 0;
        outbox_.push_back({std::move(reply), mark});
    } catch (const std::system_error &) {
        ++counters.sendFailures; // no route over that gateway
    }
}

void Simulator::Impl::releaseDelayed(TimePoint time) {
    while (!delayed_.empty() && delayed_.begin()->first <= time)
        queueReply(std::move(delayed_.extract(delayed_.begin()).mapped()));
    const auto expired = [time](const Outgoing &held) { return held.due + maxHoldBack <= time; };
    if (std::any_of(heldBack_.begin(), heldBack_.end(), expired))
        for (Outgoing &held : std::exchange(heldBack_, {}))
            post(std::move(held.reply));
}

void Simulator::Impl::flush() {
    if (outbox_.empty())
        return;
    const std::size_t refused = socket_->send(outbox_);
    counters.sendFailures += refused;
    counters.sent += outbox_.size() - refused;
    outbox_.clear();
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
