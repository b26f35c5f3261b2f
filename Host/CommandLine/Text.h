#pragma once

#include <string>

namespace commandline {

/// A camera's text as a terminal may show it: control characters and those that turn the direction of writing are
/// dropped, bytes that are no UTF-8 become "?".
std::string harmless(const std::string &text);

/// Columns that a text takes on a terminal.
int displayWidth(const std::string &text);

} // namespace commandline
