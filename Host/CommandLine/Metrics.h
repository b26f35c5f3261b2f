#pragma once

#include "commissioning/Inventory.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace commandline {

/// What a watch counts.
struct Measurements {
    commissioning::Inventory inventory; ///< what is there
    double searchDuration_s = 0;        ///< of the last search
    double lastSuccess_s = 0;           ///< Unix time of the end of the last search that succeeded; 0 for none
    std::uint64_t searches = 0;         ///< since the start, as the next two
    std::uint64_t failedSearches = 0;
    std::uint64_t droppedAnswers = 0;
    std::optional<std::size_t> offPlan; ///< cameras; none without a plan
};

/// The measurements in the text format of Prometheus, as the node exporter's textfile collector reads it: without time
/// stamps, no two series with the same labels, whatever cameras call themselves.
std::string metricsText(const Measurements &measurements);

} // namespace commandline
