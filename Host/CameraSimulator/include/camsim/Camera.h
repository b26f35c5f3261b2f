#pragma once

#include "camsim/CameraConfig.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace camsim {

using TimePoint = std::chrono::steady_clock::time_point;

/// A datagram on its way to a camera. The bytes are not owned and need no alignment.
struct Request {
    Endpoint source;
    Ipv4 destination; ///< as in the IP header
    const std::uint8_t *data = nullptr;
    std::size_t size = 0;
};

/// A datagram that a camera sends.
struct Reply {
    Endpoint destination; ///< the requester, or 255.255.255.255 with the requester's port
    Ipv4 source;
    Ipv4 gateway; ///< the router the datagram has to take; 0.0.0.0 when the destination is on the camera's link
    std::vector<std::uint8_t> bytes;
    std::chrono::milliseconds delay{0}; ///< until the camera sends it
};

/// A camera's state at one moment.
struct CameraStatus {
    std::optional<IpSettings> current; ///< none while the IP cycle runs
    IpSettings persistent;
    std::uint32_t ipEnabled = 0; ///< register 0x0014
    std::string userName;
    std::optional<Holder> holder; ///< who holds the control channel privilege
    bool reachable = true;
    unsigned ipCycles = 0;                           ///< power cycles and restarts of the IP configuration
    std::map<std::uint16_t, std::uint64_t> requests; ///< commands that reached the camera, by command code
    std::uint64_t acknowledges = 0;                  ///< acknowledges the camera gave, before any fault
};

/// The protocol side of one GigE Vision camera: datagrams and time go in, datagrams come out.
///
/// It knows no socket and no clock: the caller passes the time, which must not run backwards, calls advance() at
/// nextDeadline() at the latest, and gives the camera's current() address to its interface. Not thread-safe.
///
/// Behaviour where the GigE Vision standard leaves room:
/// - A command with a wrong key byte or shorter than its header is ignored. A length field that does not fit the
///   datagram gives 0x800E on the control channel and silence for the connectionless commands.
/// - WRITEREG and WRITEMEM repeated with the same bytes by the same requester are a re-send: they are acknowledged
/// again
///   with the first result and not executed again. Reads are simply executed again.
/// - FORCEIP to 0.0.0.0 is never acknowledged. It gives control back, as does a FORCEIP that changes the address.
/// - FORCEIP and SETIPCONFIG with an address that no host can have are answered with 0x8002 and change nothing.
/// - Link-local is the last resort of the IP cycle even when it is not enabled; the standard makes it mandatory.
/// - A heartbeat timeout below 500 ms is stored as 500 ms.
class Camera {
public:
    /// Throws std::invalid_argument naming the camera and the member when the configuration is wrong.
    Camera(CameraConfig config, TimePoint now);
    Camera(Camera &&) noexcept;
    Camera &operator=(Camera &&) noexcept;
    ~Camera();

    /// Whether the camera has an address and the datagram is sent to it or is a broadcast that includes it.
    bool hears(const Request &request) const;
    /// Handles one datagram that arrived on the camera's link; the camera itself tells whether it is meant.
    /// The replies' addresses are those before or after a change of address, whichever they are sent from.
    std::vector<Reply> receive(const Request &request, TimePoint now);
    /// Does what is due: end of the IP cycle, expiry of the heartbeat.
    void advance(TimePoint now);
    std::optional<TimePoint> nextDeadline() const;

    void powerCycle(TimePoint now);
    void setReachable(bool reachable);
    void setHolder(std::optional<Holder> holder, TimePoint now);

    const MacAddress &mac() const;
    const std::optional<IpSettings> &current() const; ///< none while the IP cycle runs
    CameraStatus status() const;
    /// Device memory, privilege not considered. Throw std::out_of_range where the camera has none.
    std::vector<std::uint8_t> readMemory(std::uint32_t address, std::size_t count) const;
    void writeMemory(std::uint32_t address, const std::vector<std::uint8_t> &bytes);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace camsim
