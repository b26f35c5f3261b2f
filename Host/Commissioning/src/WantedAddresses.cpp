#include "commissioning/WantedAddresses.h"

#include "commissioning/AddressText.h"

#include <algorithm>

namespace commissioning {

const AdapterAddress *subnetOf(const Adapter *adapter, Address address) {
    if (!adapter)
        return nullptr;
    const auto &all = adapter->addresses;
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto &each) { return isInSubnet(address, each); });
    return found == all.end() ? nullptr : &*found;
}

StoredAddresses knownAddresses(const Camera &camera) {
    return camera.stored.value_or(StoredAddresses{camera.address, camera.mask, camera.gateway});
}

StoredAddresses wantedAddresses(const Camera &camera, const Adapter *adapter, const NamedAddresses &named) {
    const StoredAddresses known = knownAddresses(camera);
    const Address address = named.address.value_or(known.address);
    const AdapterAddress *subnet = subnetOf(adapter, address);
    const Address mask = named.mask.value_or(subnet ? subnet->mask : known.mask);
    const bool keepsGateway = isInSubnet(known.gateway, {address, mask});
    return {address, mask, named.gateway.value_or(keepsGateway ? known.gateway : 0)};
}

} // namespace commissioning
