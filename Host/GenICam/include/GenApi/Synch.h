#pragma once

#include <mutex>

namespace GenApi {

/// A recursive mutex.
class CLock {
public:
    CLock() = default;
    CLock(const CLock &) = delete;
    CLock &operator=(const CLock &) = delete;

    void Lock() { m_mutex.lock(); }
    /// Takes the lock only when that needs no waiting.
    [[nodiscard]] bool TryLock() { return m_mutex.try_lock(); }
    void Unlock() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// Holds a lock for the length of a scope.
class AutoLock {
public:
    explicit AutoLock(CLock &lock) : m_lock(lock) { m_lock.Lock(); }
    ~AutoLock() { m_lock.Unlock(); }
    AutoLock(const AutoLock &) = delete;
    AutoLock &operator=(const AutoLock &) = delete;

private:
    CLock &m_lock;
};

} // namespace GenApi
