#include "commissioning/Selection.h"

#include "commissioning/AddressRules.h"
#include "commissioning/Parsing.h"

namespace commissioning {

std::vector<const Camera *> camerasNamed(const std::string &text, const Inventory &inventory) {
    const std::string mac = macFrom(text);
    const std::optional<Address> address = addressFrom(text);
    std::vector<const Camera *> byMac;
    std::vector<const Camera *> others;
    if (text.empty()) // which is what many cameras have for a name
        return {};
    for (const Camera &camera : inventory.cameras) {
        if (!mac.empty() && camera.mac == mac)
            byMac.push_back(&camera);
        else if (camera.serial == text || camera.name == text || (address && camera.address == *address))
            others.push_back(&camera);
    }
    return byMac.empty() ? others : byMac;
}

const Adapter *adapterOf(const Camera &camera, const Inventory &inventory) {
    for (const std::string &name : camera.adapters) {
        for (const Adapter &adapter : inventory.adapters) {
            if (adapter.name == name)
                return &adapter;
        }
    }
    return nullptr;
}

} // namespace commissioning
