#pragma once

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Inventory.h"

#include <cstdint>
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

/// Reads a camera without taking control of it, which one that somebody controls exclusively refuses. Takes 15 s at
/// most. Never throws for what the camera does. Any thread may call.
CameraDump dumpOf(const Corvo::CQuorelGigEDeviceInfo &device);

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
