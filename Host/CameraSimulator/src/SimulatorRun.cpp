// The simulator's thread: from the socket to the cameras and back.

#include "SimulatorImpl.h"
#include "Wire.h"

#include <poll.h>
#include <sched.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

namespace camsim {
namespace {

constexpr std::chrono::milliseconds maxHoldBack{50};

void blockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

} // namespace

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
    const CommandFate fate = faults.command(entry.faults, code, time);
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

} // namespace camsim
