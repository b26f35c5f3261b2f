#pragma once

#include "camsim/Simulator.h"

#include "FaultInjector.h"
#include "GatewayRoutes.h"
#include "GvcpSocket.h"
#include "InterfaceAddresses.h"
#include "JobQueue.h"

#include <atomic>
#include <deque>
#include <future>
#include <map>
#include <mutex>
#include <thread>

namespace camsim {

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

} // namespace camsim
