#include "commissioning/Events.h"

#include "commissioning/AddressText.h"
#include "commissioning/Words.h"

#include <algorithm>

namespace commissioning {

namespace {

constexpr int Patience = 2; // searches in a row without something that is then gone

std::vector<std::string> sorted(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

std::string joined(const std::vector<std::string> &names) {
    std::string text;
    for (const std::string &name : sorted(names))
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

std::string modeText(const std::optional<Mode> &mode) { return mode ? toText(*mode) : ""; }
std::string addressText(Address address) { return address != 0 ? toText(address) : ""; }
std::string statusText(const Camera &camera) { return camera.hidden ? "hidden" : toText(camera.status); }
std::string holderText(const Camera &camera) {
    return camera.holder ? toText(camera.holder->address) + ":" + std::to_string(camera.holder->port) : "";
}
std::string storedText(const StoredAddresses &stored) {
    const std::string gateway = stored.gateway != 0 ? " gateway " + toText(stored.gateway) : "";
    return toText({stored.address, stored.mask}) + gateway;
}

/// Gathers what differs.
class Comparison {
public:
    void add(const char *what, const std::string &before, const std::string &after) {
        if (before != after)
            m_Differences.push_back({what, before, after});
    }
    std::vector<Difference> take() { return std::move(m_Differences); }

private:
    std::vector<Difference> m_Differences;
};

/// What a camera has other than a plan wants it, where both are known.
std::vector<Difference> driftOf(const PlannedChange &change) {
    const Camera &camera = change.camera;
    const Settings now = settingsOf(camera);
    Comparison comparison;
    comparison.add("mode", modeText(change.after.mode), modeText(now.mode));
    if (change.after.mode == Mode::Static) {
        const Address planned = change.after.address; // to have both now and after its next restart
        comparison.add("address", addressText(planned),
                       addressText(now.address == planned ? camera.address : now.address));
        comparison.add("mask", addressText(change.after.mask), addressText(now.mask));
        comparison.add("gateway", addressText(change.after.gateway), addressText(now.gateway));
    }
    comparison.add("name", change.after.name, now.name);
    return comparison.take();
}

Event eventOf(Event::Kind kind, const Camera &camera) { return {kind, camera, {}, {}, {}}; }
Event eventOf(Event::Kind kind, const Finding &finding) { return {kind, {}, {}, finding, {}}; }
Event eventOf(Event::Kind kind, const PlanProblem &problem) { return {kind, {}, {}, {}, problem}; }

/// Counts the searches that missed what is known and forgets what is gone. \param goneKind tells of it.
template <class Sightings, class Keys>
void forgetMissed(Sightings &known, const Keys &seen, Event::Kind goneKind, std::vector<Event> *pEvents) {
    for (auto entry = known.begin(); entry != known.end();) {
        auto &sighting = entry->second;
        sighting.missed = seen.count(entry->first) != 0 ? 0 : sighting.missed + 1;
        if (sighting.missed < Patience) {
            ++entry;
            continue;
        }
        pEvents->push_back(eventOf(goneKind, sighting.value));
        entry = known.erase(entry);
    }
}

} // namespace

const char *toText(Event::Kind kind) {
    static const char *const texts[] = {"appeared", "vanished",     "changed",      "finding-came",     "finding-went",
                                        "drifted",  "back-on-plan", "plan-problem", "plan-problem-went"};
    return texts[static_cast<std::size_t>(kind)];
}

std::vector<Difference> differencesOf(const Camera &before, const Camera &after) {
    Comparison comparison;
    comparison.add("vendor", before.vendor, after.vendor);
    comparison.add("model", before.model, after.model);
    comparison.add("serial", before.serial, after.serial);
    comparison.add("name", before.name, after.name);
    comparison.add("adapters", joined(before.adapters), joined(after.adapters));
    comparison.add("mode", modeText(before.mode), modeText(after.mode));
    comparison.add("address", addressText(before.address), addressText(after.address));
    comparison.add("mask", addressText(before.mask), addressText(after.mask));
    comparison.add("gateway", addressText(before.gateway), addressText(after.gateway));
    if (before.stored && after.stored)
        comparison.add("stored", storedText(*before.stored), storedText(*after.stored));
    comparison.add("status", statusText(before), statusText(after));
    comparison.add("holder", holderText(before), holderText(after));
    return comparison.take();
}

std::vector<Event> Watcher::compare(const Inventory &found) {
    std::vector<Event> events;
    compareCameras(found, &events);
    compareFindings(found, &events);
    m_Present.adapters = found.adapters;
    if (m_IsFirst)
        events.clear();
    m_IsFirst = false;
    return events;
}

void Watcher::compareCameras(const Inventory &found, std::vector<Event> *pEvents) {
    std::set<std::string> ambiguous;
    const auto look = [&](const Finding &finding) {
        if (finding.code == "duplicate-mac")
            ambiguous.insert(finding.camera);
    };
    std::for_each(found.findings.begin(), found.findings.end(), look);
    std::for_each(m_Present.findings.begin(), m_Present.findings.end(), look);
    std::set<std::string> seen;
    for (const Camera &camera : found.cameras) {
        if (!seen.insert(camera.mac).second)
            continue;
        const auto [known, isNew] = m_Cameras.try_emplace(camera.mac, Sighting<Camera>{camera});
        if (isNew)
            pEvents->push_back(eventOf(Event::Kind::Appeared, camera));
        else
            update(&known->second, camera, ambiguous.count(camera.mac) != 0, pEvents);
    }
    forgetMissed(m_Cameras, seen, Event::Kind::Vanished, pEvents);
    m_Present.cameras.clear();
    for (const auto &[mac, known] : m_Cameras)
        m_Present.cameras.push_back(known.value);
}

void Watcher::update(Sighting<Camera> *pKnown, Camera now, bool isAmbiguous, std::vector<Event> *pEvents) {
    const std::vector<std::string> usual = sorted(pKnown->value.adapters);
    const std::vector<std::string> current = sorted(now.adapters);
    const bool isNarrow =
        current.size() < usual.size() && std::includes(usual.begin(), usual.end(), current.begin(), current.end());
    if (isNarrow && !pKnown->isNarrow)
        now.adapters = pKnown->value.adapters;
    pKnown->isNarrow = isNarrow;
    std::vector<Difference> differences;
    if (!isAmbiguous)
        differences = differencesOf(pKnown->value, now);
    pKnown->value = std::move(now);
    if (!differences.empty())
        pEvents->push_back({Event::Kind::Changed, pKnown->value, std::move(differences), {}, {}});
}

/// Whether a camera that is not given up yet is behind the adapter.
bool Watcher::isMissedBehind(const std::string &adapter) const {
    return std::any_of(m_Cameras.begin(), m_Cameras.end(), [&](const auto &entry) {
        const std::vector<std::string> &names = entry.second.value.adapters;
        return entry.second.missed > 0 && std::count(names.begin(), names.end(), adapter) != 0;
    });
}

void Watcher::compareFindings(const Inventory &found, std::vector<Event> *pEvents) {
    std::set<FindingKey> seen;
    for (const Finding &finding : found.findings) {
        if (finding.code == "no-answer" && isMissedBehind(finding.adapter))
            continue;
        const FindingKey key(finding.code, finding.adapter, finding.camera);
        seen.insert(key);
        const auto [known, isNew] = m_Findings.try_emplace(key, Sighting<Finding>{finding});
        known->second.value = finding;
        if (isNew)
            pEvents->push_back(eventOf(Event::Kind::FindingCame, finding));
    }
    forgetMissed(m_Findings, seen, Event::Kind::FindingWent, pEvents);
    m_Present.findings.clear();
    for (const auto &[key, known] : m_Findings)
        m_Present.findings.push_back(known.value);
    std::stable_sort(m_Present.findings.begin(), m_Present.findings.end(),
                     [](const Finding &a, const Finding &b) { return a.severity < b.severity; });
}

std::vector<Event> Watcher::compare(const Plan &plan) {
    std::vector<Event> events;
    if (!plan.problems.empty()) {
        compareProblems(plan.problems, &events);
        return events;
    }
    const PlanReview review = commissioning::review(plan, m_Present);
    std::set<std::string> offPlan;
    for (const PlannedChange &change : review.changes) {
        const std::string &mac = change.camera.mac;
        const bool wasOff = m_OffPlan.count(mac) != 0;
        const std::vector<Difference> drift = driftOf(change);
        // A camera whose stored settings cannot be read counts as off only for what can be seen.
        const bool isOff = change.differs() && (change.camera.stored || !drift.empty());
        if (isOff)
            offPlan.insert(mac);
        if (isOff && !wasOff)
            events.push_back({Event::Kind::Drifted, change.camera, drift, {}, {}});
        if (!isOff && wasOff)
            events.push_back(eventOf(Event::Kind::BackOnPlan, change.camera));
    }
    m_OffPlan = std::move(offPlan);
    compareProblems(review.problems, &events);
    return events;
}

void Watcher::compareProblems(const std::vector<PlanProblem> &problems, std::vector<Event> *pEvents) {
    std::map<ProblemKey, PlanProblem> now;
    for (const PlanProblem &problem : problems)
        now.emplace(ProblemKey(problem.line, problem.character, problem.text), problem);
    for (const auto &[key, problem] : now) {
        if (m_Problems.count(key) == 0)
            pEvents->push_back(eventOf(Event::Kind::ProblemCame, problem));
    }
    for (const auto &[key, problem] : m_Problems) {
        if (now.count(key) == 0)
            pEvents->push_back(eventOf(Event::Kind::ProblemWent, problem));
    }
    m_Problems = std::move(now);
}

} // namespace commissioning
