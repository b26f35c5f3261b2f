#include "commissioning/FreeAddresses.h"

#include "commissioning/AddressText.h"
#include "commissioning/Neighbourhood.h"
#include "commissioning/Survey.h"

#include <algorithm>
#include <iterator>

namespace commissioning {

namespace {

constexpr std::size_t BatchSize = 64;
constexpr std::size_t MaxBatches = 16; // more neighbours than that do not fit into the kernel's table anyway

} // namespace

FreeAddresses::FreeAddresses(const Inventory &inventory) {
    for (const Adapter &adapter : inventory.adapters) {
        for (const AdapterAddress &own : adapter.addresses)
            exclude(own.address);
    }
    for (const Camera &camera : inventory.cameras) {
        exclude(camera.address);
        if (camera.stored)
            exclude(camera.stored->address);
    }
    for (const Route &route : surveyRoutes())
        exclude(route.gateway);
}

bool FreeAddresses::canBeGiven(Address address, const AdapterAddress &subnet) const {
    const Address host = address & ~subnet.mask;
    return host != 0 && host != ~subnet.mask && m_Taken.count(address) == 0;
}

std::vector<Address> FreeAddresses::lowest(Address &next, const AdapterAddress &subnet, std::size_t count) const {
    std::vector<Address> addresses;
    for (; addresses.size() < count && next < (subnet.address | ~subnet.mask); ++next) {
        if (canBeGiven(next, subnet))
            addresses.push_back(next);
    }
    return addresses;
}

void FreeAddresses::give(std::optional<Address> &place, std::set<Address> &free, Address address) {
    if (place || free.erase(address) == 0)
        return;
    place = address;
    exclude(address);
}

std::vector<std::optional<Address>> FreeAddresses::take(const Adapter &adapter, const AdapterAddress &subnet,
                                                        const std::vector<Address> &presents,
                                                        const std::function<bool()> &isCancelled) {
    std::vector<std::optional<Address>> result(presents.size());
    if (!isUsable(adapter) || subnet.mask == 0)
        return result;
    std::vector<Address> firstChoices;
    firstChoices.reserve(presents.size());
    for (const Address present : presents)
        firstChoices.push_back((subnet.address & subnet.mask) | (present & ~subnet.mask));
    Address next = subnet.address & subnet.mask;
    const auto isMissing = [&] { return std::find(result.begin(), result.end(), std::nullopt) != result.end(); };
    for (std::size_t round = 0; round < MaxBatches && isMissing(); ++round) {
        std::vector<Address> candidates = lowest(next, subnet, BatchSize + presents.size());
        if (round == 0)
            std::copy_if(firstChoices.begin(), firstChoices.end(), std::back_inserter(candidates),
                         [&](Address choice) { return canBeGiven(choice, subnet); });
        if (candidates.empty())
            break;
        std::set<Address> free = neighbourhoodOf(adapter, subnet, candidates, isCancelled).free;
        if (isCancelled && isCancelled())
            return std::vector<std::optional<Address>>(presents.size());
        for (std::size_t i = 0; i < result.size(); ++i)
            give(result[i], free, firstChoices[i]);
        for (std::size_t i = 0; i < result.size() && !free.empty(); ++i)
            give(result[i], free, *free.begin());
    }
    return result;
}

const AdapterAddress *homeSubnet(const Adapter &adapter) {
    const auto &all = adapter.addresses;
    const auto isRoutable = [](const AdapterAddress &entry) { return !isLinkLocal(entry.address); };
    const auto found = std::find_if(all.begin(), all.end(), isRoutable);
    if (found != all.end())
        return &*found;
    return all.empty() ? nullptr : &all.front();
}

} // namespace commissioning
