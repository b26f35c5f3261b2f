#pragma once

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Inventory.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// What a camera tells, byte by byte, for whoever looks for a fault from afar.
namespace commissioning {

/// A bootstrap register.
struct RegisterDump {
    const char *name; ///< of the standard
    std::uint32_t address;
    std::vector<std::uint8_t> bytes; ///< in the camera's memory order; empty when it could not be read
};

struct CameraDump {
    std::vector<RegisterDump> registers;   ///< empty when the camera could not be connected to
    std::vector<std::uint8_t> description; ///< the GenICam file as the camera stores it, XML or zip
    std::string problem;                   ///< why there is no description
};

/// Reads cameras, several side by side, without taking control of them, which one that somebody controls exclusively
/// refuses. A camera takes 15 s at most; none is begun after \p end, and none after a stop that is requested by the
/// calling thread's token (Gx::CStopScope). Never throws for what a camera does.
/// \param read told each camera that was read, by its index, on several threads.
void dumpCameras(const std::vector<Corvo::CQuorelGigEDeviceInfo> &devices, std::chrono::steady_clock::time_point end,
                 const std::function<void(std::size_t index, const CameraDump &dump)> &read);

/// The payload of a DISCOVERY_ACK.
struct Acknowledge {
    Address sender = 0;
    Address adapter = 0;             ///< that of the host's adapter it arrived on
    std::vector<std::uint8_t> bytes; ///< 248, as they came
};

/// The answers to one discovery, and to a question to each of some addresses, by the cameras' MACs. Takes 250 ms, and a
/// second for each address that is silent.
std::map<std::string, std::vector<Acknowledge>> acknowledges(const std::vector<Address> &ask);

} // namespace commissioning
