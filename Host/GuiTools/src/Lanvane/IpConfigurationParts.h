#pragma once

// What the parts of IpConfigurationWidget share beyond the class itself. Not for other files.

#include "Lanvane/ipconfigurationwidget.h"

#include <QString>

/// In the selection info.
constexpr const char *MakeUsableLink = "#make-usable";

/// A text as the transport layer takes it.
inline Corvo::String_t gc(const QString &text) { return text.toUtf8().constData(); }
