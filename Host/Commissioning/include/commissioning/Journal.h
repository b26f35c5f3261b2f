#pragma once

#include "commissioning/Inventory.h"
#include "commissioning/Result.h"
#include "commissioning/Settings.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// The journal of all changes: one JSON object on each line of `changes.jsonl`, begun before a camera is written.
namespace commissioning {

/// What became of a change.
enum class Fate {
    Open,        ///< begun; its end is not known: the program or the machine died
    Done,        ///< verified
    Failed,      ///< what the camera has now stands in after, where that is known
    Unconfirmed, ///< sent; nobody could see what came of it
    RolledBack   ///< failed, and seen to have its old settings again
};

/// A change as the journal keeps it.
struct JournalEntry {
    std::string id;     ///< of this change, unique
    std::string plan;   ///< of the plan it belongs to; empty for a single change
    std::string file;   ///< of that plan, as the user named it; empty for none
    std::string undoes; ///< id of the change, or of the plan, that it takes back; empty for none
    std::string time;   ///< of its begin, UTC, "2026-11-22T08:15:30.123Z"
    std::string mac;
    std::string what; ///< "set", "plan", "rescue", "force", "name", "restart", "undo", "rollback", "temporary"
    Snapshot before;
    Settings wanted;
    Fate fate = Fate::Open;
    Path path = Path::None;
    std::optional<Snapshot> after;
    std::string text; ///< why it failed, what is not known
};

/// What a journal holds.
struct JournalContent {
    std::vector<JournalEntry> entries;   ///< in the order of their begin
    std::vector<std::size_t> unreadable; ///< numbers of lines, from 1, that are none: cut by a power loss, or damaged
};

/// Appends to the journal. Several processes and threads may do so at a time.
class Journal {
public:
    /// \param path of the file, whose folder is made when it is missing.
    explicit Journal(std::string path);

    /// `${XDG_STATE_HOME:-~/.local/state}/ostra-lanvane/changes.jsonl`. Empty when there is no home.
    static std::string defaultPath();

    const std::string &path() const { return m_Path; }

    /// Writes and syncs the begin of a change. Nothing may be sent when it throws.
    /// \param entry its id and time are filled in. \throws std::system_error
    void begin(JournalEntry *pEntry);
    /// Writes and syncs its end: fate, path, after and text. \throws std::system_error
    void end(const JournalEntry &entry);

    /// \throws std::system_error when there is a file that cannot be read; none is an empty journal.
    JournalContent read() const;

private:
    std::string m_Path;
};

/// Reads the lines of a journal, whatever stands in them. Never throws.
JournalContent readJournal(const std::string &text);

/// An id for a change or a plan: unique on this host, sorts by time.
std::string newJournalId();

} // namespace commissioning
