#pragma once

#include "ChangeRecord.h"
#include "commissioning/Journal.h"
#include "commissioning/Plan.h"

#include <optional>
#include <string>
#include <vector>

namespace commandline {

/// What is known of the plan that a command worked with.
struct PlanReport {
    std::string id;   ///< in the journal; empty when nothing was applied
    std::string file; ///< as the user named it, "-" for standard input; empty for a plan of no file
    std::vector<commissioning::PlanProblem> problems;
};

/// What a command came to.
struct Outcome {
    int exitCode = 0;
    std::vector<ChangeRecord> changes;
    std::string error; ///< why the command as a whole could not be carried out
    std::optional<PlanReport> plan = {};
    std::string text = {}; ///< what the command prints as it is
    std::optional<commissioning::JournalContent> log = {};
};

} // namespace commandline
