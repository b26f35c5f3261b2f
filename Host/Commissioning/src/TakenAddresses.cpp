#include "commissioning/TakenAddresses.h"

#include "commissioning/Neighbourhood.h"
#include "commissioning/Selection.h"
#include "commissioning/Survey.h"
#include "commissioning/WantedAddresses.h"

#include <vector>

namespace commissioning {

namespace {

/// New addresses of one subnet.
struct Question {
    const Adapter *adapter = nullptr;
    std::vector<Address> addresses;
};

std::map<const AdapterAddress *, Question> questionsOf(const PlanReview &review, const Inventory &inventory,
                                                       std::set<Address> known) {
    for (const Camera &camera : inventory.cameras)
        known.insert(camera.address);
    std::map<const AdapterAddress *, Question> questions;
    for (const PlannedChange &change : review.changes) {
        const Adapter *const adapter = adapterOf(change.camera, inventory, change.after.address);
        const AdapterAddress *const subnet = subnetOf(adapter, change.after.address);
        if (!change.addressing || !subnet || known.count(change.after.address) != 0)
            continue;
        Question &question = questions[subnet];
        question.adapter = adapter;
        question.addresses.push_back(change.after.address);
    }
    return questions;
}

/// Where the kernel remembers listed cameras, which have been heard elsewhere since: by their own MAC, or by that of an
/// interface which answers for several.
std::set<Address> leftAddresses(const Adapter &adapter, const Inventory &inventory) {
    const std::vector<Neighbour> neighbours = neighboursOf(adapter.index);
    std::set<std::string> macs;
    std::set<Address> addresses;
    for (const Camera &camera : inventory.cameras) {
        macs.insert(camera.mac);
        addresses.insert(camera.address);
    }
    for (const Neighbour &neighbour : neighbours) {
        if (addresses.count(neighbour.address) != 0)
            macs.insert(neighbour.mac);
    }
    std::set<Address> left;
    for (const Neighbour &neighbour : neighbours) {
        if (!neighbour.mac.empty() && macs.count(neighbour.mac) != 0)
            left.insert(neighbour.address);
    }
    return left;
}

} // namespace

std::map<Address, std::string> findTaken(const PlanReview &review, const Inventory &inventory, std::set<Address> *pFree,
                                         const std::function<bool()> &isCancelled) {
    std::map<Address, std::string> taken;
    for (const auto &[subnet, question] : questionsOf(review, inventory, *pFree)) {
        const std::set<Address> left = leftAddresses(*question.adapter, inventory);
        Neighbourhood found = neighbourhoodOf(*question.adapter, *subnet, question.addresses, isCancelled);
        for (const Address address : left)
            found.taken.erase(address);
        found = stillThere(*question.adapter, *subnet, found, isCancelled);
        pFree->insert(found.free.begin(), found.free.end());
        taken.merge(found.taken);
    }
    return taken;
}

} // namespace commissioning
