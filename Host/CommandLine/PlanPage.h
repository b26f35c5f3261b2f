#pragma once

#include "Json.h"
#include "Outcome.h"
#include "Terminal.h"

#include <string>

namespace commandline {

/// The cameras that a plan changes, before and after: of their settings only those that differ.
std::string planTable(const std::vector<ChangeRecord> &records, int width);

/// The table, what is wrong with the plan as "FILE:LINE:CHARACTER: text", and what became of it.
std::string planPage(const Outcome &outcome, const Terminal &terminal);

/// The key "plan"; null for none.
Json planJson(const std::optional<PlanReport> &plan);

} // namespace commandline
