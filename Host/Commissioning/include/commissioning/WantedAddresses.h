#pragma once

#include "commissioning/Inventory.h"

#include <optional>

namespace commissioning {

/// The subnet of an adapter that an address belongs to; null when it is none of them, or without an adapter.
const AdapterAddress *subnetOf(const Adapter *adapter, Address address);

/// Addresses as somebody names them; what is none is decided for them.
struct NamedAddresses {
    std::optional<Address> address;
    std::optional<Address> mask;
    std::optional<Address> gateway; ///< 0 for no gateway at all
};

/// What a camera has stored; while that is not known, what it uses.
StoredAddresses knownAddresses(const Camera &camera);

/// What a static camera is to have stored. The address is otherwise its own; the mask that of the adapter's subnet,
/// else its own; its gateway stays unless it could not reach it any more.
/// \param adapter that the camera is behind; may be null.
StoredAddresses wantedAddresses(const Camera &camera, const Adapter *adapter, const NamedAddresses &named);

} // namespace commissioning
