#pragma once

#include "gxapi/StopToken.h"

#include <QObject>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <stdexcept>

/// Ends an operation at a safe point, because the user has cancelled it.
class OperationCancelled : public std::runtime_error {
public:
    OperationCancelled() : std::runtime_error("The operation was cancelled.") {}
};

/// Runs one operation at a time on a thread of its own. The GUI thread, which asked for it, waits for its end and
/// processes events meanwhile; what the user does reaches modal dialogs and nothing else.
///
/// Widgets and what belongs to them stay the GUI thread's: the operation asks for it (onGui, post). What an operation
/// works with is the operation's as long as it runs, and the GUI thread's inside such a call, for which it waits.
class Operation : public QObject {
    Q_OBJECT

public:
    // GUI thread.

    /// Returns when the work has ended. \throws what it throws; std::system_error when no thread can be made.
    void run(const std::function<void()> &work);
    /// Asks the running operation to end at its next safe point.
    void cancel();
    /// Cancels, and waits until the operation has ended or waits for the GUI thread, so that it does nothing.
    void end();

    // Any thread.

    bool isRunning() const { return m_IsRunning; }
    /// Whether the operation that runs, or else the last one, was cancelled.
    bool isCancelled() const { return m_Token && m_Token->IsStopRequested(); }
    /// Of the operation that runs: set when it is cancelled.
    const Gx::CStopToken *token() const { return &*m_Token; }
    /// Has the GUI thread do something and waits for that. \throws what it throws.
    void onGui(const std::function<void()> &work);
    /// Leaves something to the GUI thread, which has done it before run() returns.
    void post(std::function<void()> work);

    // The operation's thread.

    /// \throws OperationCancelled, at the latest when the time is over.
    void pause(std::chrono::milliseconds time);
    void throwIfCancelled() const;

private:
    void doPosted();
    void awaitEnd(bool evenInCall);

    std::atomic<bool> m_IsRunning{false};
    int m_CallDepth = 0; ///< of what the operation waits for; GUI thread
    std::optional<Gx::CStopToken> m_Token;
    std::mutex m_Lock; ///< guards what follows, and the wait
    std::condition_variable m_Changed;
    std::deque<std::function<void()>> m_Posted;
};
