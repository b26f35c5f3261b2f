#pragma once

#include "camsim/Camera.h"

#include "IpCycle.h"
#include "Privilege.h"
#include "RegisterMap.h"
#include "Wire.h"

namespace camsim {

using Bytes = std::vector<std::uint8_t>;

/// What a command led to; the payload belongs to the acknowledge.
struct Outcome {
    GevStatus status = GevStatus::Success;
    Bytes payload;
};

/// A datagram whose header has been read.
struct Command {
    Endpoint source;
    bool broadcast = false;
    std::uint8_t flags = 0;
    std::uint16_t code = 0;
    std::uint16_t id = 0;
    const std::uint8_t *datagram = nullptr; ///< from the header on
    const std::uint8_t *payload = nullptr;
    std::size_t size = 0; ///< of the payload
    bool lengthFits = false;

    /// Whether it changes what survives a power cycle. Only of one that executes.
    bool stores() const;
    bool asksForAck() const { return (flags & GEV_COMMAND_FLAG_ANSWER) != 0; }
    bool allowsBroadcastAck() const { return (flags & GEV_DISCOVERY_COMMAND_FLAG_BROADCAST_ACK) != 0; }
    bool writes() const { return code == TAG_WRITEREG_CMD || code == TAG_WRITEMEM_CMD; }
    std::size_t totalSize() const { return sizeof(GVCP_REQUEST_HEADER) + size; }
};

/// State and behaviour of a camera. Broadcast commands and the IP cycle are in Camera.cpp, the control channel in
/// CameraControl.cpp.
class Camera::Impl {
public:
    Impl(CameraConfig initial, TimePoint now);

    bool hears(Ipv4 destination) const;
    std::vector<Reply> receive(const Request &request, TimePoint now);
    void advance(TimePoint now);
    std::optional<TimePoint> nextDeadline() const;
    void powerCycle(TimePoint now);
    void setHolder(std::optional<Holder> holder, TimePoint now);
    CameraStatus status() const;

    CameraConfig config;
    RegisterMap registers;
    IpCycle ip;

private:
    bool isBroadcast(Ipv4 destination) const;
    std::vector<Reply> handle(const Command &command, TimePoint now);
    std::vector<Reply> discovery(const Command &command);
    std::vector<Reply> forceIp(const Command &command, TimePoint now);
    std::vector<Reply> setIpConfig(const Command &command);
    std::vector<Reply> control(const Command &command, TimePoint now);
    std::vector<Reply> acknowledge(const Command &command, const Outcome &outcome, const IpSettings &from);

    /// Announces an acknowledge that takes a while, and puts it off.
    std::vector<Reply> putOff(const Command &command, std::vector<Reply> replies, std::chrono::milliseconds delay);
    Outcome execute(const Command &command, TimePoint now);
    Outcome readReg(const Command &command) const;
    Outcome writeReg(const Command &command, TimePoint now);
    Outcome readMem(const Command &command) const;
    Outcome writeMem(const Command &command, TimePoint now);
    GevStatus writeWord(const Command &command, std::uint32_t address, std::uint32_t value, TimePoint now);
    GevStatus writeTail(const Command &command, std::uint32_t address, const std::uint8_t *bytes, std::size_t count);
    GevStatus writePrivilege(const Command &command, std::uint32_t value, TimePoint now);
    std::uint32_t filtered(std::uint32_t address, std::uint32_t value) const;
    void controlTimestamp(std::uint32_t value, TimePoint now);
    bool countFits(std::size_t count) const;
    bool concatenates() const { return (config.capabilities & GEV_CAPABILITY_CONCATENATION) != 0; }

    GevStatus storeIpConfig(const _GVCP_SETIPCONFIG_REQUEST &record);
    void take(const IpSettings &settings);
    void restartIp(TimePoint now);
    IpSources sources() const;
    void dropControl(TimePoint now);
    void showHolder();
    std::optional<TimePoint> heartbeatExpiry() const;

    /// The last executed write, to recognise a re-send of it.
    struct LastWrite {
        Endpoint source;
        Bytes datagram;
        Outcome outcome;
        TimePoint done; ///< the time of its acknowledge

        bool isRepeatedBy(const Command &command) const {
            return command.source == source && std::equal(command.datagram, command.datagram + command.totalSize(),
                                                          datagram.begin(), datagram.end());
        }
    };

    Privilege privilege_;
    TimePoint timestampZero_; ///< of the device's clock
    std::uint64_t ignoredRestarts_ = 0;
    std::optional<LastWrite> lastWrite_;
    std::map<std::uint16_t, std::uint64_t> requests_;
    std::uint64_t acknowledges_ = 0;
};

} // namespace camsim
