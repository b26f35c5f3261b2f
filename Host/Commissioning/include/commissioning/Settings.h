#pragma once

#include "commissioning/Inventory.h"

#include <cstdint>
#include <optional>
#include <string>

namespace commissioning {

/// What a camera is set to, as people see it. 0 where an address is not known.
struct Settings {
    std::optional<Mode> mode;
    Address address = 0; ///< this and the next two: for a static mode the stored ones, else those in effect
    Address mask = 0;
    Address gateway = 0;
    std::string name;
};

bool operator==(const Settings &a, const Settings &b);

Settings settingsOf(const Camera &camera);

/// Everything of a camera that a change may alter: enough to put it back.
struct Snapshot {
    std::uint32_t word = 0; ///< of modes, as the camera tells it (GEV_IP_CONFIG)
    StoredAddresses current;
    std::optional<StoredAddresses> stored; ///< none when they could not be read
    std::string name;
};

Snapshot snapshotOf(const Camera &camera);

} // namespace commissioning
