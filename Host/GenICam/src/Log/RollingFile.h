#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace GenICam {

/// A log file of limited size with one backup (`<path>.1`) that several processes append to without losing each other's
/// text: each append is made under an exclusive flock of the file that the path names at that moment, so nobody rolls
/// the file over while another writes, and nobody goes on in, or rolls over, a file that was rolled over before. A lock
/// that somebody keeps is not waited for: the append is then made without it, and the file not rolled over.
///
/// Only a regular file is written, and none behind a symbolic link, so that nobody who may write to the folder makes
/// the program wait for the reader of a pipe or write elsewhere.
///
/// Not thread safe; each object counts as a process of its own.
class RollingFile {
public:
    /// Opens or creates the file, and its folder. \param maxBytes size above which the file is rolled over.
    RollingFile(std::string path, std::int64_t maxBytes);
    ~RollingFile();
    RollingFile(const RollingFile &) = delete;
    RollingFile &operator=(const RollingFile &) = delete;

    /// Writes the text as a whole, after rolling over if it would make the file too big. \returns false when not all of
    /// it could be written (folder or file not writable, disk full).
    bool Append(std::string_view text);

private:
    bool Open();
    void Close();
    bool OpenCurrent();
    void Lock();
    bool IsCurrent() const;
    std::int64_t Size() const;
    bool Write(std::string_view text) const;

    const std::string m_path;
    const std::int64_t m_maxBytes;
    int m_file = -1;
    bool m_isLocked = false;
    int m_lockAttempts;
};

} // namespace GenICam
