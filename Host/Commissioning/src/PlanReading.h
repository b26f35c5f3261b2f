#pragma once

#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "PlanMember.h"

#include <vector>

namespace commissioning {

/// Every camera of a plan as it is now, and who else there is.
struct PlanReading {
    std::vector<PlanMember> members; ///< those that can be begun
    Inventory inventory;             ///< of now, adapters included; cameras that were not heard are as they were
};

/// Reads all settings again and refuses, in the outcome's records, what has changed since the review, does not answer,
/// is held, shares its MAC, or is to get an address that somebody keeps. \throws what a search throws
PlanReading readAgain(Corvo::IGigETransportLayer &layer, const PlanReview &review, const Inventory &inventory,
                      const PlanOptions &options, PlanOutcome *pOutcome);

} // namespace commissioning
