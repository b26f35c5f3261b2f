#include "camsim/Address.h"

#include <arpa/inet.h>

#include <cctype>
#include <cstdio>
#include <stdexcept>

namespace camsim {

Ipv4 Ipv4::parse(const std::string &text) {
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1)
        throw std::invalid_argument("'" + text + "' is no IPv4 address; expected four numbers like 192.168.1.10");
    return {ntohl(address.s_addr)};
}

Ipv4 Ipv4::maskOf(unsigned prefixLength) {
    if (prefixLength > 32)
        throw std::invalid_argument("a prefix length of " + std::to_string(prefixLength) + " is above 32");
    return {prefixLength == 0 ? 0 : 0xFFFFFFFFu << (32 - prefixLength)};
}

std::string Ipv4::toString() const {
    char text[16];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", value >> 24, value >> 16 & 0xFF, value >> 8 & 0xFF, value & 0xFF);
    return text;
}

unsigned IpSettings::prefixLength() const {
    unsigned length = 0;
    while (length < 32 && (mask.value << length & 0x80000000u) != 0)
        ++length;
    return length;
}

bool IpSettings::isUsable() const {
    const unsigned length = prefixLength();
    if (length == 0 || mask != Ipv4::maskOf(length))
        return false;
    const std::uint32_t firstOctet = address.value >> 24;
    if (firstOctet == 0 || firstOctet >= 224)
        return false;
    const std::uint32_t host = address.value & ~mask.value;
    return length >= 31 || (host != 0 && host != ~mask.value);
}

MacAddress MacAddress::parse(const std::string &text) {
    std::string digits;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool separator = (text[i] == ':' || text[i] == '-') && i % 3 == 2 && text.size() == 17;
        if (!separator)
            digits += text[i];
    }
    std::uint64_t value = 0;
    bool valid = digits.size() == 12;
    for (const char digit : digits) {
        valid = valid && std::isxdigit(static_cast<unsigned char>(digit)) != 0;
        value = value << 4 | (valid ? std::stoul(std::string(1, digit), nullptr, 16) : 0);
    }
    if (!valid)
        throw std::invalid_argument("'" + text + "' is no MAC address; expected six octets like 02:5A:E3:01:02:03");
    return fromNumber(value);
}

MacAddress MacAddress::fromNumber(std::uint64_t value) {
    MacAddress mac;
    for (std::size_t i = 0; i < mac.octets.size(); ++i)
        mac.octets[i] = static_cast<std::uint8_t>(value >> (40 - 8 * i));
    return mac;
}

std::uint64_t MacAddress::toNumber() const {
    std::uint64_t value = 0;
    for (const std::uint8_t octet : octets)
        value = value << 8 | octet;
    return value;
}

std::string MacAddress::toString() const {
    char text[18];
    std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", octets[0], octets[1], octets[2], octets[3],
                  octets[4], octets[5]);
    return text;
}

std::string Endpoint::toString() const { return address.toString() + ":" + std::to_string(port); }

} // namespace camsim
