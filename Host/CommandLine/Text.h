#pragma once

#include <cstddef>
#include <string>

namespace commandline {

/// A camera's text as a terminal may show it: control characters and those that turn the direction of writing are
/// dropped, bytes that are no UTF-8 become "?".
std::string harmless(const std::string &text);

/// Columns that a text takes on a terminal.
int displayWidth(const std::string &text);

/// "1 camera", "2 cameras"
std::string counted(std::size_t count, const std::string &what);

} // namespace commandline
