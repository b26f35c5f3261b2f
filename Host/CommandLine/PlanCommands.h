#pragma once

#include "Arguments.h"
#include "Outcome.h"
#include "Session.h"
#include "Terminal.h"
#include "commissioning/Plan.h"

namespace commandline {

/// A plan held against the search, and what that comes to without applying it.
struct CheckedPlan {
    commissioning::Inventory inventory; ///< of all adapters
    commissioning::PlanReview review;
    Outcome outcome; ///< done, would change something, or refused
};

/// Cameras that are not among those of the adapters that the user named are problems.
CheckedPlan checked(const commissioning::Plan &plan, const std::string &file, const Session &session);

/// \throws std::invalid_argument when the file cannot be read.
Outcome checkPlan(const Arguments &arguments, const Session &session);
Outcome applyPlan(const Arguments &arguments, Session &session, const Terminal &terminal);
Outcome exportPlan(const Arguments &arguments, const Session &session, const Terminal &terminal);

} // namespace commandline
