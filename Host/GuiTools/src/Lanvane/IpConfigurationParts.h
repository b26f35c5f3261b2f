#pragma once

// What the parts of IpConfigurationWidget share beyond the class itself. Not for other files.

#include "Lanvane/ipconfigurationwidget.h"
#include "MinimalCorvo/TraceLog.h"

#include <QByteArray>
#include <QString>

#define TRACE(level, ...) tracelog::LogTrace(GetIPConfigBaseCatID(), level, __VA_ARGS__)

constexpr unsigned Progress = tracelog::lvNotice;
constexpr unsigned Warning = tracelog::lvWarning;
constexpr unsigned Error = tracelog::lvError;

/// In the selection info.
constexpr const char *MakeUsableLink = "#make-usable";

/// A text as the trace log takes it.
inline QByteArray bytes(const QString &text) { return text.toLocal8Bit(); }

/// A text as the transport layer takes it.
inline Corvo::String_t gc(const QString &text) { return text.toUtf8().constData(); }
