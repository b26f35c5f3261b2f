#pragma once

#include <map>
#include <string>
#include <string_view>

namespace commissioning {

/// Names of the connections of the links that NetworkManager manages, by the links' names; empty for a link that has no
/// connection now. Empty where NetworkManager does not run. Takes 1 s at most.
std::map<std::string, std::string> managedConnections();
/// Of what `nmcli --terse --fields DEVICE,STATE,CONNECTION device` writes.
std::map<std::string, std::string> parseManagedConnections(std::string_view text);

} // namespace commissioning
