#pragma once

#include "commissioning/Firewall.h"

#include <optional>
#include <string_view>

namespace commissioning {

/// What a ruleset of nftables does with the answers of cameras; none for a text that is no ruleset.
///
/// Follows rules about protocol, ports, adapters and the state of a connection; what it does not know may match or not.
/// \param text what `nft --json list ruleset` writes.
/// \param adapters that answers arrive by; dropping what arrives by one of them counts.
std::optional<Firewall> judgeRuleset(std::string_view text, const std::vector<std::string> &adapters);

} // namespace commissioning
