#pragma once

#include "gxapi/GxStatus.h"

#include <pthread.h>

namespace GxImp::Posix {

/// Mutex. A failing operation is a programming error and ends the process.
class CCriticalSection {
public:
    enum class Kind { Normal, Recursive };

    explicit CCriticalSection(Kind kind = Kind::Normal) noexcept;
    ~CCriticalSection();
    CCriticalSection(const CCriticalSection &) = delete;
    CCriticalSection &operator=(const CCriticalSection &) = delete;

    void Enter() noexcept;
    void Leave() noexcept;
    /// For condition variables.
    pthread_mutex_t *GetMutex() noexcept { return &m_Mutex; }

private:
    pthread_mutex_t m_Mutex{};
};

/// Holds a critical section for the time of a scope.
class CAutoLock {
public:
    explicit CAutoLock(CCriticalSection &section) noexcept : m_Section(section) { m_Section.Enter(); }
    ~CAutoLock() { m_Section.Leave(); }
    CAutoLock(const CAutoLock &) = delete;
    CAutoLock &operator=(const CAutoLock &) = delete;

private:
    CCriticalSection &m_Section;
};

/// A joinable thread. Create and Join belong to one owner at a time; a started thread must be joined or
/// detached before the object is destroyed.
class CThread {
public:
    CThread() noexcept = default;
    virtual ~CThread();
    CThread(const CThread &) = delete;
    CThread &operator=(const CThread &) = delete;

    /// \return GX_E_INTERNAL when the thread is started already or cannot be.
    [[nodiscard]] GXSTATUS Create() noexcept;
    /// Waits for the end of Run. \return GX_E_INTERNAL when the thread is not started. \param pExitCode may be null.
    /// \param timeout_ms GX_INFINITE waits without end.
    [[nodiscard]] GXSTATUS Join(std::uint32_t *pExitCode, std::uint32_t timeout_ms) noexcept;
    /// In place of Join, on the thread itself.
    void Detach() noexcept;
    bool IsStarted() const noexcept { return m_Started; }
    bool IsCurrent() const noexcept { return m_Started && pthread_equal(m_Handle, pthread_self()) != 0; }
    pthread_t GetHandle() const noexcept { return m_Handle; }

protected:
    /// Executed on the new thread; the result is the exit code.
    virtual std::uint32_t Run() noexcept = 0;

private:
    static void *ThreadProcedure(void *self) noexcept;

    pthread_t m_Handle{};
    bool m_Started = false;
};

} // namespace GxImp::Posix
