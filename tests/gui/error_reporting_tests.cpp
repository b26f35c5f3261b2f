#include "CorvoQtBase/AsyncErrorQueue.h"
#include "CorvoQtBase/errorhandling.h"
#include "QtText.h"

#include <QCoreApplication>
#include <QStringList>
#include <QThread>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace {

using testing::ElementsAre;

QStringList *s_log = nullptr;

void gatherMessage(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message) {
    if (type == QtWarningMsg || type == QtCriticalMsg)
        *s_log += (type == QtWarningMsg ? "W " : "C ") + message;
}

/// Gathers the log lines and what the global queue emits.
class ErrorReporting : public testing::Test {
protected:
    ErrorReporting() {
        s_log = &m_log;
        m_previousHandler = qInstallMessageHandler(gatherMessage);
        QObject::connect(m_queue, &AsyncErrorQueue::displayError, &m_context,
                         [this](AsyncErrorQueue::ErrorSeverity severity, const QString &text, const QString &addlText,
                                const QString &source, const QString &funcContext, QWidget *parent) {
                             EXPECT_EQ(QThread::currentThread(), qApp->thread());
                             m_emitted += QStringList({QString::number(severity), text, addlText, source, funcContext,
                                                       parent ? "widget" : "null"})
                                              .join('|');
                         });
    }
    ~ErrorReporting() override { qInstallMessageHandler(m_previousHandler); }

    AsyncErrorQueue *m_queue = GetTheGlobalAsyncErrorQueue();
    QObject m_context;
    QWidget m_widget;
    QStringList m_log;
    QStringList m_emitted;
    QtMessageHandler m_previousHandler;
};

} // namespace

TEST_F(ErrorReporting, LogsAtOnceAndEmitsOnTheEventLoop) {
    showWarningMessage("Src", "ctx", "text 100%", "more", &m_widget);
    showCriticalMessage("Src", "ctx", "Größe", &m_widget);
    EXPECT_THAT(m_log, ElementsAre("W Warning: Src: ctx : text 100%", "C Critical message: Src : ctx : Größe : "));
    EXPECT_TRUE(m_emitted.isEmpty());
    EXPECT_EQ(m_queue->count(), 2);
    QCoreApplication::processEvents();
    EXPECT_THAT(m_emitted, ElementsAre("30|text 100%|more|Src|ctx|widget", "10|Größe||Src|ctx|widget"));
    EXPECT_EQ(m_queue->count(), 0);
}

TEST_F(ErrorReporting, ReportsExceptionsWithoutParent) {
    const GenICam::RuntimeException exception("no link", "file.cpp", 7);
    showException("forceIp", exception, "extra", &m_widget);
    showException("refresh", std::runtime_error("plain"), &m_widget);
    showUnexpectedException("close", "Unknown exception occurred", &m_widget);
    EXPECT_THAT(m_log, ElementsAre("C Critical message: Error : forceIp : no link : ", testing::_, testing::_));
    QCoreApplication::processEvents();
    EXPECT_THAT(m_emitted, ElementsAre("10|no link||Error|forceIp|null", "10|plain||Error|refresh|null",
                                       "10|Unknown exception occurred||Unexpected exception occurred|close|null"));
}

TEST_F(ErrorReporting, TakesReportsFromOtherThreadsAndFromReceivers) {
    QObject::connect(
        m_queue, &AsyncErrorQueue::displayError, &m_context,
        [](AsyncErrorQueue::ErrorSeverity severity) {
            if (severity == AsyncErrorQueue::ErrorSeverity_Warning)
                showCriticalMessage("receiver", "ctx", "b", nullptr);
        },
        Qt::DirectConnection);
    std::thread([] { showWarningMessage("thread", "ctx", "a", nullptr); }).join();
    QCoreApplication::processEvents();
    EXPECT_THAT(m_emitted, ElementsAre("30|a||thread|ctx|null", "10|b||receiver|ctx|null"));
}

TEST_F(ErrorReporting, ForgetsDestroyedParentsAndClearedReports) {
    auto parent = std::make_unique<QWidget>();
    showWarningMessage("Src", "ctx", "cleared", nullptr);
    m_queue->clear();
    showWarningMessage("Src", "ctx", "kept", parent.get());
    parent.reset();
    QCoreApplication::processEvents();
    EXPECT_THAT(m_emitted, ElementsAre("30|kept||Src|ctx|null"));
}
