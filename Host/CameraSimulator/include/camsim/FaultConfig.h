#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <vector>

namespace camsim {

/// How the network and a broken device spoil the traffic of a camera. Chances are percentages, 0 to 100.
///
/// Each acknowledge is drawn for every fault on its own, in the order of the members, so several may meet.
struct FaultConfig {
    double lossToCamera = 0;   ///< The command never arrives: nothing is executed.
    double lossFromCamera = 0; ///< The command is executed, the acknowledge is lost.
    double wrongId = 0;        ///< The acknowledge carries the request id plus 1: an id from the future.
    double wrongCode = 0;      ///< The acknowledge code is not the one that belongs to the command (0x7FFF).
    double shortAck = 0;       ///< The acknowledge is cut to a random shorter length, at least 1 byte.
    double longAck = 0;        ///< 1 to 512 random bytes are appended unless cut; the length field stays.
    double staleId = 0;   ///< A copy with the request id minus 1 is sent first: a late answer to an earlier request.
    double garbage = 0;   ///< A datagram of 1 to 600 random bytes is sent first.
    double duplicate = 0; ///< The acknowledge is sent twice.
    double reorder = 0;   ///< The acknowledge is held back until after the next one, at most 50 ms.
    std::chrono::milliseconds delayMin{0}; ///< Every acknowledge is delayed by a random time in delayMin..delayMax.
    std::chrono::milliseconds delayMax{0};

    static constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();
    /// The camera is silent for good after this many commands that reached it, counted from the setting of the faults.
    std::uint64_t silentAfter = unlimited;
    /// After this many commands that reached the camera (of those in `commands`) the next one starts an outage: the
    /// camera hears nothing for `outage`. It happens once after the setting of the faults.
    std::uint64_t deafAfter = unlimited;
    std::chrono::milliseconds outage{0};
    /// Faults happen to the first `limit` commands they can happen to, then the traffic is clean. With a chance of
    /// 100 this loses exactly the first n acknowledges. Delay, silence and outage are not limited.
    std::uint64_t limit = unlimited;
    /// Command codes that faults happen to; empty means all.
    std::vector<std::uint16_t> commands;

    /// Throws std::invalid_argument naming the member when a chance is outside 0 to 100 or the delay range is reversed.
    void check() const;
};

} // namespace camsim
