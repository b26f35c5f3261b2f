#pragma once

#include "commissioning/Context.h"
#include "commissioning/Result.h"
#include "commissioning/Settings.h"

#include <functional>

namespace commissioning {

/// Carries out what was asked for as one undertaking, where there is a journal. Within another one it is a step of
/// that, unless it is "temporary", which has an entry of its own.
/// \param what for the journal. \param operation gets the context its steps work with. \returns its result; a refusal
/// when somebody else changes the camera or the journal cannot be written.
Result undertake(const Context &context, const Corvo::CQuorelGigEDeviceInfo &device, const char *what,
                 const Settings &wanted, const std::function<Result(const Context &)> &operation);

} // namespace commissioning
