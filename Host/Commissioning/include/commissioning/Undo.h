#pragma once

#include "commissioning/Inventory.h"
#include "commissioning/Journal.h"
#include "commissioning/Plan.h"

#include <string>
#include <vector>

/// Taking changes of the journal back. An undo is a plan: it is reviewed and applied like any other.
namespace commissioning {

// The entries are those of the whole journal, as it was read.

/// The last change that altered what a camera has stored, undos aside. \returns its id; empty when there is none.
std::string lastChangeOf(const std::string &mac, const std::vector<JournalEntry> &entries);

/// The last plan that was applied, undos aside. \returns its id; empty when there is none.
std::string lastPlanIn(const std::vector<JournalEntry> &entries);

/// What a user who takes back one step after the other takes back next: the last change or plan that has altered what
/// cameras have stored and is not taken back yet. \returns its id; empty when there is none.
std::string lastStandingIn(const std::vector<JournalEntry> &entries);

/// Something that an undo does not restore.
struct UndoLoss {
    std::string mac;
    std::string text; ///< a sentence
};

struct Undo {
    Plan plan; ///< its problems name what cannot be undone
    std::vector<UndoLoss> losses;
};

/// The plan that gives each camera what it had stored before a change, or before all changes of a plan. What is undone
/// already, or was rolled back, is left out; so are temporary addresses and restarts.
///
/// \param id of a change or of a plan. \param inventory of now.
/// \param isForced undoes also what is no longer as the change left it, and what can be restored in part only; each is
/// a loss then, not a problem.
Undo undoOf(const std::string &id, const std::vector<JournalEntry> &entries, const Inventory &inventory, bool isForced);

} // namespace commissioning
