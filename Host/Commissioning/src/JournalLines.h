#pragma once

#include "commissioning/Journal.h"

#include <string>

namespace commissioning {

// The lines of a journal, one JSON object each, without their ends.

/// What is known before anything is sent. Bytes of a name that are no UTF-8 become U+FFFD.
std::string beginLine(const JournalEntry &entry);
/// What came of it. It is joined to its begin by the id.
std::string endLine(const JournalEntry &entry);

/// A text of a camera as it is read from the journal.
std::string asJournalled(const std::string &text);

} // namespace commissioning
