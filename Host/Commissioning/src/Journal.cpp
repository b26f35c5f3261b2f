#include "commissioning/Journal.h"

#include "Descriptor.h"
#include "JournalLines.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace commissioning {

namespace {

using Microseconds = std::chrono::microseconds;

[[noreturn]] void fail(const std::string &path, int error = errno) {
    throw std::system_error(error, std::generic_category(), path);
}

/// Repeats a system call that a signal interrupts. \throws std::system_error
template <typename Call> auto checked(const std::string &path, Call &&call) {
    for (;;) {
        const auto result = call();
        if (result >= 0)
            return result;
        if (errno != EINTR)
            fail(path);
    }
}

std::string folderOf(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

/// A file that was just made survives a power loss only with the folder that names it.
void syncFolder(const std::string &folder) {
    const Descriptor descriptor(checked(folder, [&] { return open(folder.c_str(), O_RDONLY | O_CLOEXEC); }));
    checked(folder, [&] { return fsync(descriptor.get()); });
}

void makeFolder(const std::string &folder) {
    if (mkdir(folder.c_str(), S_IRWXU) == 0)
        return syncFolder(folderOf(folder));
    if (errno == EEXIST)
        return;
    if (errno != ENOENT)
        fail(folder);
    makeFolder(folderOf(folder));
    if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        fail(folder);
    syncFolder(folderOf(folder));
}

Descriptor openToAppend(const std::string &path) {
    constexpr int Flags = O_RDWR | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    Descriptor descriptor(open(path.c_str(), Flags));
    if (descriptor.get() < 0 && errno == ENOENT) {
        makeFolder(folderOf(path));
        descriptor = Descriptor(open(path.c_str(), Flags | O_CREAT, S_IRUSR | S_IWUSR));
        if (descriptor.get() >= 0)
            syncFolder(folderOf(path));
    }
    if (descriptor.get() < 0)
        fail(path);
    return descriptor;
}

/// \throws std::system_error for what is no regular file, whose end nobody knows.
std::size_t sizeOf(const Descriptor &file, const std::string &path) {
    struct stat status {};
    checked(path, [&] { return fstat(file.get(), &status); });
    if (!S_ISREG(status.st_mode))
        fail(path, EINVAL);
    return static_cast<std::size_t>(status.st_size);
}

bool endsInLine(const Descriptor &file, const std::string &path) {
    const std::size_t size = sizeOf(file, path);
    char last = '\n';
    if (size > 0)
        checked(path, [&] { return pread(file.get(), &last, 1, static_cast<off_t>(size - 1)); });
    return last == '\n';
}

/// Appends a line and syncs it. What a full disk cuts stays: whoever writes next begins a new line.
void append(const std::string &path, const std::string &line) {
    if (path.empty())
        throw std::system_error(ENOENT, std::generic_category(), "no XDG_STATE_HOME and no HOME");
    const Descriptor file = openToAppend(path);
    checked(path, [&] { return flock(file.get(), LOCK_EX); }); // until the file is closed
    const std::string text = (endsInLine(file, path) ? "" : "\n") + line + '\n';
    for (std::size_t written = 0; written < text.size();)
        written += static_cast<std::size_t>(
            checked(path, [&] { return write(file.get(), text.data() + written, text.size() - written); }));
    checked(path, [&] { return fsync(file.get()); });
}

/// Now, but later than any time given out before: a clock may be set back, and two changes may begin at once.
Microseconds distinctTime() {
    static std::mutex mutex;
    static Microseconds last{0};
    const std::lock_guard<std::mutex> lock(mutex);
    last = std::max(last + Microseconds(1),
                    std::chrono::duration_cast<Microseconds>(std::chrono::system_clock::now().time_since_epoch()));
    return last;
}

/// "2026-11-22T08:15:30.123456", UTC
std::string timeText(Microseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    const std::time_t plain = seconds.count();
    std::tm parts{};
    gmtime_r(&plain, &parts);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text.data() + length, text.size() - length, ".%06u", static_cast<unsigned>((time - seconds).count()));
    return text.data();
}

/// "20261122T081530.123456-PROCESS"
std::string idAt(Microseconds time) {
    std::string text = timeText(time);
    text.erase(std::remove_if(text.begin(), text.end(), [](char each) { return each == '-' || each == ':'; }),
               text.end());
    return text + "-" + std::to_string(getpid());
}

} // namespace

Journal::Journal(std::string path) : m_Path(std::move(path)) {}

std::string Journal::defaultPath() {
    constexpr char Name[] = "/ostra-lanvane/changes.jsonl";
    const char *const state = std::getenv("XDG_STATE_HOME"); // NOLINT(concurrency-mt-unsafe): nobody sets it meanwhile
    if (state != nullptr && state[0] == '/')                 // relative ones are to be ignored, says their standard
        return std::string(state) + Name;
    const char *const home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe)
    return home != nullptr && home[0] == '/' ? std::string(home) + "/.local/state" + Name : "";
}

void Journal::begin(JournalEntry *pEntry) {
    const Microseconds now = distinctTime();
    pEntry->id = idAt(now);
    pEntry->time = timeText(now).substr(0, std::strlen("2026-11-22T08:15:30.123")) + "Z";
    append(m_Path, beginLine(*pEntry));
}

void Journal::end(const JournalEntry &entry) { append(m_Path, endLine(entry)); }

JournalContent Journal::read() const {
    const Descriptor file(open(m_Path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (file.get() < 0 && errno == ENOENT)
        return {};
    if (file.get() < 0)
        fail(m_Path);
    checked(m_Path, [&] { return flock(file.get(), LOCK_SH); }); // a line that is being written is none that was cut
    std::string text(sizeOf(file, m_Path), '\0');
    std::size_t length = 0;
    for (ssize_t part = 1; part > 0 && length < text.size(); length += static_cast<std::size_t>(part))
        part = checked(m_Path, [&] { return ::read(file.get(), &text[length], text.size() - length); });
    text.resize(length);
    return readJournal(text);
}

std::string newJournalId() { return idAt(distinctTime()); }

} // namespace commissioning
