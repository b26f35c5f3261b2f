#include "camsim/Camera.h"

#include "IpCycle.h"
#include "Privilege.h"
#include "RegisterMap.h"
#include "Wire.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace camsim {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t headerSize = sizeof(GVCP_REQUEST_HEADER);
constexpr std::size_t maxMemoryCount = GVCP_MAX_PAYLOAD - 4; // the address precedes the data
constexpr std::uint32_t minHeartbeatTimeout = 500;           // ms
constexpr std::uint32_t primaryApplicationPort = 0x0A04;
constexpr std::uint32_t primaryApplicationAddress = 0x0A14;

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

    bool asksForAck() const { return (flags & GEV_COMMAND_FLAG_ANSWER) != 0; }
    bool allowsBroadcastAck() const { return (flags & GEV_DISCOVERY_COMMAND_FLAG_BROADCAST_ACK) != 0; }
    bool writes() const { return code == TAG_WRITEREG_CMD || code == TAG_WRITEMEM_CMD; }
    std::size_t totalSize() const { return headerSize + size; }
};

std::optional<Command> readHeader(const Request &request) {
    if (request.size < headerSize)
        return std::nullopt;
    const auto header = loadRecord<GVCP_REQUEST_HEADER>(request.data);
    if (header.FortyTwo != GVCP_KEY)
        return std::nullopt;
    Command command;
    command.source = request.source;
    command.flags = header.Flags;
    command.code = ntohs(header.Command);
    command.id = ntohs(header.ReqId);
    command.datagram = request.data;
    command.payload = request.data + headerSize;
    command.size = request.size - headerSize;
    command.lengthFits = ntohs(header.Length) == command.size;
    return command;
}

/// Payload of WRITEREG_ACK and WRITEMEM_ACK.
Bytes writeIndex(std::size_t index) {
    Bytes payload;
    append32(payload, static_cast<std::uint32_t>(index));
    return payload;
}

std::string checkedName(const CameraConfig &config) { return "camera " + config.mac.toString() + ": "; }

} // namespace

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

    Outcome execute(const Command &command, TimePoint now);
    Outcome readReg(const Command &command) const;
    Outcome writeReg(const Command &command, TimePoint now);
    Outcome readMem(const Command &command) const;
    Outcome writeMem(const Command &command, TimePoint now);
    GevStatus writeWord(const Command &command, std::uint32_t address, std::uint32_t value, TimePoint now);
    GevStatus writeTail(const Command &command, std::uint32_t address, const std::uint8_t *bytes, std::size_t count);
    GevStatus writePrivilege(const Command &command, std::uint32_t value, TimePoint now);
    std::uint32_t filtered(std::uint32_t address, std::uint32_t value) const;
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

        bool isRepeatedBy(const Command &command) const {
            return command.source == source && std::equal(command.datagram, command.datagram + command.totalSize(),
                                                          datagram.begin(), datagram.end());
        }
    };

    Privilege privilege_;
    std::optional<LastWrite> lastWrite_;
    std::map<std::uint16_t, std::uint64_t> requests_;
    std::uint64_t acknowledges_ = 0;
};

Camera::Impl::Impl(CameraConfig initial, TimePoint now)
    : config(std::move(initial)), registers(config), ip(config.restartSilence) {
    if (config.bootedAtStart)
        take(config.forced ? *config.forced : sources().choose());
    else
        restartIp(now);
    setHolder(config.heldBy, now);
}

IpSources Camera::Impl::sources() const {
    return {registers.get(GEV_REG_NETWORK_INTERFACE_CONFIGURATION), registers.persistent(), config.dhcpLease,
            config.linkLocal.value_or(linkLocalOf(config.mac))};
}

void Camera::Impl::take(const IpSettings &settings) {
    ip.take(settings);
    registers.setCurrent(settings);
}

void Camera::Impl::restartIp(TimePoint now) {
    dropControl(now);
    ip.restart(now);
    registers.setCurrent({});
}

void Camera::Impl::dropControl(TimePoint now) {
    setHolder(std::nullopt, now);
    registers.set(GEV_REG_MESSAGE_CHANNEL_PORT, 0);
    registers.set(GEV_REG_STREAM_CHANNEL_PORT, 0);
}

