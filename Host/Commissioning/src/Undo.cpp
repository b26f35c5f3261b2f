#include "commissioning/Undo.h"

#include "JournalLines.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "gxapi/GvcpMessages.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace commissioning {

namespace {

using Entries = std::vector<JournalEntry>;

constexpr std::uint32_t ModeBits = GEV_IP_CONFIG_PERSISTENT_IP | GEV_IP_CONFIG_DHCP | GEV_IP_CONFIG_LLA;
constexpr std::uint32_t StaticBit = GEV_IP_CONFIG_PERSISTENT_IP;

bool isAmong(const std::string &what, std::initializer_list<const char *> words) {
    return std::any_of(words.begin(), words.end(), [&](const char *word) { return what == word; });
}

/// What a user asked for that alters what a camera has stored.
bool isStoring(const JournalEntry &entry) { return isAmong(entry.what, {"set", "plan", "rescue", "name"}); }

bool writesAddresses(const JournalEntry &entry) {
    return isAmong(entry.what, {"set", "plan", "rescue", "undo"}) && entry.wanted.address != 0;
}

bool belongsTo(const JournalEntry &entry, const std::string &id) {
    return !id.empty() && (entry.id == id || entry.plan == id);
}

/// Which entries later ones have taken back. An undo that was itself undone has taken nothing back.
std::vector<bool> undoneAmong(const Entries &entries) {
    std::vector<bool> isUndone(entries.size());
    std::set<std::pair<std::string, std::string>> undone; // MAC, id
    for (std::size_t i = entries.size(); i-- > 0;) {
        const JournalEntry &entry = entries[i];
        isUndone[i] = entry.fate == Fate::RolledBack || undone.count({entry.mac, entry.id}) != 0 ||
                      undone.count({entry.mac, entry.plan}) != 0;
        if (entry.fate == Fate::Done && !entry.undoes.empty() && !isUndone[i])
            undone.emplace(entry.mac, entry.undoes);
    }
    return isUndone;
}

/// The changes of one camera that are undone together, in the order of their begin.
struct Changes {
    std::vector<const JournalEntry *> stored; ///< those that altered what it has stored
    const JournalEntry *last = nullptr;       ///< also a rollback that did not succeed

    const Snapshot &before() const { return stored.front()->before; }
};

std::map<std::string, Changes> changesOf(const std::string &id, const Entries &entries) {
    const std::vector<bool> isUndone = undoneAmong(entries);
    std::map<std::string, Changes> all;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const JournalEntry &entry = entries[i];
        if (!belongsTo(entry, id) || isUndone[i])
            continue;
        Changes &changes = all[entry.mac];
        if (isStoring(entry) || entry.what == "undo")
            changes.stored.push_back(&entry);
        if (entry.what != "temporary")
            changes.last = &entry;
    }
    return all;
}

/// What a camera may have since a change, part by part.
class Remains {
public:
    Remains(const Changes &changes, const Camera &now) : m_Now(now) {
        if (changes.last->after)
            add(*changes.last->after);
        else
            addEverything(changes);
    }

    /// \returns the parts that are otherwise; empty when the camera is as the change left it.
    std::string differences() const {
        std::string text;
        const auto name = [&](bool is, const char *part) {
            text += is ? (text.empty() ? "" : ", ") + std::string(part) : "";
        };
        name(m_Words.count(m_Now.word & ModeBits) == 0, "mode");
        name(m_Now.stored && !m_IsAnyStored && !isStored(), "stored addresses");
        name(m_Names.count(asJournalled(m_Now.name)) == 0, "name");
        return text;
    }

private:
    void add(const Snapshot &snapshot) {
        m_Words.insert(snapshot.word & ModeBits);
        m_Names.insert(snapshot.name);
        m_IsAnyStored = m_IsAnyStored || !snapshot.stored;
        if (snapshot.stored)
            m_Stored.push_back(*snapshot.stored);
    }

    /// Nobody knows how far the changes got.
    void addEverything(const Changes &changes) {
        for (const JournalEntry *entry : changes.stored) {
            add(entry->before);
            m_Words.insert(entry->wanted.mode ? wordOf(*entry->wanted.mode) : entry->before.word & ModeBits);
            m_Names.insert(entry->wanted.name);
            m_Stored.push_back({entry->wanted.address, entry->wanted.mask, entry->wanted.gateway});
        }
    }

    bool isStored() const { return std::find(m_Stored.begin(), m_Stored.end(), *m_Now.stored) != m_Stored.end(); }

    const Camera &m_Now;
    std::set<std::uint32_t> m_Words;
    std::set<std::string> m_Names;
    std::vector<StoredAddresses> m_Stored;
    bool m_IsAnyStored = false; ///< it is not known what was stored
};

/// Puts one camera back.
class CameraUndo {
public:
    CameraUndo(const Changes &changes, const Camera &now, bool isForced, Undo *pUndo)
        : m_Changes(changes), m_Before(changes.before()), m_Now(now), m_IsForced(isForced), m_pUndo(pUndo) {}

    void add() {
        const std::string differences = Remains(m_Changes, m_Now).differences();
        if (!differences.empty())
            object("It is no longer as the change of " + m_Changes.last->time + " left it: " + differences + ".");
        m_Entry.camera = macText(m_Now.mac);
        addName();
        addWord();
        addAddresses();
        m_pUndo->plan.entries.push_back(m_Entry);
    }

private:
    void lose(const std::string &text) { m_pUndo->losses.push_back({m_Now.mac, text}); }

