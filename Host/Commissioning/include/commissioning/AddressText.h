#pragma once

#include "commissioning/Inventory.h"

#include <optional>
#include <string>

namespace commissioning {

/// "192.168.1.20"
std::string toText(Address address);
/// Four decimal numbers and nothing else; none for any other text.
std::optional<Address> parseAddress(const std::string &text);
/// A mask as an address or as the length of a prefix, 0 to 32, that "/" may precede; none for any other text and for a
/// mask with gaps.
std::optional<Address> parseMask(const std::string &text);
/// Number of leading ones. \param mask without gaps.
int prefixLength(Address mask);
Address maskOfPrefix(int length);

/// 12 hexadecimal digits in any spelling as upper-case digits without separators; empty for any other text.
std::string parseMac(const std::string &text);
/// "02:5A:E3:01:00:01" of 12 digits; any other text as it is.
std::string macWithColons(const std::string &mac);

/// "static", "dhcp" or "auto".
const char *toText(Mode mode);
/// "ok", "in-use", "not-reachable" or "unknown".
const char *toText(Status status);
/// "error", "warning" or "info".
const char *toText(Severity severity);
/// "physical", "bridge", "vlan", "virtual" or "wireless".
const char *toText(LinkKind kind);

} // namespace commissioning
