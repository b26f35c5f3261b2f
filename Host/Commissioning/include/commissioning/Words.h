#pragma once

#include "commissioning/Inventory.h"

namespace commissioning {

// The words for programs, which never change.

const char *toText(Mode mode);         ///< "static", "dhcp" or "auto"
const char *toText(Status status);     ///< "ok", "in-use", "not-reachable" or "unknown"
const char *toText(Severity severity); ///< "error", "warning" or "info"
const char *toText(LinkKind kind);     ///< "physical", "bridge", "vlan", "virtual" or "wireless"

} // namespace commissioning
