#include "PlanReading.h"

#include "Answers.h"
#include "SideBySide.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Refusals.h"
#include "commissioning/Search.h"

#include <algorithm>

namespace commissioning {

using namespace Corvo;

namespace {

/// Cameras that a broadcast reaches may still miss one.
constexpr int Searches = 4;

class Reader {
public:
    Reader(IGigETransportLayer &layer, const Inventory &inventory, const PlanOptions &options, PlanOutcome &outcome)
        : m_Layer(layer), m_Inventory(inventory), m_Options(options), m_Outcome(outcome) {}

    PlanReading run() {
        listen();
        PlanReading reading;
        reading.inventory = present();
        for (PlanRecord &record : m_Outcome.records)
            take(record, &reading.members);
        refuseTaken(&reading);
        return reading;
    }

private:
    void listen() {
        m_Heard = search(m_Layer, m_Answers.options());
        for (int i = 1; i < Searches && !missing().empty(); ++i) {
            m_Answers.forget();
            for (const CDeviceInfo &device : discover(m_Layer, m_Answers.options()))
                add(device);
        }
        const std::vector<const Camera *> silent = missing();
        std::vector<DeviceInfoList> answers(silent.size());
        sideBySide(silent.size(), m_Options.atOnce, [&](std::size_t i) { ask(silent[i]->address, answers[i]); });
        for (const DeviceInfoList &answer : answers) {
            for (const CDeviceInfo &device : answer)
                add(device);
        }
        probeAgain();
    }

    void add(const CDeviceInfo &device) {
        if (findByMac(m_Heard, propertyOf(device, PropertyMac).c_str()) == nullptr)
            m_Heard.push_back(device);
    }

    /// Those that were heard later, and those whose answer to the probe was lost.
    void probeAgain() {
        std::vector<CDeviceInfo *> open;
        for (const PlanRecord &record : m_Outcome.records) {
            CDeviceInfo *const device = findByMac(m_Heard, record.change.camera.mac);
            if (device != nullptr && record.change.differs() && !storedAddressesOf(*device) &&
                record.change.camera.stored)
                open.push_back(device);
        }
        sideBySide(open.size(), m_Options.atOnce, [&](std::size_t i) { probe(m_Layer, *open[i]); });
    }

    std::vector<const Camera *> missing() {
        std::vector<const Camera *> cameras;
        for (const PlanRecord &record : m_Outcome.records) {
            if (record.change.differs() && !findByMac(m_Heard, record.change.camera.mac))
                cameras.push_back(&record.change.camera);
        }
        return cameras;
    }

    Inventory present() {
        Inventory inventory{m_Inventory.adapters, inventoryOf(m_Heard).cameras, {}};
        for (const Camera &known : m_Inventory.cameras) {
            if (!findByMac(m_Heard, known.mac))
                inventory.cameras.push_back(known);
        }
        return inventory;
    }

    bool isTwin(const std::string &mac) const {
        const auto isNamed = [&](const Finding &finding) {
            return finding.code == "duplicate-mac" && finding.camera == mac;
        };
        return m_Answers.isTwin(mac) || std::any_of(m_Inventory.findings.begin(), m_Inventory.findings.end(), isNamed);
    }

    std::string refusalOf(const PlannedChange &planned, const CDeviceInfo *device) const {
        if (isTwin(planned.camera.mac))
            return "Another camera has the same MAC address: a change could reach either.";
        if (!device)
            return planned.camera.hidden ? "This host drops the camera's answers. It must be rescued first."
                                         : "The camera does not answer any more.";
        if (std::string held = refusalOfHolder(*device); !held.empty())
            return held;
        if (hasChanged(planned.camera, cameraOf(*device)))
            return "The camera's settings have changed since the plan was checked.";
        if (planned.addressing && !storedFor(planned, cameraOf(*device)) && needsAddresses(planned))
            return "It is not known which static address the camera has stored.";
        return "";
    }

    static bool needsAddresses(const PlannedChange &planned) { return planned.after.mode == Mode::Static; }

    /// A static mode is never written without addresses.
    static std::optional<StoredAddresses> storedFor(const PlannedChange &planned, const Camera &now) {
        return planned.stored || !needsAddresses(planned) ? planned.stored : now.stored;
    }

