#pragma once

#include "commissioning/Inventory.h"

#include <string>
#include <vector>

namespace commissioning {

// The pointers live as long as the inventory.

/// The cameras that a text names: by MAC in any spelling, else by serial number, address or user-defined name. One when
/// it is clear, several when it is ambiguous.
std::vector<const Camera *> camerasNamed(const std::string &text, const Inventory &inventory);

/// The first of the adapters that a camera was found through; null when none of them is known.
const Adapter *adapterOf(const Camera &camera, const Inventory &inventory);

} // namespace commissioning
