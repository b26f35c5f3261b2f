#pragma once

#include "Arguments.h"
#include "Outcome.h"
#include "Session.h"
#include "Terminal.h"
#include "commissioning/PlanApplication.h"

namespace commandline {

/// A plan held against the search, and what that comes to without applying it.
struct CheckedPlan {
    commissioning::Inventory inventory; ///< of all adapters
    commissioning::PlanReview review;
    Outcome outcome; ///< done, would change something, or refused
};

/// Cameras that are not among those of the adapters that the user named are problems, and so are new addresses that
/// somebody answers for. \throws Cancelled when it is interrupted while it asks for those.
CheckedPlan checked(const commissioning::Plan &plan, const std::string &file, Session &session);

/// The plan of the file that the user named. \throws std::invalid_argument when it cannot be read.
CheckedPlan checkedFile(const Arguments &arguments, Session &session);
Outcome exportPlan(const Arguments &arguments, const Session &session, const Terminal &terminal);

/// Asks, unless that is not wanted, and applies it. What is refused or changes nothing is neither asked nor applied.
/// \param options what they are for and whom they undo; the rest is taken from the arguments.
Outcome applyPlan(const CheckedPlan &check, commissioning::PlanOptions options, const Arguments &arguments,
                  Session &session, const Terminal &terminal);

} // namespace commandline
