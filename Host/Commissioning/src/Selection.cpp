#include "commissioning/Selection.h"

#include "commissioning/AddressRules.h"
#include "commissioning/Parsing.h"
#include "commissioning/WantedAddresses.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace commissioning {

namespace {

template <class Index, class Name>
void append(const Index &index, const Name &name, std::vector<const Camera *> *pCameras) {
    const auto [begin, end] = index.equal_range(name);
    std::transform(begin, end, std::back_inserter(*pCameras), [](const auto &entry) { return entry.second; });
}

} // namespace

CameraNames::CameraNames(const Inventory &inventory) {
    for (const Camera &camera : inventory.cameras) {
        m_ByMac.emplace(camera.mac, &camera);
        m_ByText.emplace(camera.serial, &camera);
        if (camera.name != camera.serial)
            m_ByText.emplace(camera.name, &camera);
        m_ByAddress.emplace(camera.address, &camera);
    }
}

std::vector<const Camera *> CameraNames::find(const std::string &text) const {
    std::vector<const Camera *> cameras;
    if (text.empty()) // which is what many cameras have for a name
        return cameras;
    if (const std::string mac = macFrom(text); !mac.empty())
        append(m_ByMac, mac, &cameras);
    if (!cameras.empty())
        return cameras;
    append(m_ByText, text, &cameras);
    if (const std::optional<Address> address = addressFrom(text))
        append(m_ByAddress, *address, &cameras);
    std::sort(cameras.begin(), cameras.end());
    cameras.erase(std::unique(cameras.begin(), cameras.end()), cameras.end());
    return cameras;
}

std::vector<const Camera *> camerasNamed(const std::string &text, const Inventory &inventory) {
    return CameraNames(inventory).find(text);
}

const Adapter *adapterOf(const Camera &camera, const Inventory &inventory, Address wanted) {
    std::vector<const Adapter *> behind;
    for (const std::string &name : camera.adapters) {
        for (const Adapter &adapter : inventory.adapters) {
            if (adapter.name == name)
                behind.push_back(&adapter);
        }
    }
    for (const Address address : {wanted, camera.address}) {
        const auto isThere = [&](const Adapter *adapter) { return subnetOf(adapter, address) != nullptr; };
        const auto found = std::find_if(behind.begin(), behind.end(), isThere);
        if (found != behind.end())
            return *found;
    }
    return behind.empty() ? nullptr : behind.front();
}

} // namespace commissioning