void Camera::Impl::setHolder(std::optional<Holder> holder, TimePoint now) {
    privilege_.set(holder, now);
    lastWrite_.reset();
    showHolder();
}

void Camera::Impl::showHolder() {
    const Endpoint application = privilege_.held() ? privilege_.holder()->application : Endpoint{};
    registers.set(GEV_REG_CONTROL_CHANNEL_PRIVILEGE, privilege_.value());
    registers.set(primaryApplicationPort, application.port);
    registers.set(primaryApplicationAddress, application.address.value);
}

void Camera::Impl::powerCycle(TimePoint now) {
    config.ipEnabled = registers.get(GEV_REG_NETWORK_INTERFACE_CONFIGURATION);
    config.persistent = registers.persistent();
    config.userName = registers.userName();
    registers = RegisterMap(config);
    restartIp(now);
}

std::optional<TimePoint> Camera::Impl::heartbeatExpiry() const {
    if (!config.heartbeatExpires || !privilege_.held())
        return std::nullopt;
    return privilege_.expiry(std::chrono::milliseconds(registers.get(GEV_REG_HEARTBEAT_TIMEOUT)));
}

void Camera::Impl::advance(TimePoint now) {
    if (ip.due() && *ip.due() <= now)
        take(sources().choose());
    if (const auto expiry = heartbeatExpiry(); expiry && *expiry <= now)
        dropControl(now);
}

std::optional<TimePoint> Camera::Impl::nextDeadline() const {
    const auto expiry = heartbeatExpiry();
    if (!ip.due() || !expiry)
        return ip.due() ? ip.due() : expiry;
    return std::min(*ip.due(), *expiry);
}

CameraStatus Camera::Impl::status() const {
    return {ip.current(),
            registers.persistent(),
            registers.get(GEV_REG_NETWORK_INTERFACE_CONFIGURATION),
            registers.userName(),
            privilege_.holder(),
            config.reachable,
            ip.count(),
            requests_,
            acknowledges_};
}

bool Camera::Impl::isBroadcast(Ipv4 destination) const {
    const IpSettings &own = *ip.current();
    return destination == Ipv4::limitedBroadcast() || (own.prefixLength() < 31 && destination == own.broadcast());
}

bool Camera::Impl::hears(Ipv4 destination) const {
    return ip.current() && (isBroadcast(destination) || (config.reachable && destination == ip.current()->address));
}

std::vector<Reply> Camera::Impl::receive(const Request &request, TimePoint now) {
    advance(now);
    auto command = readHeader(request);
    if (!command || !hears(request.destination))
        return {};
    command->broadcast = isBroadcast(request.destination);
    ++requests_[command->code];
    auto replies = handle(*command, now);
    acknowledges_ += replies.size();
    return replies;
}

std::vector<Reply> Camera::Impl::handle(const Command &command, TimePoint now) {
    switch (command.code) {
    case TAG_DISCOVERY_CMD:
        return discovery(command);
    case TAG_FORCEIP_CMD:
        return forceIp(command, now);
    case TAG_SETIPCONFIG_CMD:
        return setIpConfig(command);
    default:
        return command.broadcast ? std::vector<Reply>{} : control(command, now);
    }
}

std::vector<Reply> Camera::Impl::acknowledge(const Command &command, const Outcome &outcome, const IpSettings &from) {
    if (!command.asksForAck())
        return {};
    const bool connectionless =
        command.code == TAG_DISCOVERY_CMD || command.code == TAG_FORCEIP_CMD || command.code == TAG_SETIPCONFIG_CMD;
    const bool broadcastAllowed =
        connectionless && command.allowsBroadcastAck() && config.broadcastAck != BroadcastAck::Never;
    const bool onLink = from.inSubnet(command.source.address);
    const bool broadcast = broadcastAllowed && (!onLink || config.broadcastAck == BroadcastAck::Always);
    const bool overGateway = !onLink && from.gateway && from.inSubnet(from.gateway);
    const bool unicast = !broadcast || config.broadcastAck == BroadcastAck::Always;

    std::vector<Reply> replies;
    const Bytes bytes = makeAck(command.code, command.id, outcome.status, outcome.payload);
    if (broadcast)
        replies.push_back({{Ipv4::limitedBroadcast(), command.source.port}, from.address, {}, bytes});
    if (unicast && (onLink || overGateway))
        replies.push_back({command.source, from.address, overGateway ? from.gateway : Ipv4{}, bytes});
    return replies;
}

