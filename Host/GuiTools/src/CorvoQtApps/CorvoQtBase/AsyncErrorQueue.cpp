#include "CorvoQtBase/AsyncErrorQueue.h"

#include <QCoreApplication>
#include <QMutexLocker>

namespace {

AsyncErrorQueue *makeGlobalQueue() {
    auto *queue = new AsyncErrorQueue;
    if (const QCoreApplication *application = QCoreApplication::instance())
        queue->moveToThread(application->thread());
    return queue;
}

} // namespace

AsyncErrorQueue::AsyncErrorQueue(QObject *parent) : QObject(parent) {}

void AsyncErrorQueue::reportErrorAsync(ErrorSeverity severity, const QString &text, const QString &addlText,
                                       const QString &source, const QString &funcContext, QWidget *parent) {
    {
        const QMutexLocker locker(&m_mutex);
        m_entries.append({severity, text, addlText, source, funcContext, parent});
    }
    QMetaObject::invokeMethod(this, "asyncSignaler", Qt::QueuedConnection);
}

int AsyncErrorQueue::count() const {
    const QMutexLocker locker(&m_mutex);
    return m_entries.count();
}

void AsyncErrorQueue::clear() {
    const QMutexLocker locker(&m_mutex);
    m_entries.clear();
}

void AsyncErrorQueue::asyncSignaler() {
    AsyncErrorEntry entry;
    while (takeFirst(entry))
        emit displayError(entry.m_severity, entry.m_strText, entry.m_strAddlText, entry.m_source, entry.m_funcContext,
                          entry.m_parent);
}

bool AsyncErrorQueue::takeFirst(AsyncErrorEntry &entry) {
    const QMutexLocker locker(&m_mutex);
    if (m_entries.isEmpty())
        return false;
    entry = m_entries.takeFirst();
    return true;
}

AsyncErrorQueue *GetTheGlobalAsyncErrorQueue() {
    static AsyncErrorQueue *const queue = makeGlobalQueue();
    return queue;
}
