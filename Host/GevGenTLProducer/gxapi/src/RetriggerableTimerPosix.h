#pragma once

#include "ThreadPosix.h"

#include <atomic>

namespace GxImp::Posix {

/// Periodic timer whose running period can be restarted.
///
/// The timeout routine runs on the timer's thread with the timer mutex held, so it must not call Retrigger. Stop takes
/// no mutex and may be called from anywhere, the routine and threads that hold a lock the routine waits for included.
/// Whoever destroys the timer calls Stop and Join before the derived part is gone; on the timer's thread only from
/// OnEnded.
class CRetriggerableTimer {
public:
    CRetriggerableTimer() noexcept;
    virtual ~CRetriggerableTimer() = default;
    CRetriggerableTimer(const CRetriggerableTimer &) = delete;
    CRetriggerableTimer &operator=(const CRetriggerableTimer &) = delete;

    /// Starts the timer. \return GX_E_INTERNAL when it is already started or has no thread.
    [[nodiscard]] GXSTATUS Create(std::uint32_t period_ms) noexcept;
    /// Sets the period and starts a full new one. Waits for a running timeout routine.
    [[nodiscard]] GXSTATUS Retrigger(std::uint32_t period_ms) noexcept;
    /// No timeout routine starts after this; one that is running goes on.
    [[nodiscard]] GXSTATUS Stop() noexcept;
    /// Waits for the thread of a stopped timer, or lets go of it when it is the caller's. The caller must hold no lock
    /// that the timeout routine takes.
    void Join() noexcept;
    /// True from Create to Stop.
    bool IsStarted() const noexcept { return m_Running; }

protected:
    virtual void TimeoutRoutine() noexcept = 0;
    /// The last that the timer's thread does after Stop; no lock is held, and the timer may be destroyed.
    virtual void OnEnded() noexcept {}

private:
    class CTimerThread : public CThread {
    public:
        explicit CTimerThread(CRetriggerableTimer &timer) noexcept : m_Timer(timer) {}

    protected:
        std::uint32_t Run() noexcept override;

    private:
        CRetriggerableTimer &m_Timer;
    };

    /// False when the period was cut short by Retrigger or Stop.
    bool WaitForPeriod() noexcept;

    std::atomic<bool> m_Running{false};
    std::uint32_t m_Period_ms = 0; ///< guarded by m_mutex
    CCriticalSection m_mutex;
    pthread_cond_t m_cond = PTHREAD_COND_INITIALIZER;
    CTimerThread m_Thread;
};

} // namespace GxImp::Posix
