#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Plan.h"
#include "commissioning/Refusals.h"
#include "commissioning/Selection.h"
#include "commissioning/WantedAddresses.h"

#include <algorithm>
#include <map>
#include <set>

namespace commissioning {

namespace {

bool namesAddresses(const PlanEntry &entry) { return entry.address || entry.mask || entry.gateway; }

/// A mode that needs no change leaves the word as it is, whatever else is enabled in it.
std::uint32_t wordAfter(const PlanEntry &entry, const Camera &camera) {
    if (entry.word)
        return *entry.word;
    return entry.mode && entry.mode != camera.mode ? wordOf(*entry.mode) : camera.word;
}

class Reviewer {
public:
    Reviewer(const Plan &plan, const Inventory &inventory, const std::map<Address, std::string> &taken)
        : m_Plan(plan), m_Inventory(inventory), m_Taken(taken), m_Names(inventory) {
        m_Review.problems = plan.problems;
        m_Around.allowsForeignSubnet = plan.allowsForeignSubnets;
        for (const Adapter &adapter : inventory.adapters)
            m_Around.own.insert(m_Around.own.end(), adapter.addresses.begin(), adapter.addresses.end());
        std::copy_if(inventory.findings.begin(), inventory.findings.end(), std::back_inserter(m_Twins), &tellsOfTwin);
    }

    PlanReview review() {
        for (const PlanEntry &entry : m_Plan.entries)
            lookUp(entry);
        findOthers();
        for (std::size_t i = 0; i < m_Entries.size(); ++i)
            judge(*m_Entries[i], m_Review.changes[i]);
        sortProblems();
        return std::move(m_Review);
    }

private:
    /// At the first of the cells that the entry has.
    void report(const PlanEntry &entry, std::vector<PlanColumn> columns, const std::string &text) {
        columns.push_back(PlanColumn::Camera);
        PlanPlace place{entry.line, 0};
        for (auto column = columns.rbegin(); column != columns.rend(); ++column) {
            const PlanPlace &cell = entry.places[static_cast<std::size_t>(*column)];
            place = cell.line != 0 ? cell : place;
        }
        m_Review.problems.push_back({place.line, place.character, entry.line == 0 ? entry.camera + ": " + text : text});
    }

    void lookUp(const PlanEntry &entry) {
        if (entry.camera.empty()) // which its reader has reported
            return;
        const std::vector<const Camera *> cameras = m_Names.find(entry.camera);
        if (cameras.empty())
            return report(entry, {}, "There is no camera '" + entry.camera + "'.");
        if (cameras.size() > 1)
            return report(entry, {}, ambiguity(entry, cameras));
        const auto [first, isNew] = m_ByCamera.emplace(cameras.front(), &entry);
        if (!isNew)
            return report(entry, {},
                          "This is the camera " + macText(cameras.front()->mac) + " again" +
                              lineOf(first->second->line) + ".");
        m_Entries.push_back(&entry);
        m_Review.changes.push_back(changeOf(entry, *cameras.front()));
    }

    static std::string lineOf(int line) { return line == 0 ? "" : " (line " + std::to_string(line) + ")"; }

    static std::string ambiguity(const PlanEntry &entry, const std::vector<const Camera *> &cameras) {
        std::string text = "'" + entry.camera + "' is ambiguous. It could be ";
        for (const Camera *camera : cameras)
            text += (camera == cameras.front() ? "" : " or ") + macText(camera->mac);
        return text + ".";
    }

    PlannedChange changeOf(const PlanEntry &entry, const Camera &camera) const {
        PlannedChange change;
        change.camera = camera;
        change.line = entry.line;
        change.word = wordAfter(entry, camera);
        change.after = settingsOf(camera);
        change.after.mode = entry.mode || entry.word ? modeOf(change.word) : camera.mode;
        change.after.name = entry.name.value_or(camera.name);
        change.naming = change.after.name != camera.name;
        change.addressing = change.word != camera.word;
        if (change.after.mode == Mode::Static)
            addressStatic(entry, &change);
        else
            addressOtherwise(entry, &change);
        if (const Adapter *const adapter = adapterOf(camera, m_Inventory, change.after.address))
            change.adapter = adapter->name;
        return change;
    }

    void addressStatic(const PlanEntry &entry, PlannedChange *pChange) const {
        const Camera &camera = pChange->camera;
        if (camera.mode == Mode::Static && !namesAddresses(entry))
            return;
        const StoredAddresses known = knownAddresses(camera);
        const bool keepsAddress = !entry.address || *entry.address == known.address;
        const auto mask = keepsAddress && !entry.mask && known.mask != 0 ? std::optional(known.mask) : entry.mask;
        const Adapter *const adapter = adapterOf(camera, m_Inventory, entry.address.value_or(known.address));
        const auto wanted = wantedAddresses(camera, adapter, {entry.address, mask, entry.gateway});
        pChange->after = {Mode::Static, wanted.address, wanted.mask, wanted.gateway, pChange->after.name};
        const bool isStored = camera.stored && *camera.stored == wanted && camera.address == wanted.address;
        pChange->addressing = pChange->addressing || camera.mode != Mode::Static || !isStored;
        if (pChange->addressing)
            pChange->stored = wanted;
    }

