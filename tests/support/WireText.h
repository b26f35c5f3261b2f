#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

/// Messages as hexadecimal text, so that tests show the very bytes of the wire.
namespace wire {

constexpr const char *discovery = "42 01 0002 0000 FFFF";
constexpr const char *discoveryBroadcastAck = "42 19 0002 0000 FFFF";

inline std::vector<std::uint8_t> bytes(const std::string &hex) {
    std::string digits;
    for (const char c : hex)
        if (c != ' ')
            digits += c;
    std::vector<std::uint8_t> result;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        result.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return result;
}

/// "00 00 00 03", upper case.
inline std::string text(const std::vector<std::uint8_t> &bytes) {
    std::string result;
    char octet[4];
    for (const std::uint8_t byte : bytes) {
        std::snprintf(octet, sizeof octet, "%02X", byte);
        result += (result.empty() ? "" : " ") + std::string(octet);
    }
    return result;
}

inline std::string zeros(std::size_t count) { return std::string(2 * count, '0'); }

/// An address of 8 hexadecimal digits, at the end of its field of 16 bytes.
inline std::string field(const std::string &address) { return zeros(12) + address; }

inline std::string forceIp(const std::string &mac, const std::string &ip, const std::string &mask,
                           const std::string &gateway = "00000000") {
    return "42 01 0004 0038 FFFF 0000" + mac + field(ip) + field(mask) + field(gateway);
}

/// The vendor's command, to be acknowledged by broadcast.
inline std::string setIpConfig(const std::string &mac, const std::string &modes, const std::string &ip,
                               const std::string &mask, const std::string &gateway, const std::string &name) {
    return "42 11 8004 004C FFFF 0000" + mac + modes + field(ip) + field(mask) + field(gateway) + name +
           zeros(16 - name.size() / 2);
}

} // namespace wire
