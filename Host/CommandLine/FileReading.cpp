#include "FileReading.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace commandline {

namespace {

std::string readAll(int descriptor, const std::string &name, std::size_t limit) {
    constexpr std::size_t Piece = 1U << 16U;
    std::string text;
    while (text.size() < limit) {
        const std::size_t length = text.size();
        text.resize(std::min(length + Piece, limit));
        const ssize_t count = read(descriptor, &text[length], text.size() - length);
        const int error = errno;
        text.resize(length + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count < 0 && error != EINTR)
            throw std::system_error(error, std::generic_category(), name);
        if (count == 0)
            break;
    }
    return text;
}

/// A file that is closed with it.
class Reader {
public:
    explicit Reader(const std::string &path) : m_Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (m_Descriptor < 0)
            throw std::system_error(errno, std::generic_category(), path);
    }
    ~Reader() { close(m_Descriptor); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    int descriptor() const { return m_Descriptor; }
    bool isRegular() const {
        struct stat entry {};
        return fstat(m_Descriptor, &entry) == 0 && S_ISREG(entry.st_mode);
    }

private:
    int m_Descriptor;
};

} // namespace

std::string readFile(const std::string &path, std::size_t limit) {
    const Reader reader(path);
    if (!reader.isRegular())
        throw std::system_error(EINVAL, std::generic_category(), path);
    return readAll(reader.descriptor(), path, limit);
}

std::string readInput(std::size_t limit) { return readAll(STDIN_FILENO, "standard input", limit); }

} // namespace commandline