    void object(const std::string &text) {
        if (m_IsForced)
            lose(text);
        else
            m_pUndo->plan.problems.push_back({0, 0, macText(m_Now.mac) + ": " + text});
    }

    void addName() {
        if (m_Before.name == asJournalled(m_Now.name))
            return;
        if (m_Before.name.find("\uFFFD") != std::string::npos)
            object("Its old name had bytes that are no UTF-8: it cannot be restored.");
        else
            m_Entry.name = m_Before.name;
    }

    void addWord() {
        const std::uint32_t before = m_Before.word & ModeBits;
        const std::uint32_t now = m_Now.word & ModeBits;
        if (before == now)
            return;
        if (before == 0)
            return object("Its old mode is not known: it cannot be restored.");
        if ((before & GEV_IP_CONFIG_LLA) == 0)
            object("It was set to use no link-local address, which cannot be restored.");
        if ((before | GEV_IP_CONFIG_LLA) != now)
            m_Entry.word = (m_Now.word & ~ModeBits) | before | GEV_IP_CONFIG_LLA;
    }

    void addAddresses() {
        if (m_Before.stored)
            return restore(*m_Before.stored);
        const bool wasStatic = (m_Before.word & StaticBit) != 0;
        const auto &all = m_Changes.stored;
        const bool wroteAddresses =
            std::any_of(all.begin(), all.end(), [](const auto *entry) { return writesAddresses(*entry); });
        // One that goes back to a static mode is sent addresses: those that it happens to have by now are wrong.
        const bool needsAddresses = wasStatic && !m_Now.stored && (m_Now.word & StaticBit) == 0;
        if (!wroteAddresses && !needsAddresses)
            return;
        if (!wasStatic)
            return lose("What it had stored as its static address is not known: it keeps the new one.");
        object("What it had stored as its static address is not known: it gets the one it had then.");
        restore(m_Before.current);
    }

    void restore(const StoredAddresses &addresses) {
        if (m_Now.stored && *m_Now.stored == addresses)
            return;
        if (addresses.address == 0)
            return lose("It had no static address stored, and none cannot be written: it keeps the new one.");
        m_Entry.address = addresses.address;
        m_Entry.mask = addresses.mask;
        m_Entry.gateway = addresses.gateway;
    }

    const Changes &m_Changes;
    const Snapshot &m_Before;
    const Camera &m_Now;
    bool m_IsForced;
    Undo *m_pUndo;
    PlanEntry m_Entry;
};

/// Nothing was sent, or the camera was seen to have what it had before.
bool isInVain(const JournalEntry &entry) {
    const Snapshot &before = entry.before;
    if (entry.fate == Fate::Failed && entry.path == Path::None)
        return true;
    return entry.after && entry.after->word == before.word && entry.after->name == before.name && entry.after->stored &&
           before.stored && *entry.after->stored == *before.stored;
}

template <typename Predicate> const JournalEntry *lastWith(const Entries &entries, Predicate &&predicate) {
    const auto found = std::find_if(entries.rbegin(), entries.rend(), predicate);
    return found == entries.rend() ? nullptr : &*found;
}

} // namespace

std::string lastChangeOf(const std::string &mac, const std::vector<JournalEntry> &entries) {
    const auto *last = lastWith(entries, [&](const auto &entry) { return entry.mac == mac && isStoring(entry); });
    return last ? last->id : "";
}

std::string lastPlanIn(const std::vector<JournalEntry> &entries) {
    const auto *last = lastWith(entries, [](const auto &entry) { return !entry.plan.empty() && entry.what == "plan"; });
    return last ? last->plan : "";
}

std::string lastStandingIn(const std::vector<JournalEntry> &entries) {
    const std::vector<bool> isUndone = undoneAmong(entries);
    for (std::size_t i = entries.size(); i-- > 0;) {
        const JournalEntry &entry = entries[i];
        if (isStoring(entry) && !isUndone[i] && !isInVain(entry))
            return entry.plan.empty() ? entry.id : entry.plan;
    }
    return "";
}

Undo undoOf(const std::string &id, const std::vector<JournalEntry> &entries, const Inventory &inventory,
            bool isForced) {
    Undo undo;
    undo.plan.allowsForeignSubnets = isForced;
    if (std::none_of(entries.begin(), entries.end(), [&](const auto &entry) { return belongsTo(entry, id); }))
        undo.plan.problems.push_back({0, 0, "The journal has no change and no plan '" + id + "'."});
    for (const auto &[mac, changes] : changesOf(id, entries)) {
        if (changes.stored.empty())
            continue;
        const auto camera = std::find_if(inventory.cameras.begin(), inventory.cameras.end(),
                                         [&mac = mac](const Camera &each) { return each.mac == mac; });
        if (camera != inventory.cameras.end())
            CameraUndo(changes, *camera, isForced, &undo).add();
        else if (isForced)
            undo.losses.push_back({mac, "There is no such camera now."});
        else
            undo.plan.problems.push_back({0, 0, macText(mac) + ": There is no such camera now."});
    }
    return undo;
}

} // namespace commissioning