    static bool hasChanged(const Camera &checked, const Camera &now) {
        if (checked.word != now.word || checked.name != now.name)
            return true;
        if (checked.stored && now.stored)
            return !(*checked.stored == *now.stored);
        return now.mode == Mode::Static &&
               !(snapshotOf(checked).current == snapshotOf(now).current); // a lease may change by itself
    }

    void take(PlanRecord &record, std::vector<PlanMember> *pMembers) {
        const PlannedChange &planned = record.change;
        if (!planned.differs())
            return;
        const CDeviceInfo *const device = findByMac(m_Heard, planned.camera.mac);
        if (const std::string reason = refusalOf(planned, device); !reason.empty()) {
            record.result = Result::refusal(reason);
            return;
        }
        pMembers->push_back(memberOf(record, *device));
    }

    static PlanMember memberOf(PlanRecord &record, const CQuorelGigEDeviceInfo &device) {
        const PlannedChange &planned = record.change;
        PlanMember member;
        member.record = &record;
        member.before = cameraOf(device);
        member.forward.change = changeOf(device, planned.adapter, planned.word, storedFor(planned, member.before));
        member.forward.isAddressing = planned.addressing;
        member.forward.isReadable = member.before.status == Status::Ok;
        if (planned.naming)
            member.forward.name = planned.after.name;
        member.place.has = addressesOf(member.before);
        const Address gets = planned.addressing ? member.forward.expectedAddress() : 0;
        member.place.gets = member.place.has.count(gets) != 0 ? 0 : gets;
        prepareBack(&member);
        return member;
    }

    static void prepareBack(PlanMember *pMember) {
        const Camera &before = pMember->before;
        std::optional<StoredAddresses> stored = before.stored;
        if (!stored && before.mode == Mode::Static)
            stored = snapshotOf(before).current;
        else if (!stored && pMember->forward.change.storesAddresses())
            pMember->lasting = "The static address that it had stored before is not known.";
        pMember->back = pMember->forward;
        const bool isTouched = before.mode == Mode::Static || pMember->forward.change.storesAddresses();
        pMember->back.change = changeOf(pMember->forward.change.device, pMember->forward.change.adapter, before.word,
                                        isTouched ? stored : std::nullopt);
        pMember->back.change.modeDiffers = pMember->forward.change.modeDiffers;
        pMember->back.change.word = before.word;
        if (pMember->forward.name)
            pMember->back.name = before.name;
    }

    /// Who is not changed keeps its address, and whoever was to get that one keeps its own.
    void refuseTaken(PlanReading *pReading) {
        std::vector<Place> places;
        std::vector<PlanMember> &members = pReading->members;
        std::vector<bool> keeps;
        for (const PlanMember &member : members) {
            places.push_back(member.place);
            keeps.push_back(!member.forward.isAddressing);
        }
        for (const Camera &camera : pReading->inventory.cameras) {
            const auto isOwn = [&](const PlanMember &member) { return member.before.mac == camera.mac; };
            if (std::any_of(members.begin(), members.end(), isOwn))
                continue;
            places.push_back({addressesOf(camera), 0});
            keeps.push_back(true);
        }
        const std::vector<bool> stays = entangled(places, keeps);
        for (std::size_t i = members.size(); i-- > 0;) {
            if (!stays[i] || keeps[i])
                continue;
            members[i].record->result = Result::refusal(takenText(members[i]));
            members.erase(members.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }

    IGigETransportLayer &m_Layer;
    const Inventory &m_Inventory;
    const PlanOptions &m_Options;
    PlanOutcome &m_Outcome;
    DeviceInfoList m_Heard;
    Answers m_Answers;
};

} // namespace

PlanReading readAgain(IGigETransportLayer &layer, const PlanReview &review, const Inventory &inventory,
                      const PlanOptions &options, PlanOutcome *pOutcome) {
    for (const PlannedChange &planned : review.changes)
        pOutcome->records.push_back({planned, planned.differs() ? PlanState::NotBegun : PlanState::Unchanged, {}});
    return Reader(layer, inventory, options, *pOutcome).run();
}

} // namespace commissioning
