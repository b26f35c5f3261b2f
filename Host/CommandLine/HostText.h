#pragma once

#include <string>

namespace commandline {

// What a report says of the host, as texts. An unreadable part says so.

std::string hostName();
std::string versionsText(); ///< of the program, the kernel and the distribution
std::string routesText();
std::string sysctlsText();  ///< those that decide what becomes of cameras' answers
std::string countersText(); ///< the kernel's, of all protocols
/// The last bytes of a file. \returns empty for none.
std::string endOf(const std::string &path, std::size_t bytes);

} // namespace commandline
