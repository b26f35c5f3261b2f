#include "commissioning/Neighbourhood.h"

#include "Descriptor.h"
#include "commissioning/Survey.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <linux/neighbour.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>

namespace commissioning {

namespace {

/// What waits for an answer counts against the socket's buffer, which has room for some 270 datagrams at least.
constexpr std::size_t AddressesPerSocket = 128;
constexpr std::chrono::seconds AskingTime(5); // the kernel asks three times, once a second

sockaddr_in socketAddress(Address address, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(address);
    result.sin_port = htons(port);
    return result;
}

Descriptor openSocket(const Adapter &adapter, Address source) {
    Descriptor result(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_in own = socketAddress(source, 0);
    // The route may lead out of another adapter that has the same subnet.
    const auto length = static_cast<socklen_t>(adapter.name.size());
    if (setsockopt(result.get(), SOL_SOCKET, SO_BINDTODEVICE, adapter.name.c_str(), length) != 0 ||
        bind(result.get(), reinterpret_cast<const sockaddr *>(&own), sizeof own) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot ask for neighbours");
    return result;
}

/// A failed entry becomes an incomplete one before this returns. A table that is full takes none, and nobody says so.
bool ask(const Descriptor &from, Address address) {
    constexpr std::uint16_t DiscardPort = 9;
    const sockaddr_in target = socketAddress(address, DiscardPort);
    const char nothing = 0;
    return sendto(from.get(), &nothing, sizeof nothing, 0, reinterpret_cast<const sockaddr *>(&target),
                  sizeof target) >= 0;
}

using Open = std::map<Address, std::size_t>; ///< to the number of the socket that asks

void decide(const Neighbour &neighbour, Open *pOpen, Neighbourhood *pResult) {
    if (neighbour.state == NUD_INCOMPLETE || neighbour.state == NUD_NONE || pOpen->erase(neighbour.address) == 0)
        return;
    if (neighbour.state == NUD_FAILED)
        pResult->free.insert(neighbour.address);
    else
        pResult->taken.emplace(neighbour.address, neighbour.mac);
}

std::set<Address> addressesOf(const std::map<Address, std::string> &taken) {
    std::set<Address> addresses;
    for (const auto &[address, mac] : taken)
        addresses.insert(address);
    return addresses;
}

std::map<Address, unsigned> statesOf(const Adapter &adapter) {
    std::map<Address, unsigned> states;
    for (const Neighbour &neighbour : neighboursOf(adapter.index))
        states[neighbour.address] = neighbour.state;
    return states;
}

Neighbourhood without(const std::set<Address> &gone, Neighbourhood found) {
    for (const Address address : gone)
        found.taken.erase(address);
    found.free.insert(gone.begin(), gone.end());
    return found;
}

/// Whether the kernel is still about to look.
bool isUndecided(unsigned state) { return (state & (NUD_INCOMPLETE | NUD_STALE | NUD_DELAY | NUD_PROBE)) != 0; }

} // namespace

Neighbourhood neighbourhoodOf(const Adapter &adapter, const AdapterAddress &subnet,
                              const std::vector<Address> &addresses, const std::function<bool()> &isCancelled) {
    Neighbourhood result;
    if (!isUsable(adapter))
        return result;
    const auto start = std::chrono::steady_clock::now();
    auto lastAsked = start;
    std::vector<Descriptor> sockets;
    Open open;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        if (i % AddressesPerSocket == 0)
            sockets.push_back(openSocket(adapter, subnet.address));
        if (ask(sockets.back(), addresses[i]))
            open.emplace(addresses[i], sockets.size() - 1);
    }
    const auto hasTime = [&] {
        return std::chrono::steady_clock::now() < std::min(lastAsked + AskingTime, start + 2 * AskingTime);
    };
    while (!open.empty() && hasTime() && !(isCancelled && isCancelled())) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        Open forgotten = open; // a crowded table makes room at the cost of failed entries
        for (const Neighbour &neighbour : neighboursOf(adapter.index)) {
            forgotten.erase(neighbour.address);
            decide(neighbour, &open, &result);
        }
        for (const auto &[address, socket] : forgotten) {
            ask(sockets[socket], address);
            lastAsked = std::chrono::steady_clock::now();
        }
    }
    if (!result.free.empty() && !isStillUsable(adapter)) // nobody could answer
        result.free.clear();
    return result;
}

Neighbourhood stillThere(const Adapter &adapter, const AdapterAddress &subnet, const Neighbourhood &found,
                         const std::function<bool()> &isCancelled) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(9);
    std::vector<Address> forgotten; // a crowded table makes room at the cost of old entries, too
    std::set<Address> gone;
    std::set<Address> open = addressesOf(found.taken);
    while (!open.empty() && std::chrono::steady_clock::now() < deadline && !(isCancelled && isCancelled())) {
        const std::map<Address, unsigned> states = statesOf(adapter);
        for (auto each = open.begin(); each != open.end();) {
            const auto place = states.find(*each);
            const unsigned state = place == states.end() ? NUD_NONE : place->second;
            if (state == NUD_NONE)
                forgotten.push_back(*each);
            if (state == NUD_FAILED)
                gone.insert(*each);
            each = isUndecided(state) ? std::next(each) : open.erase(each);
        }
        if (!open.empty())
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    gone.merge(neighbourhoodOf(adapter, subnet, forgotten, isCancelled).free);
    return gone.empty() || isStillUsable(adapter) ? without(gone, found) : found;
}

} // namespace commissioning
