#include "ChildProcess.h"

#include "gxapi/StopToken.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>

namespace commissioning {

namespace {

using Clock = std::chrono::steady_clock;

void check(int error, const std::string &what) {
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

Pipe makePipe() {
    int ends[2];
    check(pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno, "pipe");
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// How a program starts: with these pipes, out of reach of the terminal's signals, whatever this process ignores.
class Start {
public:
    Start(const Pipe &input, const Pipe &output) {
        posix_spawn_file_actions_init(&m_Actions);
        posix_spawn_file_actions_adddup2(&m_Actions, input.readEnd.get(), STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&m_Actions, output.writeEnd.get(), STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&m_Actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        sigset_t signals;
        sigfillset(&signals);
        posix_spawnattr_init(&m_Attributes);
        posix_spawnattr_setsigdefault(&m_Attributes, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&m_Attributes, &signals);
        posix_spawnattr_setflags(&m_Attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    }
    ~Start() {
        posix_spawn_file_actions_destroy(&m_Actions);
        posix_spawnattr_destroy(&m_Attributes);
    }
    Start(const Start &) = delete;
    Start &operator=(const Start &) = delete;

    pid_t operator()(const std::vector<std::string> &command) const {
        std::vector<char *> arguments;
        arguments.reserve(command.size() + 1);
        for (const std::string &word : command)
            arguments.push_back(const_cast<char *>(word.c_str()));
        arguments.push_back(nullptr);
        pid_t process = -1;
        check(posix_spawnp(&process, arguments[0], &m_Actions, &m_Attributes, arguments.data(), environ), command[0]);
        return process;
    }

private:
    posix_spawn_file_actions_t m_Actions{};
    posix_spawnattr_t m_Attributes{};
};

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string> &command) {
    Pipe input = makePipe();
    Pipe output = makePipe();
    m_Process = Start(input, output)(command);
    m_Input = std::move(input.writeEnd);
    m_Output = std::move(output.readEnd);
}

ChildProcess::~ChildProcess() {
    if (m_Process < 0)
        return;
    kill(m_Process, SIGKILL);
    wait();
}

bool ChildProcess::read(std::string &text, Clock::time_point deadline) const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd entry{m_Output.get(), POLLIN, 0};
    const int timeout_ms = static_cast<int>(std::clamp<decltype(left)>(left, 0, 60000));
    const int ready = poll(&entry, 1, timeout_ms);
    if (ready < 0 && errno == EINTR)
        return true;
    if (ready <= 0)
        return false;
    char buffer[16384];
    const ssize_t size = ::read(m_Output.get(), buffer, sizeof buffer);
    if (size <= 0)
        return size < 0 && errno == EINTR;
    text.append(buffer, static_cast<std::size_t>(size));
    return true;
}

int ChildProcess::wait() {
    int status = -1;
    while (waitpid(m_Process, &status, 0) < 0 && errno == EINTR)
        ;
    m_Process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::optional<std::string> outputOf(const std::vector<std::string> &command, std::chrono::milliseconds patience) {
    constexpr std::size_t MaxSize = 4 << 20;
    const auto deadline = Clock::now() + patience;
    try {
        ChildProcess program(command);
        program.closeInput();
        std::string text;
        for (bool goesOn = true; goesOn && text.size() <= MaxSize && !Gx::CStopScope::IsStopRequested();) {
            const auto soon = std::min(deadline, Clock::now() + std::chrono::milliseconds(50));
            goesOn = program.read(text, soon) || (Clock::now() >= soon && Clock::now() < deadline);
        }
        const bool isWhole = text.size() <= MaxSize && Clock::now() < deadline && !Gx::CStopScope::IsStopRequested();
        return isWhole && program.wait() == 0 ? std::optional(text) : std::nullopt;
    } catch (const std::system_error &) {
        return {};
    }
}

} // namespace commissioning
