#include "FaultInjector.h"

#include "Wire.h"

#include <algorithm>
#include <utility>

namespace camsim {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t codeOffset = offsetof(GVCP_RESPONSE_HEADER, Acknowledge);
constexpr std::size_t idOffset = offsetof(GVCP_RESPONSE_HEADER, AckId);

void set16(Bytes &bytes, std::size_t offset, std::uint16_t value) {
    bytes.at(offset) = static_cast<std::uint8_t>(value >> 8);
    bytes.at(offset + 1) = static_cast<std::uint8_t>(value);
}

void shiftId(Bytes &ack, int step) {
    set16(ack, idOffset, static_cast<std::uint16_t>((ack.at(idOffset) << 8 | ack.at(idOffset + 1)) + step));
}

} // namespace

bool FaultInjector::happens(double percent) {
    if (percent <= 0)
        return false;
    const double drawn = static_cast<double>(generator_() >> 11) * 0x1p-53; // 0 to below 1
    const bool hit = drawn * 100 < percent;
    applied_ += hit ? 1 : 0;
    return hit;
}

std::uint64_t FaultInjector::between(std::uint64_t low, std::uint64_t high) {
    return low + generator_() % (high - low + 1);
}

Bytes FaultInjector::randomBytes(std::size_t count) {
    Bytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<std::uint8_t>(generator_()); });
    return bytes;
}

bool FaultInjector::isDeaf(FaultState &state, bool matches, TimePoint now) {
    if (!state.outageEnd && matches && state.heard++ >= state.config.deafAfter)
        state.outageEnd = now + state.config.outage;
    return state.outageEnd && now < *state.outageEnd;
}

CommandFate FaultInjector::command(FaultState &state, std::uint16_t code, TimePoint now) {
    const FaultConfig &config = state.config;
    const bool matches = config.commands.empty() ||
                         std::find(config.commands.begin(), config.commands.end(), code) != config.commands.end();
    CommandFate fate;
    if (state.arrived >= config.silentAfter || isDeaf(state, matches, now)) {
        fate.lost = true;
        return fate;
    }
    fate.exposed = matches && state.exposed < config.limit;
    state.exposed += fate.exposed ? 1 : 0;
    fate.lost = fate.exposed && happens(config.lossToCamera);
    state.arrived += fate.lost ? 0 : 1;
    return fate;
}

void FaultInjector::acknowledge(const FaultState &state, const CommandFate &fate, Reply reply, TimePoint now,
                                std::vector<Outgoing> &out) {
    const FaultConfig &config = state.config;
    const std::chrono::milliseconds range = config.delayMax - config.delayMin;
    const std::chrono::microseconds extra(
        range.count() == 0 ? 0 : between(0, static_cast<std::uint64_t>(range.count()) * 1000));
    const TimePoint due = now + reply.delay + config.delayMin + extra;
    if (!fate.exposed) {
        out.push_back({std::move(reply), due});
        return;
    }
    if (happens(config.lossFromCamera))
        return;
    const Reply clean = reply;
    spoil(config, reply.bytes);
    addStrays(config, clean, due, out);
    if (happens(config.duplicate))
        out.push_back({reply, due});
    const bool heldBack = happens(config.reorder);
    out.push_back({std::move(reply), due, heldBack});
}

void FaultInjector::spoil(const FaultConfig &config, Bytes &ack) {
    if (happens(config.wrongId))
        shiftId(ack, 1);
    if (happens(config.wrongCode))
        set16(ack, codeOffset, 0x7FFF);
    // Never both: random bytes in place of the cut ones would be other data, which only the UDP checksum tells.
    if (happens(config.shortAck)) {
        ack.resize(static_cast<std::size_t>(between(1, ack.size() - 1)));
    } else if (happens(config.longAck)) {
        const Bytes tail = randomBytes(static_cast<std::size_t>(between(1, 512)));
        ack.insert(ack.end(), tail.begin(), tail.end());
    }
}

void FaultInjector::addStrays(const FaultConfig &config, const Reply &reply, TimePoint due,
                              std::vector<Outgoing> &out) {
    if (happens(config.staleId)) {
        Reply stale = reply;
        shiftId(stale.bytes, -1);
        out.push_back({std::move(stale), due});
    }
    if (happens(config.garbage)) {
        Reply garbage = reply;
        garbage.bytes = randomBytes(static_cast<std::size_t>(between(1, 600)));
        out.push_back({std::move(garbage), due});
    }
}

} // namespace camsim
