#pragma once

#include "camsim/Camera.h"
#include "camsim/FaultConfig.h"

#include <cstdint>
#include <optional>
#include <random>
#include <vector>

namespace camsim {

/// The faults of one camera and how far they got.
struct FaultState {
    FaultConfig config;
    std::uint64_t arrived = 0; ///< commands, for FaultConfig::silentAfter
    std::uint64_t exposed = 0; ///< commands, for FaultConfig::limit
    std::uint64_t heard = 0;   ///< commands, for FaultConfig::deafAfter
    std::optional<TimePoint> outageEnd = std::nullopt;
};

/// What becomes of one command and its acknowledges.
struct CommandFate {
    bool lost = false;
    bool exposed = false; ///< the acknowledges are open to faults
};

/// A reply after the faults.
struct Outgoing {
    Reply reply;
    TimePoint due;
    bool heldBack = false; ///< goes out after the next one
};

/// Draws the faults of all cameras of a simulator from one generator, so that a seed repeats a run.
class FaultInjector {
public:
    explicit FaultInjector(std::uint64_t seed) : generator_(seed) {}

    CommandFate command(FaultState &state, std::uint16_t code, TimePoint now);
    /// Appends what is really sent for `reply`.
    void acknowledge(const FaultState &state, const CommandFate &fate, Reply reply, TimePoint now,
                     std::vector<Outgoing> &out);
    std::uint64_t applied() const { return applied_; }

private:
    static bool isDeaf(FaultState &state, bool matches, TimePoint now);
    bool happens(double percent);
    std::uint64_t between(std::uint64_t low, std::uint64_t high);
    std::vector<std::uint8_t> randomBytes(std::size_t count);
    void spoil(const FaultConfig &config, std::vector<std::uint8_t> &ack);
    void addStrays(const FaultConfig &config, const Reply &reply, TimePoint due, std::vector<Outgoing> &out);

    std::mt19937_64 generator_;
    std::uint64_t applied_ = 0;
};

} // namespace camsim
