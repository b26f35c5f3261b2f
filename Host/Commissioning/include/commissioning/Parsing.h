#pragma once

#include "commissioning/Inventory.h"

#include <optional>
#include <string>

namespace commissioning {

// What people type.

Address maskOfPrefix(unsigned length); ///< \param length 0 to 32
/// A mask as an address or as the length of a prefix, 0 to 32, that "/" may precede; none for any other text and for a
/// mask with gaps.
std::optional<Address> maskFrom(const std::string &text);
/// A MAC in any spelling as 12 upper-case hexadecimal digits; empty for any other text.
std::string macFrom(const std::string &text);

} // namespace commissioning
