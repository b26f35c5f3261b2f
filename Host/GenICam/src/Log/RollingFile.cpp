#include "RollingFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace GenICam {

namespace {

constexpr int MAX_REOPENS = 16; // each means that another process rolled the file over just now

} // namespace

RollingFile::RollingFile(std::string path, std::int64_t maxBytes) : m_path(std::move(path)), m_maxBytes(maxBytes) {
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(m_path).parent_path(), ignored);
    Open();
}

RollingFile::~RollingFile() { Close(); }

bool RollingFile::Append(std::string_view text) {
    if (!LockCurrent())
        return false;
    const std::int64_t size = Size();
    if (size > 0 && size + static_cast<std::int64_t>(text.size()) > m_maxBytes) {
        // When the backup cannot be made the file grows on: a long log is better than none.
        std::rename(m_path.c_str(), (m_path + ".1").c_str());
        if (!LockCurrent())
            return false;
    }
    const bool written = Write(text);
    flock(m_file, LOCK_UN);
    return written;
}

bool RollingFile::Open() {
    m_file = open(m_path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    return m_file >= 0;
}

void RollingFile::Close() {
    if (m_file >= 0)
        close(m_file); // drops the lock too
    m_file = -1;
}

bool RollingFile::LockCurrent() {
    for (int attempt = 0; attempt < MAX_REOPENS; ++attempt) {
        if (m_file < 0 && !Open())
            return false;
        // A file system without locks still has atomic appends; only a roll-over could then lose a line.
        while (flock(m_file, LOCK_EX) != 0 && errno == EINTR) {
        }
        if (IsCurrent())
            return true;
        Close();
    }
    return false;
}

bool RollingFile::IsCurrent() const {
    struct stat opened {};
    struct stat named {};
    return fstat(m_file, &opened) == 0 && stat(m_path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

std::int64_t RollingFile::Size() const {
    struct stat opened {};
    return fstat(m_file, &opened) == 0 ? opened.st_size : 0;
}

bool RollingFile::Write(std::string_view text) const {
    while (!text.empty()) {
        const ssize_t count = write(m_file, text.data(), text.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace GenICam
