#pragma once

#include <QObject>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

/// Measures, as long as it lives, for how long the thread that made it lets events wait.
class Watchdog {
public:
    Watchdog()
        : m_Thread([this] {
              for (; !m_Done; std::this_thread::sleep_for(std::chrono::milliseconds(2)))
                  measure();
          }) {}
    ~Watchdog() {
        m_Done = true;
        m_Thread.join();
    }
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

    /// \returns the longest wait since the last call, the one in progress included.
    int takeLongest_ms() {
        note();
        return m_Longest_ms.exchange(0);
    }

private:
    using Clock = std::chrono::steady_clock;

    void note() {
        const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_Posted.load());
        if (!m_IsAnswered)
            m_Longest_ms = std::max(m_Longest_ms.load(), static_cast<int>(waited.count()));
    }
    void measure() {
        if (m_IsAnswered.exchange(false)) {
            m_Posted = Clock::now();
            QMetaObject::invokeMethod(
                &m_Context,
                [this] {
                    note();
                    m_IsAnswered = true;
                },
                Qt::QueuedConnection);
        }
    }

    QObject m_Context;
    std::atomic<bool> m_Done{false};
    std::atomic<bool> m_IsAnswered{true};
    std::atomic<Clock::time_point> m_Posted{Clock::now()};
    std::atomic<int> m_Longest_ms{0};
    std::thread m_Thread;
};
