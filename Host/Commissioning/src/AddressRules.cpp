#include "commissioning/AddressRules.h"

#include <arpa/inet.h>

namespace commissioning {

std::optional<Address> addressFrom(const std::string &text) {
    in_addr network{};
    if (inet_pton(AF_INET, text.c_str(), &network) != 1)
        return std::nullopt;
    return ntohl(network.s_addr);
}

} // namespace commissioning
