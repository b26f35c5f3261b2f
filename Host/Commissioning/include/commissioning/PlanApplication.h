#pragma once

#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "commissioning/Context.h"
#include "commissioning/Journal.h"
#include "commissioning/Plan.h"
#include "commissioning/Result.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace commissioning {

/// What has become of a camera of a plan.
enum class PlanState {
    Unchanged, ///< had it all already
    Done,
    Failed,      ///< see the result
    RolledBack,  ///< failed, and seen to have its old settings again
    Unconfirmed, ///< sent; nobody could see what came of it
    NotBegun     ///< nothing was sent to it; the result's text says why
};

struct PlanRecord {
    PlannedChange change;
    PlanState state = PlanState::NotBegun;
    Result result;
};

enum class PlanPhase { Reading, Writing, Restarting, Verifying, RollingBack };

struct PlanOptions {
    std::string what = "plan"; ///< for the journal
    std::string file = {};     ///< of the plan, for the journal; empty for none
    std::string undoes;        ///< id of what it takes back; empty for none
    unsigned maxFailures = 3;  ///< so many end the plan; 0 for never
    bool rollsBack = true;
    std::size_t atOnce = 32;
    RediscoveryPatience patience; ///< for a camera to come back
    /// How many cameras of how many a phase has done. On several threads, one call at a time.
    std::function<void(PlanPhase phase, std::size_t done, std::size_t all)> progress;
    std::function<bool()> isStopRequested; ///< polled from any thread: cameras in hand are finished, no other is begun
};

struct PlanOutcome {
    std::string id;                  ///< of the plan in the journal; empty when nothing was written
    std::vector<PlanRecord> records; ///< one for each change of the review, in its order
    std::string error;               ///< why the plan as a whole was not begun; empty
    std::string remark;              ///< what to know of how it went; empty
};

/// Applies a plan in phases, so that cameras can swap addresses: all are read again, all written, all restarted, all
/// verified by one search loop. One camera of each adapter goes through all of that first, alone. A camera that does
/// not come back as it should gets its old settings again, together with those whose old address it has. Never throws
/// for what a camera or the network does. Blocks for as long as it takes.
///
/// \param review must not be refused. \param inventory of the same search.
/// \param pJournal null for none, as in tests.
PlanOutcome apply(Corvo::IGigETransportLayer &layer, const PlanReview &review, const Inventory &inventory,
                  Journal *pJournal, const PlanOptions &options = {});

} // namespace commissioning
