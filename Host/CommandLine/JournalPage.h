#pragma once

#include "Json.h"
#include "Terminal.h"
#include "commissioning/Journal.h"

#include <optional>
#include <string>

namespace commandline {

/// A line for each change, and one for each plan: what it was and how it ended.
std::string logPage(const commissioning::JournalContent &log, const Terminal &terminal);

/// The key "log"; null for none.
Json logJson(const std::optional<commissioning::JournalContent> &log);

} // namespace commandline
