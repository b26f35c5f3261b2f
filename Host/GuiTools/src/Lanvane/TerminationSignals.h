#pragma once

#include <QObject>

#include <functional>

class QSocketNotifier;

/// SIGTERM, SIGINT and SIGHUP end the process as they usually do, but not before it has cleaned up on the thread that
/// this lives on, in its event loop. While that thread is in the middle of something, the signal waits until it lets
/// events be processed. One object at a time; it does not change what other signals do.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    /// \throws std::system_error when the system has no descriptors left.
    explicit TerminationSignals(std::function<void()> cleanUp);
    ~TerminationSignals() override;

private:
    void end();

    std::function<void()> m_CleanUp;
    QSocketNotifier *m_pNotifier = nullptr;
};
