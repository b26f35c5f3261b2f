#pragma once

#include "Lanvane/Situation.h"

#include <QString>

// Findings as rich text. What comes from cameras and the host is escaped.

/// Each finding with the commands that help, each of which has a link that copies it; empty for none.
QString findingsText(const Situation::Findings &findings);
/// The same below an adapter's data: when it was searched and no camera is behind it, that comes first.
QString adapterFindingsText(const Situation &situation, const QString &adapter);
/// The same without commands, for a tool tip.
QString findingsTip(const Situation::Findings &findings);

/// The command that such a link copies; empty for any other link.
QString commandOf(const QString &link);
