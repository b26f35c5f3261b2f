#pragma once

#include <string>
#include <sys/types.h>

namespace commandline {

enum class Existing { Replace, Refuse };

/// Writes a file as a whole: whoever reads it sees the old one or the new one, whatever happens meanwhile. Written and
/// synced under a name of its own in the same folder (".NAME." and six letters), then renamed.
/// \param mode permissions, whatever the umask is. \throws std::system_error, with EEXIST when there is a file that
/// must not be replaced.
void writeFile(const std::string &path, const std::string &content, mode_t mode, Existing existing);

} // namespace commandline
