#include "RetriggerableTimerPosix.h"

#include "Clock.h"
#include "GxAssert.h"
#include "TraceImp.h"

#include <cerrno>
#include <ctime>

namespace GxImp::Posix {

CRetriggerableTimer::CRetriggerableTimer() noexcept : m_Thread(*this) {}

GXSTATUS CRetriggerableTimer::Create(std::uint32_t period_ms) noexcept {
    if (m_Thread.IsStarted())
        return GX_E_INTERNAL;
    m_Period_ms = period_ms;
    m_Running = true;
    const GXSTATUS status = m_Thread.Create();
    if (status != GX_SUCCESS) {
        m_Running = false;
        GX_TRACE(FlagGeneral, LevelError, "Failed to creating timer thread. Status = 0x%08X", status);
    }
    return status;
}

GXSTATUS CRetriggerableTimer::Retrigger(std::uint32_t period_ms) noexcept {
    CAutoLock lock(m_mutex);
    m_Period_ms = period_ms;
    if (pthread_cond_signal(&m_cond) == 0)
        return GX_SUCCESS;
    GX_TRACE(FlagGeneral, LevelError, "Failed to retrigger timer thread. Status = 0x%08X", GX_E_INTERNAL);
    return GX_E_INTERNAL;
}

GXSTATUS CRetriggerableTimer::Stop() noexcept {
    m_Running = false;
    // Without the mutex this signal can slip by a thread that is just about to wait; Join signals again, under it.
    return pthread_cond_signal(&m_cond) == 0 ? GX_SUCCESS : GX_E_INTERNAL;
}

void CRetriggerableTimer::Join() noexcept {
    if (m_Thread.IsCurrent())
        m_Thread.Detach();
    if (!m_Thread.IsStarted())
        return;
    {
        CAutoLock lock(m_mutex);
        GX_ASSERT(pthread_cond_signal(&m_cond) == 0);
    }
    GX_ASSERT(m_Thread.Join(nullptr, GX_INFINITE) == GX_SUCCESS);
}

bool CRetriggerableTimer::WaitForPeriod() noexcept {
    // On a wall clock that is set back the heartbeat would pause, and the device take its privilege back.
    const timespec deadline = MonotonicIn(m_Period_ms);
    return pthread_cond_clockwait(&m_cond, m_mutex.GetMutex(), CLOCK_MONOTONIC, &deadline) == ETIMEDOUT;
}

std::uint32_t CRetriggerableTimer::CTimerThread::Run() noexcept {
    {
        CAutoLock lock(m_Timer.m_mutex);
        while (m_Timer.m_Running) {
            if (m_Timer.WaitForPeriod() && m_Timer.m_Running)
                m_Timer.TimeoutRoutine();
        }
    }
    m_Timer.OnEnded(); // may delete the timer and, with it, this object
    return 0;
}

} // namespace GxImp::Posix
