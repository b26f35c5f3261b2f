// The control channel: registers, memory and the privilege.

#include "CameraImpl.h"

#include <algorithm>

namespace camsim {
namespace {

constexpr std::size_t maxMemoryCount = GVCP_MAX_PAYLOAD - 4; // the address precedes the data
constexpr std::uint32_t minHeartbeatTimeout = 500;           // ms

/// Payload of WRITEREG_ACK and WRITEMEM_ACK.
Bytes writeIndex(std::size_t index) {
    Bytes payload;
    append32(payload, static_cast<std::uint32_t>(index));
    return payload;
}

} // namespace

std::vector<Reply> Camera::Impl::control(const Command &command, TimePoint now) {
    const bool isRepeated = lastWrite_ && lastWrite_->isRepeatedBy(command);
    const Outcome outcome = isRepeated ? lastWrite_->outcome : execute(command, now);
    if (privilege_.heldBy(command.source))
        privilege_.heartbeat(now);
    TimePoint done = now;
    if (isRepeated)
        done = lastWrite_->done;
    else if (outcome.status == GevStatus::Success && command.stores())
        done += config.flashTime;
    if (command.writes())
        lastWrite_ =
            LastWrite{command.source, Bytes(command.datagram, command.datagram + command.totalSize()), outcome, done};
    const auto delay = std::chrono::ceil<std::chrono::milliseconds>(std::max(done - now, TimePoint::duration{}));
    return putOff(command, acknowledge(command, outcome, *ip.current()), delay);
}

bool Command::stores() const {
    const auto isStored = [](std::uint32_t address) {
        return address == GEV_REG_NETWORK_INTERFACE_CONFIGURATION || address == GEV_REG_PERSISTENT_IP_ADDRESS ||
               address == GEV_REG_PERSISTENT_SUBNET_MASK || address == GEV_REG_PERSISTENT_DEFAULT_GATEWAY ||
               address == GEV_REG_USER_DEFINED_NAME;
    };
    bool found = code == TAG_WRITEMEM_CMD && isStored(load32(payload));
    for (std::size_t at = 0; code == TAG_WRITEREG_CMD && at < size; at += sizeof(GVCP_WRITEREG_ITEM))
        found = found || isStored(load32(payload + at));
    return found;
}

std::vector<Reply> Camera::Impl::putOff(const Command &command, std::vector<Reply> replies,
                                        std::chrono::milliseconds delay) {
    if (replies.empty() || delay.count() == 0)
        return replies;
    replies[0].delay = delay;
    if (!config.sendsPendingAck)
        return replies;
    Bytes time;
    append32(time, static_cast<std::uint32_t>(delay.count()));
    Reply pending = replies[0];
    pending.delay = {};
    // An acknowledge code is the command's plus 1.
    pending.bytes = makeAck(TAG_PENDING_ACK - 1, command.id, GevStatus::Success, time);
    replies.insert(replies.begin(), std::move(pending));
    return replies;
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
    if (status != GevStatus::Success)
        return status;
    if (address == GEV_REG_TIMESTAMP_CONTROL)
        controlTimestamp(value, now);
    else
        registers.set(address, filtered(address, value));
    return status;
}

void Camera::Impl::controlTimestamp(std::uint32_t value, TimePoint now) {
    constexpr std::uint32_t latch = 2;
    constexpr std::uint32_t reset = 1;
    const auto ticks = static_cast<std::uint64_t>(std::chrono::nanoseconds(now - timestampZero_).count());
    if ((value & latch) != 0) {
        registers.set(GEV_REG_TIMESTAMP_VALUE_HIGH, static_cast<std::uint32_t>(ticks >> 32));
        registers.set(GEV_REG_TIMESTAMP_VALUE_LOW, static_cast<std::uint32_t>(ticks));
    }
    if ((value & reset) != 0)
        timestampZero_ = now;
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

} // namespace camsim
