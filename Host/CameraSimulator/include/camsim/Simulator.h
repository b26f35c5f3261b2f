#pragma once

#include "camsim/Camera.h"
#include "camsim/FaultConfig.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace camsim {

enum class AddressMode {
    /// The cameras' addresses are really set on the interface over rtnetlink and removed at the end; GVCP_PORT.
    /// Needs CAP_NET_ADMIN in the interface's network namespace.
    Managed,
    /// Addresses are only used as source and destination; for the loopback network 127.0.0.0/8, without privileges.
    Unmanaged
};

struct SimulatorOptions {
    std::string interface = "lo"; ///< The one interface that all cameras of this simulator are attached to.
    AddressMode mode = AddressMode::Unmanaged;
    std::uint16_t port = GVCP_PORT; ///< UDP port of the cameras; 0 (unmanaged only) lets the kernel choose.
    /// Open file of a network namespace (/proc/PID/ns/net) that the simulator's thread enters; -1 stays in that of the
    /// process. Needs CAP_SYS_ADMIN there. Not owned; must stay open until start() has returned.
    int networkNamespace = -1;
    std::uint64_t seed = 0;             ///< of the faults; 0 draws one, see Simulator::seed()
    std::size_t requestLogSize = 10000; ///< Commands kept for requests(); the oldest are dropped first.
};

/// A datagram as it arrived at the simulator's socket, before any fault.
struct ReceivedRequest {
    std::chrono::steady_clock::time_point time;
    Endpoint source;
    Ipv4 destination; ///< as in the IP header: a camera's address, a subnet's broadcast or 255.255.255.255
    std::vector<std::uint8_t> bytes;

    std::uint16_t command() const; ///< Command code, 0 when the datagram is shorter than a header.
    std::uint16_t requestId() const;
    bool isBroadcast() const; ///< Sent to 255.255.255.255; directed broadcasts are known only to the cameras.
};

/// Traffic totals of the interface.
struct TrafficCounters {
    std::uint64_t received = 0;        ///< datagrams read from the socket
    std::uint64_t sent = 0;            ///< datagrams handed to the kernel
    std::uint64_t sendFailures = 0;    ///< datagrams the kernel refused, for instance for lack of a route
    std::uint64_t addressFailures = 0; ///< addresses that cameras came to but that could not be set on the interface
    std::uint64_t faults = 0;          ///< faults that were applied
};

/// Cameras on one network interface: one socket and one thread for all of them.
///
/// All operations may be called from any thread, before, during and after the run. While the simulator runs they are
/// executed on its thread and have taken full effect, addresses on the interface included, when they return.
/// Operations that name a camera throw std::out_of_range when there is none with that MAC. Failures of the system
/// throw std::system_error whose text names what was attempted on which interface.
///
/// Two cameras may have the same IP address, as in the field; unicast commands then reach the one that had it first.
class Simulator {
public:
    /// Starts nothing. Throws std::invalid_argument when options contradict each other.
    explicit Simulator(SimulatorOptions options);
    ~Simulator(); ///< stop()
    Simulator(const Simulator &) = delete;
    Simulator &operator=(const Simulator &) = delete;

    /// Throws std::invalid_argument when the configuration is wrong (CameraConfig's limits) or the MAC is taken.
    void addCamera(const CameraConfig &config);
    void addCameras(const std::vector<CameraConfig> &configs); ///< all or none; much faster than one by one
    void removeCamera(const MacAddress &mac); ///< It is gone without a word, as when its cable is pulled.

    /// Returns when the cameras have their addresses and answer.
    void start();
    /// Removes the addresses that were added and ends the thread; a second call does nothing. State and logs stay
    /// readable.
    void stop() noexcept;
    bool running() const;
    std::uint16_t port() const; ///< The UDP port in use; the requested one before start().
    std::uint64_t seed() const; ///< The seed of the fault generator in use.

    std::vector<MacAddress> cameras() const; ///< in the order they were added
    CameraStatus status(const MacAddress &mac) const;
    /// Device memory as the wire would show it, privilege not considered. Throws std::out_of_range when nothing is
    /// there.
    std::uint32_t readRegister(const MacAddress &mac, std::uint32_t address) const;
    std::vector<std::uint8_t> readMemory(const MacAddress &mac, std::uint32_t address, std::size_t count) const;
    /// Changes device memory from inside the camera, read-only registers included.
    void writeRegister(const MacAddress &mac, std::uint32_t address, std::uint32_t value);

    /// Loses control, temporary addresses and volatile registers, then runs the IP cycle.
    void powerCycle(const MacAddress &mac);
    void setReachable(const MacAddress &mac, bool reachable);
    /// Gives the privilege to an application or takes it away.
    void setHolder(const MacAddress &mac, std::optional<Holder> holder);
    /// Replaces the faults of one camera or of all present and future cameras. Counts start anew, the generator goes
    /// on.
    void setFaults(const MacAddress &mac, const FaultConfig &faults);
    void setFaults(const FaultConfig &faults);

    std::vector<ReceivedRequest> requests() const; ///< the last commands received, oldest first
    void clearRequests();
    TrafficCounters counters() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace camsim
