#pragma once

#include "Arguments.h"
#include "ChangeRecord.h"
#include "Session.h"
#include "Terminal.h"

#include <string>
#include <vector>

namespace commandline {

/// What a command came to.
struct Outcome {
    int exitCode = 0;
    std::vector<ChangeRecord> changes;
    std::string error; ///< why the command as a whole could not be carried out
};

/// Carries out a command after the search. An interruption ends it after the camera in hand.
Outcome carryOut(const Arguments &arguments, Session &session, const Terminal &terminal);

} // namespace commandline
