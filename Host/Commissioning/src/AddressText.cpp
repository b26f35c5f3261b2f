#include "commissioning/AddressText.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <charconv>

namespace commissioning {

std::string toText(Address address) {
    const in_addr network{htonl(address)};
    char text[INET_ADDRSTRLEN] = "";
    return inet_ntop(AF_INET, &network, text, sizeof text);
}

std::optional<Address> parseAddress(const std::string &text) {
    in_addr network{};
    if (inet_pton(AF_INET, text.c_str(), &network) != 1)
        return std::nullopt;
    return ntohl(network.s_addr);
}

Address maskOfPrefix(int length) { return length == 0 ? 0 : ~Address{0} << (32 - length); }

int prefixLength(Address mask) {
    int length = 0;
    while (length < 32 && (mask & (Address{1} << (31 - length))) != 0)
        ++length;
    return length;
}

std::optional<Address> parseMask(const std::string &text) {
    if (const auto dotted = parseAddress(text))
        return *dotted == maskOfPrefix(prefixLength(*dotted)) ? dotted : std::nullopt;
    const std::size_t start = text.rfind('/', 0) == 0 ? 1 : 0;
    int length = -1;
    const char *end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data() + start, end, length);
    if (error != std::errc() || last != end || length < 0 || length > 32)
        return std::nullopt;
    return maskOfPrefix(length);
}

std::string parseMac(const std::string &text) {
    constexpr std::size_t Digits = 12;
    std::string mac;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isxdigit(byte) != 0)
            mac += static_cast<char>(std::toupper(byte));
        else if (std::string(":-. ").find(character) == std::string::npos)
            return {};
    }
    return mac.size() == Digits ? mac : std::string();
}

std::string macWithColons(const std::string &mac) {
    if (mac.size() != 12)
        return mac;
    std::string text = mac.substr(0, 2);
    for (std::size_t i = 2; i < mac.size(); i += 2)
        text += ':' + mac.substr(i, 2);
    return text;
}

const char *toText(Mode mode) {
    switch (mode) {
    case Mode::Static:
        return "static";
    case Mode::Dhcp:
        return "dhcp";
    case Mode::Auto:
        break;
    }
    return "auto";
}

const char *toText(Status status) {
    switch (status) {
    case Status::Ok:
        return "ok";
    case Status::InUse:
        return "in-use";
    case Status::NotReachable:
        return "not-reachable";
    case Status::Unknown:
        break;
    }
    return "unknown";
}

const char *toText(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return "error";
    case Severity::Warning:
        return "warning";
    case Severity::Info:
        break;
    }
    return "info";
}

const char *toText(LinkKind kind) {
    switch (kind) {
    case LinkKind::Physical:
        return "physical";
    case LinkKind::Bridge:
        return "bridge";
    case LinkKind::Vlan:
        return "vlan";
    case LinkKind::Wireless:
        return "wireless";
    case LinkKind::Virtual:
        break;
    }
    return "virtual";
}

} // namespace commissioning
