#pragma once

#include <QList>
#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

/// Holds error reports and emits each later, on the event loop of the thread that owns the queue, as a signal.
///
/// Threads: every public operation may be called from any thread; m_mutex guards the list and is never held while the
/// signal is emitted, so that a receiver may report in turn. Reports still queued when the queue is destroyed are
/// dropped.
class AsyncErrorQueue : public QObject {
    Q_OBJECT

public:
    enum ErrorSeverity {
        ErrorSeverity_Critical = 10,
        ErrorSeverity_Error = 20,
        ErrorSeverity_Warning = 30,
        ErrorSeverity_Information = 40,
        ErrorSeverity_Notice = 50,
        ErrorSeverity_Debug = 60
    };
    Q_ENUM(ErrorSeverity)

    /// One queued report.
    struct AsyncErrorEntry {
        ErrorSeverity m_severity = ErrorSeverity_Error;
        QString m_strText;
        QString m_strAddlText;
        QString m_source;           ///< what reports it
        QString m_funcContext;      ///< function or action in which it happened
        QPointer<QWidget> m_parent; ///< widget a display would belong to; null when there is none or it is gone
    };

    explicit AsyncErrorQueue(QObject *parent = nullptr);

    /// Appends a report and asks the owning thread to emit it.
    void reportErrorAsync(ErrorSeverity severity, const QString &text, const QString &addlText, const QString &source,
                          const QString &funcContext, QWidget *parent);

    /// Number of reports not yet emitted.
    int count() const;
    /// Drops all reports not yet emitted.
    void clear();

public slots:
    /// Emits displayError for every queued report, oldest first.
    void asyncSignaler();

signals:
    void displayError(AsyncErrorQueue::ErrorSeverity severity, const QString &text, const QString &addlText,
                      const QString &source, const QString &funcContext, QWidget *parent);

private:
    bool takeFirst(AsyncErrorEntry &entry);

    mutable QMutex m_mutex;
    QList<AsyncErrorEntry> m_entries;
};

/// The queue of the process, owned by the GUI thread whichever thread asks first. Never null and never destroyed, so
/// that a thread which outlives the application object may still report.
AsyncErrorQueue *GetTheGlobalAsyncErrorQueue();
