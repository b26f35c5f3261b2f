#include "CameraImpl.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace camsim {
namespace {

constexpr std::size_t headerSize = sizeof(GVCP_REQUEST_HEADER);

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

std::string checkedName(const CameraConfig &config) { return "camera " + config.mac.toString() + ": "; }

} // namespace

Camera::Impl::Impl(CameraConfig initial, TimePoint now)
    : config(std::move(initial)), registers(config), ip(config.restartSilence), timestampZero_(now) {
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
    if ((config.capabilities & GEV_CAPABILITY_PRIMARY_APPLICATION) == 0)
        return;
    registers.set(GEV_REG_PRIMARY_APPLICATION_PORT, application.port);
    registers.set(GEV_REG_PRIMARY_APPLICATION_IP_ADDRESS, application.address.value);
}

void Camera::Impl::powerCycle(TimePoint now) {
    config.ipEnabled = registers.get(GEV_REG_NETWORK_INTERFACE_CONFIGURATION);
    config.persistent = registers.persistent();
    config.userName = registers.userName();
    registers = RegisterMap(config);
    timestampZero_ = now;
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
        if (ignoredRestarts_ == config.ignoredRestarts)
            restartIp(now);
        else
            ++ignoredRestarts_;
        return {};
    }
    if (!forced.isUsable())
        return acknowledge(command, {GevStatus::InvalidParameter, {}}, old);
    if (!config.appliesBroadcasts)
        return acknowledge(command, {}, old);
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
    if (!config.appliesBroadcasts)
        return GevStatus::Success;
    registers.set(GEV_REG_NETWORK_INTERFACE_CONFIGURATION, enabled);
    if (usesPersistent)
        registers.setPersistent(persistent);
    if (record.UserDefinedName[0] != '\0')
        registers.store(GEV_REG_USER_DEFINED_NAME, reinterpret_cast<const std::uint8_t *>(record.UserDefinedName),
                        sizeof record.UserDefinedName);
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