    /// Addresses beside such a mode are put back by an undo only.
    static void addressOtherwise(const PlanEntry &entry, PlannedChange *pChange) {
        if (entry.line == 0 && entry.address) {
            const StoredAddresses wanted{*entry.address, entry.mask.value_or(0), entry.gateway.value_or(0)};
            pChange->stored = wanted;
            pChange->addressing =
                pChange->addressing || !pChange->camera.stored || !(*pChange->camera.stored == wanted);
        }
        if (pChange->addressing)
            pChange->after.address = pChange->after.mask = pChange->after.gateway = 0;
    }

    /// Who keeps the addresses he has: who is not in the plan, and whom it leaves there. What becomes of the camera of
    /// a broken line nobody knows.
    void findOthers() {
        std::set<std::string> moving;
        for (std::size_t i = 0; i < m_Entries.size(); ++i) {
            const PlannedChange &change = m_Review.changes[i];
            if (change.addressing || m_Entries[i]->isBroken)
                moving.insert(change.camera.mac);
        }
        for (const Camera &camera : m_Inventory.cameras) {
            if (moving.count(camera.mac) != 0)
                continue;
            m_Keepers.emplace(camera.address, &camera);
            if (camera.stored && camera.stored->address != camera.address)
                m_Keepers.emplace(camera.stored->address, &camera);
        }
    }

    void judge(const PlanEntry &entry, const PlannedChange &change) {
        if (entry.isBroken)
            return;
        const bool isStatic = change.after.mode == Mode::Static;
        if (!isStatic && namesAddresses(entry) && entry.line != 0)
            return report(entry, {PlanColumn::IpAddress, PlanColumn::Mask, PlanColumn::Gateway},
                          "Only a static camera takes addresses, and this one " +
                              std::string(entry.mode ? "is not to be one." : "is none."));
        if (!change.differs())
            return;
        const auto reportAny = [&](std::vector<PlanColumn> columns, const std::string &reason) {
            if (!reason.empty())
                report(entry, std::move(columns), reason);
        };
        reportAny({}, refusalOfHolder(change.camera));
        reportAny({}, refusalOfTwin(change.camera.mac, m_Twins));
        if (change.addressing && change.after.mode)
            reportAny({PlanColumn::Mode}, refusalOfMode(change.camera, *change.after.mode));
        if (change.addressing && isStatic && change.stored)
            judgeAddress(entry, change);
    }

    void judgeAddress(const PlanEntry &entry, const PlannedChange &change) {
        const StoredAddresses &after = *change.stored;
        if (!entry.address && after.address == 0)
            return report(entry, {PlanColumn::Mode}, "The camera has no address stored, and none is given.");
        const auto [first, isNew] = m_ByAddress.emplace(after.address, &change);
        if (!isNew)
            return report(entry, {PlanColumn::IpAddress, PlanColumn::Mode},
                          "The camera " + macText(first->second->camera.mac) + lineOf(first->second->line) +
                              " gets the address " + toText(after.address) + ", too.");
        const Adapter *adapter = adapterOf(change.camera, m_Inventory, after.address);
        m_Around.adapter = adapter ? adapter->addresses : std::vector<AdapterAddress>();
        m_Around.adapterName = change.adapter;
        m_Around.hidden.clear();
        const auto [keeper, end] = m_Keepers.equal_range(after.address);
        std::for_each(keeper, end, [this](const auto &each) { m_Around.hidden.push_back(*each.second); });
        std::string reason = refusalOfAddress(after.address, after.mask, change.camera.mac, m_Around);
        if (reason.empty())
            reason = refusalByOthers(after.address, change.camera.mac, m_Taken);
        if (!reason.empty())
            return report(
                entry,
                {after.mask == 0 ? PlanColumn::Mask : PlanColumn::IpAddress, PlanColumn::IpAddress, PlanColumn::Mode},
                reason);
        const std::string refusal = refusalOfGateway(after.gateway, after.address, after.mask);
        if (!refusal.empty())
            report(entry, {PlanColumn::Gateway, PlanColumn::IpAddress, PlanColumn::Mode}, refusal);
    }

    void sortProblems() {
        auto &problems = m_Review.problems;
        std::stable_sort(problems.begin(), problems.end(), [](const PlanProblem &a, const PlanProblem &b) {
            return std::pair(a.line, a.character) < std::pair(b.line, b.character);
        });
        if (problems.size() <= MaxPlanProblems)
            return;
        const std::size_t more = problems.size() - MaxPlanProblems;
        problems.resize(MaxPlanProblems);
        problems.push_back({problems.back().line, 0, "And " + std::to_string(more) + " more."});
    }

    const Plan &m_Plan;
    const Inventory &m_Inventory;
    const std::map<Address, std::string> &m_Taken;
    const CameraNames m_Names;
    std::vector<Finding> m_Twins; ///< there may be a finding for each camera
    PlanReview m_Review;
    std::vector<const PlanEntry *> m_Entries; ///< of the changes, in their order
    std::map<const Camera *, const PlanEntry *> m_ByCamera;
    std::map<Address, const PlannedChange *> m_ByAddress; ///< those that the plan gives
    std::multimap<Address, const Camera *> m_Keepers;     ///< by each address that they keep
    AddressSurroundings m_Around;
};

} // namespace

bool PlanReview::wouldChange() const {
    return std::any_of(changes.begin(), changes.end(), [](const PlannedChange &change) { return change.differs(); });
}

PlanReview review(const Plan &plan, const Inventory &inventory, const std::map<Address, std::string> &taken) {
    return Reviewer(plan, inventory, taken).review();
}

} // namespace commissioning