std::vector<Reply> Camera::Impl::discovery(const Command &command) {
    if (!command.lengthFits || command.size != 0)
        return {};
    Outcome outcome;
    outcome.payload.resize(sizeof(GEV_DISCOVERY_INFO));
    outcome.status = registers.read(GEV_REG_VERSION, outcome.payload.size(), outcome.payload.data());
    return acknowledge(command, outcome, *ip.current());
}

std::vector<Reply> Camera::Impl::forceIp(const Command &command, TimePoint now) {
    if (!command.lengthFits || command.totalSize() != sizeof(_GVCP_FORCEIP_REQUEST))
        return {};
    const auto record = loadRecord<_GVCP_FORCEIP_REQUEST>(command.datagram);
    if (fromWire(record.MacAddress) != config.mac)
        return {};
    const IpSettings old = *ip.current();
    if (privilege_.held() && config.whileControlled != WhileControlled::Accept)
        return config.whileControlled == WhileControlled::Ignore
                   ? std::vector<Reply>{}
                   : acknowledge(command, {GevStatus::AccessDenied, {}}, old);
    const IpSettings forced{fromWire(record.StaticIp), fromWire(record.StaticSubnetMask),
                            fromWire(record.StaticDefaultGateway)};
    if (!forced.address) {
        restartIp(now);
        return {};
    }
    if (!forced.isUsable())
        return acknowledge(command, {GevStatus::InvalidParameter, {}}, old);
    if (forced.address != old.address)
        dropControl(now);
    take(forced);
    return acknowledge(command, {}, config.forceIpAck == ForceIpAck::FromNewAddress ? forced : old);
}

std::vector<Reply> Camera::Impl::setIpConfig(const Command &command) {
    if (config.vendorIpConfig == VendorIpConfig::Silent)
        return {};
    if (config.vendorIpConfig == VendorIpConfig::NotImplemented)
        return acknowledge(command, {GevStatus::NotImplemented, {}}, *ip.current());
    if (!command.lengthFits || command.totalSize() != sizeof(_GVCP_SETIPCONFIG_REQUEST))
        return {};
    const auto record = loadRecord<_GVCP_SETIPCONFIG_REQUEST>(command.datagram);
    if (fromWire(record.MacAddress) != config.mac)
        return {};
    const bool controlled = privilege_.held() && config.whileControlled != WhileControlled::Accept;
    if (controlled && config.whileControlled == WhileControlled::Ignore)
        return {};
    GevStatus status = GevStatus::Error;
    if (config.vendorIpConfig == VendorIpConfig::Supported)
        status = controlled ? GevStatus::AccessDenied : storeIpConfig(record);
    return acknowledge(command, {status, {}}, *ip.current());
}

GevStatus Camera::Impl::storeIpConfig(const _GVCP_SETIPCONFIG_REQUEST &record) {
    const std::uint32_t enabled = ntohl(record.IPConfiguration) & config.ipOptions;
    const IpSettings persistent{fromWire(record.PersistantIP), fromWire(record.PersistantSubNetMask),
                                fromWire(record.PersistantDefaultGateway)};
    const bool usesPersistent = (enabled & GEV_IP_CONFIG_PERSISTENT_IP) != 0;
    if (usesPersistent && !persistent.isUsable())
        return GevStatus::InvalidParameter;
    registers.set(GEV_REG_NETWORK_INTERFACE_CONFIGURATION, enabled);
    if (usesPersistent)
        registers.setPersistent(persistent);
    if (record.UserDefinedName[0] != '\0')
        registers.store(GEV_REG_USER_DEFINED_NAME, reinterpret_cast<const std::uint8_t *>(record.UserDefinedName),
                        sizeof record.UserDefinedName);
    return GevStatus::Success;
}

