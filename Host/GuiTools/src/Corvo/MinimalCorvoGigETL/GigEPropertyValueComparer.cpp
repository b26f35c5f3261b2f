#include "MinimalCorvoGigETL/GigEPropertyValueComparer.h"

#include "Base/GCException.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace Corvo {

bool GigEPropertyValueComparer::PropertyValuesAreEqual(const String_t &key, const String_t &a,
                                                       const String_t &b) const {
    if (a.empty() && b.empty())
        return true;
    if (key == "Address")
        return inet_addr_local(a) == inet_addr_local(b) && getPortNumber(a) == getPortNumber(b);
    if (key == "IpAddress" || key == "DefaultGateway" || key == "SubnetMask")
        return inet_addr_local(a) == inet_addr_local(b);
    return a == b;
}

std::uint32_t GigEPropertyValueComparer::inet_addr_local(const String_t &text) {
    if (text.empty())
        return 0;
    long long parts[4]; // wide, so that a number that does not fit is seen
    const int read = std::sscanf(text, " %lli . %lli . %lli . %lli ", &parts[0], &parts[1], &parts[2], &parts[3]);
    if (read != 4 ||
        std::any_of(std::begin(parts), std::end(parts), [](long long part) { return part < 0 || part > 255; }))
        throw RUNTIME_EXCEPTION("Invalid address: %s", text.c_str());
    std::uint32_t address = 0;
    for (const long long part : parts)
        address = address << 8 | static_cast<std::uint32_t>(part);
    return address;
}

std::uint16_t GigEPropertyValueComparer::getPortNumber(const String_t &text) {
    std::uint16_t port = 0;
    std::sscanf(text, "%*[^:]:%hu", &port);
    return port;
}

} // namespace Corvo
