#pragma once

#include "commissioning/Plan.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace commissioning {

/// A cell of a file in CSV.
struct CsvCell {
    std::string text; ///< without its quotes; when it has none, without the blanks around it
    PlanPlace place;  ///< of its first character, which may be a quote
    bool isQuoted = false;
};

/// Reads CSV in UTF-8, with or without byte order mark, with any line ends. Rows without a cell and those that begin
/// with '#' are left out.
/// \param visit is called with each row.
/// \returns what ended the reading early; none at the end of the text.
std::optional<PlanProblem> readCsv(const std::string &text, char separator,
                                   const std::function<void(const std::vector<CsvCell> &)> &visit);

} // namespace commissioning
