#include "Lanvane/TerminationSignals.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr int Signals[] = {SIGTERM, SIGINT, SIGHUP};

int s_Pipe[2] = {-1, -1}; // a handler may do no more than write to it

void handle(int signal) {
    const int before = errno;
    const auto number = static_cast<unsigned char>(signal);
    [[maybe_unused]] const auto written = write(s_Pipe[1], &number, sizeof number); // full: there is one already
    errno = before;
}

void setHandlers(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : Signals)
        sigaction(signal, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> cleanUp) : m_CleanUp(std::move(cleanUp)) {
    if (pipe2(s_Pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    m_pNotifier = new QSocketNotifier(s_Pipe[0], QSocketNotifier::Read, this);
    connect(m_pNotifier, &QSocketNotifier::activated, this, &TerminationSignals::end);
    setHandlers(&handle);
}

TerminationSignals::~TerminationSignals() {
    setHandlers(SIG_DFL);
    close(s_Pipe[0]);
    close(s_Pipe[1]);
}

void TerminationSignals::end() {
    unsigned char signal = 0;
    if (read(s_Pipe[0], &signal, sizeof signal) != sizeof signal)
        return;
    m_CleanUp();
    setHandlers(SIG_DFL);
    std::raise(signal);
}
