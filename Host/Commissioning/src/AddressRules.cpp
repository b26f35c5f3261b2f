#include "commissioning/AddressRules.h"

#include "MinimalCorvo/Utilities.h"

namespace commissioning {

std::optional<Address> addressFrom(const std::string &text) {
    Address address = 0;
    return Corvo::ParseDottedQuad(text.c_str(), address) ? std::optional(address) : std::nullopt;
}

} // namespace commissioning
