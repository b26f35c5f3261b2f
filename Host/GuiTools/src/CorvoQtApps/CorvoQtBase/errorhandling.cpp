#include "CorvoQtBase/errorhandling.h"

#include "CorvoQtBase/AsyncErrorQueue.h"

#include <QtDebug>

namespace {

void showExceptionText(const QString &context, const char *text) {
    showCriticalMessage(QStringLiteral("Error"), context, QString::fromUtf8(text), QString(), nullptr);
}

void logExtra(const QString &context, const QString &extra) {
    qDebug("%s: %s", qUtf8Printable(context), qUtf8Printable(extra));
}

} // namespace

void showWarningMessage(const QString &source, const QString &funcContext, const QString &text, const QString &addlText,
                        QWidget *parent) {
    qWarning("Warning: %s: %s : %s", qUtf8Printable(source), qUtf8Printable(funcContext), qUtf8Printable(text));
    GetTheGlobalAsyncErrorQueue()->reportErrorAsync(AsyncErrorQueue::ErrorSeverity_Warning, text, addlText, source,
                                                    funcContext, parent);
}

void showWarningMessage(const QString &source, const QString &funcContext, const QString &text, QWidget *parent) {
    showWarningMessage(source, funcContext, text, QString(), parent);
}

void showCriticalMessage(const QString &source, const QString &funcContext, const QString &text,
                         const QString &addlText, QWidget *parent) {
    qCritical("Critical message: %s : %s : %s : %s", qUtf8Printable(source), qUtf8Printable(funcContext),
              qUtf8Printable(text), qUtf8Printable(addlText));
    GetTheGlobalAsyncErrorQueue()->reportErrorAsync(AsyncErrorQueue::ErrorSeverity_Critical, text, addlText, source,
                                                    funcContext, parent);
}

void showCriticalMessage(const QString &source, const QString &funcContext, const QString &text, QWidget *parent) {
    showCriticalMessage(source, funcContext, text, QString(), parent);
}

void showException(const QString &context, const GenICam::GenericException &exception, QWidget * /*parent*/) {
    showExceptionText(context, exception.GetDescription());
}

void showException(const QString &context, const std::exception &exception, QWidget * /*parent*/) {
    showExceptionText(context, exception.what());
}

void showException(const QString &context, const GenICam::GenericException &exception, const QString &extra,
                   QWidget *parent) {
    logExtra(context, extra);
    showException(context, exception, parent);
}

void showException(const QString &context, const std::exception &exception, const QString &extra, QWidget *parent) {
    logExtra(context, extra);
    showException(context, exception, parent);
}

void showUnexpectedException(const QString &context, const QString &extra, QWidget * /*parent*/) {
    showCriticalMessage(QStringLiteral("Unexpected exception occurred"), context, extra, QString(), nullptr);
}
