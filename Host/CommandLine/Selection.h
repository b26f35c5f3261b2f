#pragma once

#include "commissioning/Inventory.h"

#include <string>
#include <vector>

namespace commandline {

/// The cameras that a text names: by MAC in any spelling, else by serial number, address or user-defined name. One when
/// it is clear, several when it is ambiguous. The pointers live as long as the inventory.
std::vector<const commissioning::Camera *> camerasNamed(const std::string &text,
                                                        const commissioning::Inventory &inventory);

} // namespace commandline
