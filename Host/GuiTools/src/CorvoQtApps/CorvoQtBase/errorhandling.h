#pragma once

#include "Base/GCException.h"

#include <QString>

#include <exception>

class QWidget;

// Each function writes the report to the Qt message log at once and hands it to the global AsyncErrorQueue. None opens
// a dialog and none throws on account of its arguments; all may be called from any thread.
//
// source: what reports it. funcContext: the function or action in which it happened. addlText: further detail.

/// Queued with ErrorSeverity_Warning. \param parent widget a display would belong to, may be null.
void showWarningMessage(const QString &source, const QString &funcContext, const QString &text, const QString &addlText,
                        QWidget *parent);
void showWarningMessage(const QString &source, const QString &funcContext, const QString &text, QWidget *parent);

/// Queued with ErrorSeverity_Critical. \param parent widget a display would belong to, may be null.
void showCriticalMessage(const QString &source, const QString &funcContext, const QString &text,
                         const QString &addlText, QWidget *parent);
void showCriticalMessage(const QString &source, const QString &funcContext, const QString &text, QWidget *parent);

// A report made from an exception never belongs to a widget: the parent is taken, so that calls read alike, and left
// out.

/// Critical report with the exception's own text (its description, in UTF-8) and the source "Error".
void showException(const QString &context, const GenICam::GenericException &exception, QWidget *parent);
void showException(const QString &context, const std::exception &exception, QWidget *parent);
/// \param extra what the caller was about to do; it goes to the debug log only, the report stays the exception's.
void showException(const QString &context, const GenICam::GenericException &exception, const QString &extra,
                   QWidget *parent);
void showException(const QString &context, const std::exception &exception, const QString &extra, QWidget *parent);

/// Critical report of an exception of unknown type. \param extra stands for the text that such an exception lacks.
void showUnexpectedException(const QString &context, const QString &extra, QWidget *parent);
