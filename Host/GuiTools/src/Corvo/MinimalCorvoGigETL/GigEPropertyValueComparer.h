#pragma once

#include "MinimalCorvo/Properties.h"

#include <cstdint>

namespace Corvo {

/// Compares the properties of GigE device infos: "Address", "IpAddress", "DefaultGateway" and "SubnetMask" by the
/// address they mean, all others byte by byte. Two empty values are equal.
class GigEPropertyValueComparer : public IPropertyValueComparer {
public:
    /// \throws RuntimeException as inet_addr_local.
    bool PropertyValuesAreEqual(const String_t &key, const String_t &a, const String_t &b) const override;

    /// An address in host order, 0 for an empty text. Blanks around the parts are allowed; each part may be decimal,
    /// hexadecimal with 0x or, a trap, octal with a leading 0: "010" is 8. What follows the fourth part does not count.
    /// \throws RuntimeException "Invalid address: %s" for fewer parts or one outside 0 to 255.
    static std::uint32_t inet_addr_local(const String_t &text);
    /// The port after the first colon, 0 when there is none.
    static std::uint16_t getPortNumber(const String_t &text);
};

} // namespace Corvo
