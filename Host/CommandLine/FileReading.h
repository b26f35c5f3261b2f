#pragma once

#include <cstddef>
#include <string>

namespace commandline {

/// The begin of a regular file, at most that many bytes. Of what is no such file, as a pipe, nothing is waited for.
/// \throws std::system_error, with EINVAL for what is no regular file.
std::string readFile(const std::string &path, std::size_t limit);

/// The same of standard input, whatever it is; waits for its end.
std::string readInput(std::size_t limit);

} // namespace commandline
