#include "ThreadPosix.h"

#include "Clock.h"
#include "GxAssert.h"

#include <cerrno>

namespace GxImp::Posix {

CCriticalSection::CCriticalSection(Kind kind) noexcept {
    pthread_mutexattr_t attributes;
    GX_ASSERT(pthread_mutexattr_init(&attributes) == 0);
    const int type = kind == Kind::Recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_ERRORCHECK;
    GX_ASSERT(pthread_mutexattr_settype(&attributes, type) == 0);
    GX_ASSERT(pthread_mutex_init(&m_Mutex, &attributes) == 0);
    GX_ASSERT(pthread_mutexattr_destroy(&attributes) == 0);
}

CCriticalSection::~CCriticalSection() { GX_ASSERT(pthread_mutex_destroy(&m_Mutex) == 0); }

void CCriticalSection::Enter() noexcept { GX_ASSERT(pthread_mutex_lock(&m_Mutex) == 0); }

void CCriticalSection::Leave() noexcept { GX_ASSERT(pthread_mutex_unlock(&m_Mutex) == 0); }

CThread::~CThread() { GX_ASSERT(!m_Started); }

GXSTATUS CThread::Create() noexcept {
    if (m_Started)
        return GX_E_INTERNAL;
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return GX_E_INTERNAL;
    m_Started = pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_JOINABLE) == 0 &&
                pthread_create(&m_Handle, &attributes, &CThread::ThreadProcedure, this) == 0;
    pthread_attr_destroy(&attributes);
    return m_Started ? GX_SUCCESS : GX_E_INTERNAL;
}

GXSTATUS CThread::Join(std::uint32_t *pExitCode, std::uint32_t timeout_ms) noexcept {
    if (!m_Started)
        return GX_E_INTERNAL;
    void *exitCode = nullptr;
    int error = 0;
    if (timeout_ms == GX_INFINITE) {
        error = pthread_join(m_Handle, &exitCode);
    } else {
        const timespec deadline = MonotonicIn(timeout_ms);
        error = pthread_clockjoin_np(m_Handle, &exitCode, CLOCK_MONOTONIC, &deadline);
    }
    if (error == ETIMEDOUT)
        return GX_E_TIMEOUT;
    if (error != 0)
        return GX_E_INTERNAL;
    m_Started = false;
    if (pExitCode)
        *pExitCode = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(exitCode));
    return GX_SUCCESS;
}

void CThread::Detach() noexcept {
    GX_ASSERT(pthread_detach(m_Handle) == 0);
    m_Started = false;
}

void *CThread::ThreadProcedure(void *self) noexcept {
    const std::uint32_t exitCode = static_cast<CThread *>(self)->Run();
    return reinterpret_cast<void *>(std::uintptr_t{exitCode}); // NOLINT(performance-no-int-to-ptr): carries a number
}

} // namespace GxImp::Posix
