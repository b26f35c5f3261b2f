#pragma once

#include "Arguments.h"
#include "Outcome.h"
#include "Session.h"
#include "Terminal.h"

namespace commandline {

// What the journal of changes is for. \throws std::system_error when it cannot be read.

/// Takes the last change of a camera back.
Outcome undoLastChange(const commissioning::Camera &camera, const Arguments &arguments, Session &session,
                       const Terminal &terminal);
/// Takes the plan, or the change, that the user named back; the last plan when none is named.
Outcome undoPlan(const Arguments &arguments, Session &session, const Terminal &terminal);
/// Needs no search.
Outcome showLog(Session &session, const Terminal &terminal);

/// Tells of changes whose end is not known: a program has died in the middle of them, or still runs.
void noteOpenChanges(Session &session, const Terminal &terminal);

} // namespace commandline
