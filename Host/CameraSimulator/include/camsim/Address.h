#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace camsim {

/// IPv4 address (or subnet mask) in host order. The default, 0.0.0.0, means "none".
struct Ipv4 {
    std::uint32_t value = 0;

    /// Reads a dotted quad. Throws std::invalid_argument naming the text when it is none.
    static Ipv4 parse(const std::string &text);
    /// The mask of a prefix length of 0 to 32 bits. Throws std::invalid_argument above 32.
    static Ipv4 maskOf(unsigned prefixLength);
    std::string toString() const;

    static constexpr Ipv4 limitedBroadcast() { return {0xFFFFFFFFu}; }
    constexpr explicit operator bool() const { return value != 0; }
    friend constexpr bool operator==(Ipv4 a, Ipv4 b) { return a.value == b.value; }
    friend constexpr bool operator!=(Ipv4 a, Ipv4 b) { return a.value != b.value; }
    friend constexpr bool operator<(Ipv4 a, Ipv4 b) { return a.value < b.value; }
};

/// Address, mask and gateway as a camera stores or uses them. `gateway` 0.0.0.0 means none.
struct IpSettings {
    Ipv4 address;
    Ipv4 mask;
    Ipv4 gateway;

    Ipv4 broadcast() const { return {address.value | ~mask.value}; }
    bool inSubnet(Ipv4 other) const { return ((address.value ^ other.value) & mask.value) == 0; }
    /// Number of leading one bits of the mask.
    unsigned prefixLength() const;
    /// A host address a camera can take: a contiguous mask of 1 to 32 bits and an address that is neither the subnet's
    /// own, nor its broadcast, nor multicast or reserved (224.0.0.0 and up), nor in 0.0.0.0/8.
    bool isUsable() const;
    friend bool operator==(const IpSettings &a, const IpSettings &b) {
        return a.address == b.address && a.mask == b.mask && a.gateway == b.gateway;
    }
    friend bool operator!=(const IpSettings &a, const IpSettings &b) { return !(a == b); }
};

/// Ethernet address in transmission order.
struct MacAddress {
    std::array<std::uint8_t, 6> octets{};

    /// Reads twelve hexadecimal digits, optionally with ':' or '-' between the octets.
    /// Throws std::invalid_argument naming the text otherwise.
    static MacAddress parse(const std::string &text);
    static MacAddress fromNumber(std::uint64_t value); ///< Low 48 bits, most significant octet first.
    std::uint64_t toNumber() const;
    std::string toString() const; ///< "02:5A:E3:01:02:03"

    friend bool operator==(const MacAddress &a, const MacAddress &b) { return a.octets == b.octets; }
    friend bool operator!=(const MacAddress &a, const MacAddress &b) { return a.octets != b.octets; }
    friend bool operator<(const MacAddress &a, const MacAddress &b) { return a.octets < b.octets; }
};

/// UDP end point.
struct Endpoint {
    Ipv4 address;
    std::uint16_t port = 0;

    std::string toString() const; ///< "192.168.1.10:3956"
    friend bool operator==(const Endpoint &a, const Endpoint &b) { return a.address == b.address && a.port == b.port; }
    friend bool operator!=(const Endpoint &a, const Endpoint &b) { return !(a == b); }
};

} // namespace camsim
