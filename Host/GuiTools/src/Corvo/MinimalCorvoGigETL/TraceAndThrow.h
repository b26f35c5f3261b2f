#pragma once

#include "Base/GCException.h"
#include "MinimalCorvo/TraceLog.h"

namespace Corvo {

/// Throws a copy of the exception after its description has been traced as a warning.
[[noreturn]] inline void TraceAndThrow(unsigned long category, const GenICam::RuntimeException &error) {
    tracelog::LogTrace(category, tracelog::lvWarning, "%s", error.GetDescription());
    throw error;
}

} // namespace Corvo