std::vector<Reply> Camera::Impl::control(const Command &command, TimePoint now) {
    const bool isRepeated = lastWrite_ && lastWrite_->isRepeatedBy(command);
    const Outcome outcome = isRepeated ? lastWrite_->outcome : execute(command, now);
    if (privilege_.heldBy(command.source))
        privilege_.heartbeat(now);
    if (command.writes())
        lastWrite_ =
            LastWrite{command.source, Bytes(command.datagram, command.datagram + command.totalSize()), outcome};
    return acknowledge(command, outcome, *ip.current());
}

Outcome Camera::Impl::execute(const Command &command, TimePoint now) {
    if (!command.lengthFits)
        return {GevStatus::InvalidHeader, {}};
    switch (command.code) {
    case TAG_READREG_CMD:
        return readReg(command);
    case TAG_WRITEREG_CMD:
        return writeReg(command, now);
    case TAG_READMEM_CMD:
        return readMem(command);
    case TAG_WRITEMEM_CMD:
        return writeMem(command, now);
    default:
        return {GevStatus::NotImplemented, {}};
    }
}

Outcome Camera::Impl::readReg(const Command &command) const {
    const std::size_t count = command.size / 4;
    if (count == 0 || command.size % 4 != 0 || command.size > GVCP_MAX_PAYLOAD || (count > 1 && !concatenates()))
        return {GevStatus::InvalidParameter, {}};
    if (privilege_.deniesReading(command.source))
        return {GevStatus::AccessDenied, {}};
    Outcome outcome;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t address = load32(command.payload + 4 * i);
        std::uint8_t value[4];
        outcome.status = address % 4 != 0 ? GevStatus::BadAlignment : registers.read(address, sizeof value, value);
        if (outcome.status != GevStatus::Success)
            break;
        outcome.payload.insert(outcome.payload.end(), value, value + sizeof value);
    }
    return outcome;
}

Outcome Camera::Impl::writeReg(const Command &command, TimePoint now) {
    constexpr std::size_t itemSize = sizeof(GVCP_WRITEREG_ITEM);
    const std::size_t count = command.size / itemSize;
    if (count == 0 || command.size % itemSize != 0 || command.size > GVCP_MAX_PAYLOAD || (count > 1 && !concatenates()))
        return {GevStatus::InvalidParameter, writeIndex(0)};
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t *item = command.payload + itemSize * i;
        const GevStatus status = writeWord(command, load32(item), load32(item + 4), now);
        if (status != GevStatus::Success)
            return {status, writeIndex(i)};
    }
    return {GevStatus::Success, writeIndex(count)};
}

bool Camera::Impl::countFits(std::size_t count) const {
    return count > 0 && count <= maxMemoryCount && (count % 4 == 0 || config.anyMemoryCount);
}

Outcome Camera::Impl::readMem(const Command &command) const {
    if (command.totalSize() != sizeof(GVCP_READMEM_REQUEST))
        return {GevStatus::InvalidParameter, {}};
    const auto record = loadRecord<GVCP_READMEM_REQUEST>(command.datagram);
    const std::uint32_t address = ntohl(record.Address);
    const std::size_t count = ntohs(record.Count);
    if (privilege_.deniesReading(command.source))
        return {GevStatus::AccessDenied, {}};
    if (!countFits(count))
        return {GevStatus::InvalidParameter, {}};
    if (address % 4 != 0)
        return {GevStatus::BadAlignment, {}};
    Outcome outcome;
    append32(outcome.payload, address);
    outcome.payload.resize(4 + count);
    outcome.status = registers.read(address, count, outcome.payload.data() + 4);
    if (outcome.status != GevStatus::Success)
        outcome.payload.clear();
    return outcome;
}

Outcome Camera::Impl::writeMem(const Command &command, TimePoint now) {
    if ((config.capabilities & GEV_CAPABILITY_WRITEMEM) == 0)
        return {GevStatus::NotImplemented, {}};
    if (command.size < 4 || !countFits(command.size - 4))
        return {GevStatus::InvalidParameter, writeIndex(0)};
    const std::uint32_t address = load32(command.payload);
    const std::size_t count = command.size - 4;
    for (std::size_t done = 0; done < count; done += 4) {
        const auto at = static_cast<std::uint32_t>(address + done);
        const std::uint8_t *data = command.payload + 4 + done;
        const GevStatus status =
            count - done >= 4 ? writeWord(command, at, load32(data), now) : writeTail(command, at, data, count - done);
        if (status != GevStatus::Success)
            return {status, writeIndex(done)};
    }
    return {GevStatus::Success, writeIndex(count)};
}

