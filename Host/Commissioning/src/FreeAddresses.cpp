#include "commissioning/FreeAddresses.h"

#include "Descriptor.h"
#include "commissioning/AddressText.h"
#include "commissioning/Survey.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <linux/neighbour.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>

namespace commissioning {

namespace {

constexpr std::size_t BatchSize = 64;
constexpr std::size_t MaxBatches = 16; // more neighbours than that do not fit into the kernel's table anyway

sockaddr_in socketAddress(Address address, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(address);
    result.sin_port = htons(port);
    return result;
}

/// Has the kernel look for neighbours behind one adapter.
class NeighbourProbe {
public:
    NeighbourProbe(const Adapter &adapter, Address source)
        : m_AdapterIndex(adapter.index), m_Socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        const sockaddr_in own = socketAddress(source, 0);
        // The route may lead out of another adapter that has the same subnet.
        const auto length = static_cast<socklen_t>(adapter.name.size());
        if (setsockopt(m_Socket.get(), SOL_SOCKET, SO_BINDTODEVICE, adapter.name.c_str(), length) != 0 ||
            bind(m_Socket.get(), reinterpret_cast<const sockaddr *>(&own), sizeof own) != 0)
            throw std::system_error(errno, std::generic_category(), "cannot ask for neighbours");
    }

    /// Those of the addresses that nobody has.
    std::set<Address> silent(const std::vector<Address> &addresses, const std::function<bool()> &isCancelled) const {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        std::set<Address> open;
        for (const Address address : addresses) {
            if (ask(address))
                open.insert(address);
        }
        std::set<Address> result;
        while (!open.empty() && std::chrono::steady_clock::now() < deadline && !(isCancelled && isCancelled())) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            for (const Neighbour &neighbour : neighboursOf(m_AdapterIndex))
                decide(neighbour, open, result);
        }
        return result;
    }

private:
    /// A failed entry becomes an incomplete one before this returns.
    bool ask(Address address) const {
        constexpr std::uint16_t DiscardPort = 9;
        const sockaddr_in target = socketAddress(address, DiscardPort);
        const char nothing = 0;
        return sendto(m_Socket.get(), &nothing, sizeof nothing, 0, reinterpret_cast<const sockaddr *>(&target),
                      sizeof target) >= 0;
    }
    static void decide(const Neighbour &neighbour, std::set<Address> &open, std::set<Address> &result) {
        if (neighbour.state == NUD_INCOMPLETE || neighbour.state == NUD_NONE || open.erase(neighbour.address) == 0)
            return;
        if (neighbour.state == NUD_FAILED)
            result.insert(neighbour.address);
    }

    int m_AdapterIndex;
    Descriptor m_Socket;
};

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
    const NeighbourProbe probe(adapter, subnet.address);
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
        std::set<Address> free = probe.silent(candidates, isCancelled);
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
