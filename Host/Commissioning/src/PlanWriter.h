#pragma once

#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "PlanTask.h"

namespace commissioning {

/// Writes a task's settings and reads them back, without a restart; a task that is only about the name is finished.
/// By the vendor command, else over a connection. Never throws.
///
/// Sets the task's result and isWritten.
void write(Corvo::IGigETransportLayer &layer, PlanTask *pTask);

/// Whether the camera has the task's settings stored, restarted or not. \returns none when that cannot be read.
std::optional<bool> isStored(const PlanTask &task);

/// Sees that the camera has the name that it is to have, or still the one it had, and writes it where it has not.
/// \returns whether it has.
bool settleName(Corvo::IGigETransportLayer &layer, PlanTask *pTask);

} // namespace commissioning
