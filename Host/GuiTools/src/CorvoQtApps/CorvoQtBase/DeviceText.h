#pragma once

#include <QString>

// Texts that devices send are not to be trusted: anybody on the network can answer a discovery.

/// For plain-text displays (tree cells, line edits): drops control characters, line separators and invisible formatting
/// characters. The latter include the bidirectional ones, with which a text can show itself, and what stands beside it,
/// in another order than it is stored.
QString plainDeviceText(const QString &text);

/// For rich-text displays (labels, tool tips, message boxes): plainDeviceText with the characters of HTML escaped, so
/// that the text shows as it is and brings in no mark-up, picture or link.
QString richDeviceText(const QString &text);

/// For tool tips, which guess whether they are given mark-up: the text as it is. Empty for an empty text.
QString deviceTip(const QString &text);