GevStatus Camera::Impl::writeWord(const Command &command, std::uint32_t address, std::uint32_t value, TimePoint now) {
    if (address % 4 != 0)
        return GevStatus::BadAlignment;
    if (address == GEV_REG_CONTROL_CHANNEL_PRIVILEGE)
        return writePrivilege(command, value, now);
    if (!privilege_.heldBy(command.source))
        return GevStatus::AccessDenied;
    const GevStatus status = registers.writable(address, 4);
    if (status == GevStatus::Success)
        registers.set(address, filtered(address, value));
    return status;
}

GevStatus Camera::Impl::writeTail(const Command &command, std::uint32_t address, const std::uint8_t *bytes,
                                  std::size_t count) {
    std::uint8_t word[4];
    if (!privilege_.heldBy(command.source) || address == GEV_REG_CONTROL_CHANNEL_PRIVILEGE)
        return GevStatus::AccessDenied;
    const GevStatus status = registers.writable(address, sizeof word);
    if (status != GevStatus::Success)
        return status;
    (void)registers.read(address, sizeof word, word);
    std::copy_n(bytes, count, word);
    registers.set(address, filtered(address, load32(word)));
    return status;
}

std::uint32_t Camera::Impl::filtered(std::uint32_t address, std::uint32_t value) const {
    if (address == GEV_REG_NETWORK_INTERFACE_CONFIGURATION)
        return value & config.ipOptions;
    if (address == GEV_REG_HEARTBEAT_TIMEOUT)
        return std::max(value, minHeartbeatTimeout);
    return value;
}

GevStatus Camera::Impl::writePrivilege(const Command &command, std::uint32_t value, TimePoint now) {
    if (!privilege_.request(command.source, value, now))
        return GevStatus::AccessDenied;
    if (privilege_.held())
        showHolder();
    else
        dropControl(now);
    return GevStatus::Success;
}

Camera::Camera(CameraConfig config, TimePoint now) {
    const std::string name = checkedName(config);
    try {
        checkConfig(config);
        impl_ = std::make_unique<Impl>(std::move(config), now);
    } catch (const std::invalid_argument &error) {
        throw std::invalid_argument(name + error.what());
    }
}

Camera::Camera(Camera &&) noexcept = default;
Camera &Camera::operator=(Camera &&) noexcept = default;
Camera::~Camera() = default;

bool Camera::hears(const Request &request) const { return impl_->hears(request.destination); }
std::vector<Reply> Camera::receive(const Request &request, TimePoint now) { return impl_->receive(request, now); }
void Camera::advance(TimePoint now) { impl_->advance(now); }
std::optional<TimePoint> Camera::nextDeadline() const { return impl_->nextDeadline(); }
void Camera::powerCycle(TimePoint now) { impl_->powerCycle(now); }
void Camera::setReachable(bool reachable) { impl_->config.reachable = reachable; }
void Camera::setHolder(std::optional<Holder> holder, TimePoint now) { impl_->setHolder(holder, now); }
const MacAddress &Camera::mac() const { return impl_->config.mac; }
const std::optional<IpSettings> &Camera::current() const { return impl_->ip.current(); }
CameraStatus Camera::status() const { return impl_->status(); }

std::vector<std::uint8_t> Camera::readMemory(std::uint32_t address, std::size_t count) const {
    Bytes bytes(count);
    if (impl_->registers.read(address, count, bytes.data()) != GevStatus::Success)
        throw std::out_of_range("camera " + mac().toString() + " has no memory for " + std::to_string(count) +
                                " bytes at " + std::to_string(address));
    return bytes;
}

void Camera::writeMemory(std::uint32_t address, const std::vector<std::uint8_t> &bytes) {
    impl_->registers.store(address, bytes.data(), bytes.size());
}

} // namespace camsim
