#include "RollingFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>
#include <utility>

namespace GenICam {

namespace {

constexpr int MAX_REOPENS = 16; // each means that another process rolled the file over just now
constexpr int MAX_LOCK_ATTEMPTS = 20;
constexpr std::chrono::milliseconds LOCK_INTERVAL(1); // a lock is held for one write

} // namespace

RollingFile::RollingFile(std::string path, std::int64_t maxBytes)
    : m_path(std::move(path)), m_maxBytes(maxBytes), m_lockAttempts(MAX_LOCK_ATTEMPTS) {
    std::error_code ignored;
    const std::filesystem::path folder = std::filesystem::path(m_path).parent_path();
    if (std::filesystem::create_directories(folder, ignored)) // which the journal of changes may share: for nobody else
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, ignored);
    Open();
}

RollingFile::~RollingFile() { Close(); }

bool RollingFile::Append(std::string_view text) {
    if (!OpenCurrent())
        return false;
    const std::int64_t size = Size();
    if (m_isLocked && size > 0 && size + static_cast<std::int64_t>(text.size()) > m_maxBytes) {
        // When the backup cannot be made the file grows on: a long log is better than none.
        std::rename(m_path.c_str(), (m_path + ".1").c_str());
        if (!OpenCurrent())
            return false;
    }
    const bool written = Write(text);
    flock(m_file, LOCK_UN);
    return written;
}

bool RollingFile::Open() {
    m_file =
        open(m_path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR);
    struct stat opened {};
    if (m_file >= 0 && (fstat(m_file, &opened) != 0 || !S_ISREG(opened.st_mode)))
        Close();
    return m_file >= 0;
}

void RollingFile::Close() {
    if (m_file >= 0)
        close(m_file); // drops the lock too
    m_file = -1;
}

bool RollingFile::OpenCurrent() {
    for (int attempt = 0; attempt < MAX_REOPENS; ++attempt) {
        if (m_file < 0 && !Open())
            return false;
        Lock();
        if (IsCurrent())
            return true;
        Close();
    }
    return false;
}

/// Without the lock, as on a file system that has none, appends are atomic all the same; only a roll-over could lose a
/// line. Once the lock was waited for in vain the next appends try it only once, or each line would take that long.
void RollingFile::Lock() {
    for (int attempt = 1; flock(m_file, LOCK_EX | LOCK_NB) != 0; ++attempt) {
        if (errno != EWOULDBLOCK || attempt >= m_lockAttempts) {
            m_isLocked = false;
            m_lockAttempts = 1;
            return;
        }
        std::this_thread::sleep_for(LOCK_INTERVAL);
    }
    m_isLocked = true;
    m_lockAttempts = MAX_LOCK_ATTEMPTS;
}

bool RollingFile::IsCurrent() const {
    struct stat opened {};
    struct stat named {};
    return fstat(m_file, &opened) == 0 && lstat(m_path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
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
