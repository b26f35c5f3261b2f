#include "JournalPage.h"

#include "ChangeRecord.h"
#include "Table.h"
#include "commissioning/AddressText.h"
#include "commissioning/Words.h"

#include <map>
#include <set>
#include <vector>

using namespace commissioning;

namespace commandline {

namespace {

/// What a user asked for: a change, or a plan with all its changes.
struct Deed {
    const JournalEntry *first = nullptr;
    std::set<std::string> cameras;
    std::map<Fate, int> fates;

    int count(std::initializer_list<Fate> some) const {
        int sum = 0;
        for (const Fate fate : some)
            sum += fates.count(fate) != 0 ? fates.at(fate) : 0;
        return sum;
    }
};

const std::string &idOf(const JournalEntry &entry) { return entry.plan.empty() ? entry.id : entry.plan; }

bool isStep(const JournalEntry &entry) { return entry.what == "temporary" || entry.what == "rollback"; }

std::vector<Deed> deedsOf(const std::vector<JournalEntry> &entries) {
    std::vector<Deed> deeds;
    std::map<std::string, std::size_t> places;
    for (const JournalEntry &entry : entries) {
        if (isStep(entry))
            continue;
        const auto [place, isNew] = places.emplace(idOf(entry), deeds.size());
        if (isNew)
            deeds.emplace_back().first = &entry;
        Deed &deed = deeds[place->second];
        deed.cameras.insert(entry.mac);
        ++deed.fates[entry.fate];
    }
    return deeds;
}

std::string numberText(int number) { return number == 0 ? "" : std::to_string(number); }

std::string whatText(const JournalEntry &entry) {
    return entry.what + (entry.file.empty() ? "" : " " + entry.file) +
           (entry.undoes.empty() ? "" : " of " + entry.undoes);
}

Table::Row rowOf(const Deed &deed) {
    const std::size_t count = deed.cameras.size();
    return {idOf(*deed.first),
            deed.first->time,
            whatText(*deed.first),
            count == 1 ? macText(*deed.cameras.begin()) : std::to_string(count) + " cameras",
            numberText(deed.count({Fate::Done})),
            numberText(deed.count({Fate::Failed, Fate::RolledBack, Fate::Unconfirmed})),
            numberText(deed.count({Fate::Open}))};
}

Json snapshotJson(const Snapshot &snapshot) {
    return {{"word", snapshot.word},
            {"current", storedJson(snapshot.current)},
            {"stored", snapshot.stored ? storedJson(*snapshot.stored) : Json()},
            {"name", snapshot.name}};
}

Json entryJson(const JournalEntry &entry) {
    return {{"id", entry.id},
            {"plan", textOrNull(entry.plan)},
            {"undoes", textOrNull(entry.undoes)},
            {"file", textOrNull(entry.file)},
            {"time", entry.time},
            {"camera", macText(entry.mac)},
            {"what", entry.what},
            {"before", snapshotJson(entry.before)},
            {"wanted", settingsJson(entry.wanted)},
            {"state", toText(entry.fate)},
            {"path", pathJson(entry.path)},
            {"after", entry.after ? snapshotJson(*entry.after) : Json()},
            {"text", textOrNull(entry.text)}};
}

} // namespace

std::string logPage(const JournalContent &log, const Terminal &terminal) {
    if (log.entries.empty())
        return "The journal has no changes.\n";
    Table table({"ID", "TIME", "WHAT", "CAMERAS", "DONE", "FAILED", "OPEN"}, {2});
    for (const Deed &deed : deedsOf(log.entries))
        table.add(rowOf(deed));
    return table.text(terminal.width());
}

Json logJson(const std::optional<JournalContent> &log) {
    if (!log)
        return nullptr;
    Json entries = Json::array();
    for (const JournalEntry &entry : log->entries)
        entries.push_back(entryJson(entry));
    return entries;
}

} // namespace commandline
