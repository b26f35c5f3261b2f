#pragma once

#include "Arguments.h"
#include "Outcome.h"
#include "Session.h"
#include "Terminal.h"

namespace commandline {

/// Carries out a command after the search. An interruption ends it after the camera in hand.
Outcome carryOut(const Arguments &arguments, Session &session, const Terminal &terminal);

} // namespace commandline
