#include "Interruption.h"

#include "ExitCode.h"
#include "commissioning/AddressText.h"
#include "commissioning/CameraLock.h"

#include <csignal>
#include <cstdio>
#include <pthread.h>
#include <unistd.h>

namespace commandline {

namespace {

bool isIgnored(int number) {
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// The signals that end a run, and the one by which the waiting thread itself is ended. One that is ignored, as by
/// nohup, stays so.
sigset_t handledSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGUSR1}) {
        if (!isIgnored(number))
            sigaddset(&signals, number);
    }
    return signals;
}

} // namespace

Interruption::Interruption(bool isQuiet) : m_IsQuiet(isQuiet) {
    const sigset_t signals = handledSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away must not end a change half-way
    m_Thread = std::thread([this] { run(); });
}

Interruption::~Interruption() {
    m_IsEnding = true;
    pthread_kill(m_Thread.native_handle(), SIGUSR1);
    m_Thread.join();
}

void Interruption::run() {
    const sigset_t signals = handledSignals();
    int number = 0;
    while (sigwait(&signals, &number) == 0 && !m_IsEnding) {
        if (number == SIGUSR1)
            continue;
        if (isRequested())
            stopAtOnce();
        if (!m_IsQuiet)
            std::fputs("Stopping at the next safe point. Once more stops at once.\n", stderr);
        const std::lock_guard<std::mutex> lock(m_Lock);
        m_Token.RequestStop();
        m_Changed.notify_all();
    }
}

void Interruption::stopAtOnce() {
    for (const std::string &mac : commissioning::CameraLock::held())
        std::fprintf(stderr, "Stopped while changing the camera %s: it is not known what it has stored.\n",
                     commissioning::macText(mac).c_str());
    // Standard output is not flushed: whoever reads it may be what the first signal was waiting for.
    _exit(ExitInterrupted);
}

bool Interruption::sleep(std::chrono::milliseconds time) {
    std::unique_lock<std::mutex> lock(m_Lock);
    return m_Changed.wait_for(lock, time, [this] { return isRequested(); });
}

} // namespace commandline
