#include "PlanChains.h"

namespace commissioning {

std::vector<bool> entangled(const std::vector<Place> &places, std::vector<bool> marked) {
    std::set<Address> kept;
    std::size_t count = 0;
    do {
        count = kept.size();
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (places[i].gets != 0 && kept.count(places[i].gets) != 0)
                marked[i] = true;
            if (marked[i])
                kept.insert(places[i].has.begin(), places[i].has.end());
        }
    } while (kept.size() != count);
    return marked;
}

std::optional<std::size_t> freest(const std::vector<Place> &places, const std::vector<std::size_t> &among) {
    std::optional<std::size_t> movable;
    for (const std::size_t candidate : among) {
        const Place &own = places[candidate];
        bool isTaken = false;
        bool isWanted = false;
        for (std::size_t i = 0; i < places.size(); ++i) {
            isTaken = isTaken || (i != candidate && own.gets != 0 && places[i].has.count(own.gets) != 0);
            isWanted = isWanted || (i != candidate && own.has.count(places[i].gets) != 0);
        }
        if (!isTaken && !isWanted)
            return candidate;
        if (!isTaken && !movable)
            movable = candidate;
    }
    return movable;
}

std::set<Address> addressesOf(const Camera &camera) {
    std::set<Address> addresses{camera.address};
    if (camera.mode == Mode::Static && camera.stored)
        addresses.insert(camera.stored->address);
    addresses.erase(0);
    return addresses;
}

} // namespace commissioning
