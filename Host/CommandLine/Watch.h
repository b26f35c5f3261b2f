#pragma once

#include "Arguments.h"
#include "Session.h"
#include "Terminal.h"

namespace commandline {

/// Searches again and again and tells what has happened, until a signal comes or nobody reads any more. What a search
/// fails for is told and does not end it. \returns the exit code: ExitDone after a signal, which is how a watch ends.
int watch(const Arguments &arguments, Session &session, const Terminal &terminal);

} // namespace commandline
