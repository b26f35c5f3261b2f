#pragma once

#include "gxapi/StopToken.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace commandline {

/// Takes SIGINT, SIGTERM and SIGHUP for the life of the process: the first one asks to stop at the next safe point, the
/// second one names the cameras that are being changed and ends the process at once. Made before any other thread, so
/// that all of them leave the signals to it.
class Interruption {
public:
    /// \param isQuiet whether nothing is said of the first signal, as where it is the usual end.
    explicit Interruption(bool isQuiet);
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    bool isRequested() const { return m_Token.IsStopRequested(); }
    /// Requested by the first signal.
    const Gx::CStopToken &token() const { return m_Token; }
    /// Sleeps, not longer than until a stop is asked for. \returns whether it was.
    bool sleep(std::chrono::milliseconds time);

private:
    void run();
    [[noreturn]] void stopAtOnce();

    const bool m_IsQuiet;
    std::mutex m_Lock; ///< guards the wait
    std::condition_variable m_Changed;
    Gx::CStopToken m_Token;
    std::atomic<bool> m_IsEnding{false};
    std::thread m_Thread;
};

} // namespace commandline
