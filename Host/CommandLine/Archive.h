#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>

namespace commandline {

/// Files gathered in memory, up to a limit, for a zip archive. Any thread may add.
class Archive {
public:
    explicit Archive(std::size_t limit) : m_Limit(limit) {}

    /// \returns false when it does not fit any more, and is left out.
    bool add(const std::string &name, std::string content);
    /// Of all files, by name. \throws std::runtime_error
    std::string zip() const;

private:
    std::size_t m_Limit; ///< bytes, before they are compressed
    std::mutex m_Lock;
    std::size_t m_Size = 0;
    std::map<std::string, std::string> m_Files;
};

} // namespace commandline
