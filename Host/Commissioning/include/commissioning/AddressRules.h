#pragma once

#include "commissioning/Inventory.h"

#include <optional>
#include <string>

namespace commissioning {

/// Of a dotted quad; none for any other text.
std::optional<Address> addressFrom(const std::string &text);

/// Whether a camera may have an address at all: not 127.0.0.1, and below 224.0.0.0.
constexpr bool isValidForDevice(Address address) { return address != 0x7F000001 && address < 0xE0000000; }

} // namespace commissioning
