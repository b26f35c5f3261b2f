#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace commissioning {

constexpr std::size_t MaxPlanNameBytes = 16;

/// Without blanks around it, those that do not break included: spreadsheets and web pages leave them.
std::string trimmed(std::string_view text);

inline std::string quoted(const std::string &text) { return "'" + text + "'"; }

} // namespace commissioning
