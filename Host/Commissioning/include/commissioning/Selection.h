#pragma once

#include "commissioning/Inventory.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace commissioning {

// The pointers live as long as the inventory.

/// Finds the cameras of an inventory, which outlives it, by what names them.
class CameraNames {
public:
    explicit CameraNames(const Inventory &inventory);
    /// By MAC in any spelling, else by serial number, address or user-defined name. One when it is clear, several, in
    /// the inventory's order, when it is ambiguous.
    std::vector<const Camera *> find(const std::string &text) const;

private:
    template <class Name> using Index = std::unordered_multimap<Name, const Camera *>;
    Index<std::string> m_ByMac;
    Index<std::string> m_ByText;
    Index<Address> m_ByAddress;
};

/// The same for one text.
std::vector<const Camera *> camerasNamed(const std::string &text, const Inventory &inventory);

/// Of the adapters that a camera was found through the one in whose subnet a wanted address is, else its present one,
/// else the first; null when none of them is known. \param wanted 0 for none.
const Adapter *adapterOf(const Camera &camera, const Inventory &inventory, Address wanted = 0);

} // namespace commissioning
