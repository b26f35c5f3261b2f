#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <utility>

/// Measures, as long as it lives, for how long the thread that made it lets events wait.
class Watchdog {
public:
    Watchdog() {
        QObject::connect(&m_Beat, &QTimer::timeout, &m_Beat, [this] { note(); });
        m_Beat.start(2);
        m_Last.start();
    }

    /// \returns the longest wait since the last call, the one in progress included.
    int takeLongest_ms() {
        note();
        return std::exchange(m_Longest_ms, 0);
    }

private:
    void note() { m_Longest_ms = std::max(m_Longest_ms, static_cast<int>(m_Last.restart())); }

    QTimer m_Beat;
    QElapsedTimer m_Last;
    int m_Longest_ms = 0;
};
