#pragma once

#include "commissioning/Inventory.h"

#include <cstddef>
#include <optional>
#include <set>
#include <vector>

namespace commissioning {

/// The addresses that a camera has now, and the one that it is to get; 0 for one that nobody knows or that it has.
struct Place {
    std::set<Address> has;
    Address gets = 0;
};

/// Marks whoever gets an address that one of the marked has, whoever gets an address of those, and so on.
///
/// With the cameras marked that stay where they are, or go back there, these are the others that must do the same.
std::vector<bool> entangled(const std::vector<Place> &places, std::vector<bool> marked);

/// The one that can be moved alone with the least consequences. One whose address somebody has cannot.
/// \param among numbers of places. \returns none when none can.
std::optional<std::size_t> freest(const std::vector<Place> &places, const std::vector<std::size_t> &among);

/// What a camera has for others to stay away from: where it answers, and where it will at its next start.
std::set<Address> addressesOf(const Camera &camera);

} // namespace commissioning
