#pragma once

#include "commissioning/Inventory.h"

namespace commissioning {

enum class Fate;
enum class Path;

// The words for programs, which never change.

const char *toText(Mode mode);         ///< "static", "dhcp" or "auto"
const char *toText(Status status);     ///< "ok", "in-use", "not-reachable" or "unknown"
const char *toText(Severity severity); ///< "error", "warning" or "info"
const char *toText(LinkKind kind);     ///< "physical", "bridge", "vlan", "virtual" or "wireless"
const char *toText(Path path);         ///< "none", "broadcast", "unicast" or "force"
const char *toText(Fate fate);         ///< "open", "done", "failed", "unconfirmed" or "rolled-back"

} // namespace commissioning
