#include "FileWriting.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace commandline {

namespace {

[[noreturn]] void fail(int error, const std::string &path) {
    throw std::system_error(error, std::generic_category(), path);
}

/// A file beside another one, gone with this object unless it has taken the other's place.
class Draft {
public:
    explicit Draft(const std::string &path) : m_Path(path) {
        const std::size_t name = path.rfind('/') + 1; // 0 without a folder
        m_Own = path.substr(0, name) + "." + path.substr(name) + ".XXXXXX";
        m_Descriptor = mkostemp(m_Own.data(), O_CLOEXEC);
        if (m_Descriptor < 0)
            fail(errno, path);
    }
    ~Draft() {
        close(m_Descriptor);
        if (!m_IsDone)
            unlink(m_Own.c_str());
    }
    Draft(const Draft &) = delete;
    Draft &operator=(const Draft &) = delete;

    void write(const std::string &content) {
        for (std::size_t done = 0; done < content.size();) {
            const ssize_t count = ::write(m_Descriptor, content.data() + done, content.size() - done);
            if (count < 0 && errno != EINTR)
                fail(errno, m_Path);
            done += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
    }
    void complete(mode_t mode, Existing existing) {
        if ((fchmod(m_Descriptor, mode) != 0 && errno != EPERM) || fsync(m_Descriptor) != 0) // EPERM: as FAT has none
            fail(errno, m_Path);
        const unsigned flags = existing == Existing::Refuse ? RENAME_NOREPLACE : 0;
        int result = renameat2(AT_FDCWD, m_Own.c_str(), AT_FDCWD, m_Path.c_str(), flags);
        if (result != 0 && errno == EINVAL) // a file system that cannot refuse by itself
            result = exists() ? (errno = EEXIST, -1) : std::rename(m_Own.c_str(), m_Path.c_str());
        if (result != 0)
            fail(errno, m_Path);
        m_IsDone = true;
    }

private:
    bool exists() const {
        struct stat entry {};
        return lstat(m_Path.c_str(), &entry) == 0;
    }

    std::string m_Path;
    std::string m_Own;
    int m_Descriptor = -1;
    bool m_IsDone = false;
};

} // namespace

void writeFile(const std::string &path, const std::string &content, mode_t mode, Existing existing) {
    Draft draft(path);
    draft.write(content);
    draft.complete(mode, existing);
}

} // namespace commandline
