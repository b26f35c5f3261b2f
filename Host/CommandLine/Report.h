#pragma once

#include "Arguments.h"
#include "Session.h"
#include "Terminal.h"

namespace commandline {

/// Searches, gathers what helps to find a fault from afar, and writes it into a zip file, or nothing at all. Says on
/// the terminal what is in it. Takes a minute and a half at most; holds 64 MiB at most. \returns the exit code. \throws
/// Cancelled when it is interrupted; GenericException as a search does.
int writeReport(const Arguments &arguments, Session &session, const Terminal &terminal);

} // namespace commandline
