#pragma once

#include "commissioning/Change.h"
#include "commissioning/Result.h"

#include <string>

namespace commissioning {

/// What people should know of a save: nothing when all went well, else what was sent, which part of it the camera has
/// as far as that is known, and what it has now.
std::string describe(const Change &change, const Result &result);

} // namespace commissioning
