#pragma once

#include "camsim/Address.h"
#include "gxapi/GvcpMessages.h"

#include <arpa/inet.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace camsim {

/// Status codes of an acknowledge (GEV_STATUS) that a camera gives.
enum class GevStatus : std::uint16_t {
    Success = 0x0000,
    NotImplemented = 0x8001,
    InvalidParameter = 0x8002,
    InvalidAddress = 0x8003,
    WriteProtect = 0x8004,
    BadAlignment = 0x8005,
    AccessDenied = 0x8006,
    InvalidHeader = 0x800E,
    Error = 0x8FFF
};

/// Unaligned big-endian access; the caller has checked the length.
inline std::uint32_t load32(const std::uint8_t *bytes) {
    std::uint32_t wire = 0;
    std::memcpy(&wire, bytes, sizeof wire);
    return ntohl(wire);
}

inline void store32(std::uint8_t *bytes, std::uint32_t value) {
    const std::uint32_t wire = htonl(value);
    std::memcpy(bytes, &wire, sizeof wire);
}

inline void append32(std::vector<std::uint8_t> &bytes, std::uint32_t value) {
    bytes.resize(bytes.size() + 4);
    store32(&bytes[bytes.size() - 4], value);
}

/// Copies a wire record out of a datagram whose size the caller has checked; alignment does not matter.
template <typename Record> Record loadRecord(const std::uint8_t *bytes) {
    static_assert(std::is_trivially_copyable_v<Record>);
    Record record{};
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

inline Ipv4 fromWire(const GEV_IP_ADDRESS &field) {
    std::uint32_t wire = 0;
    std::memcpy(&wire, field.IPv6 + offsetof(GEV_IPV4_VIEW, Address), sizeof wire);
    return {ntohl(wire)};
}

/// The address field of a MAC starts with two reserved bytes.
inline MacAddress fromWire(const GEV_MAC_ADDRESS &field) {
    MacAddress mac;
    std::memcpy(mac.octets.data(), reinterpret_cast<const std::uint8_t *>(&field) + 2, mac.octets.size());
    return mac;
}

/// An acknowledge: header and payload. Throws std::length_error above the 16-bit length field.
inline std::vector<std::uint8_t> makeAck(std::uint16_t command, std::uint16_t id, GevStatus status,
                                         const std::vector<std::uint8_t> &payload = {}) {
    if (payload.size() > 0xFFFF)
        throw std::length_error("GVCP payload of more than 65535 bytes");
    GVCP_RESPONSE_HEADER header{};
    header.Status = htons(static_cast<std::uint16_t>(status));
    header.Acknowledge = htons(static_cast<std::uint16_t>(command + 1));
    header.Length = htons(static_cast<std::uint16_t>(payload.size()));
    header.AckId = htons(id);
    std::vector<std::uint8_t> bytes(sizeof header + payload.size());
    std::memcpy(bytes.data(), &header, sizeof header);
    if (!payload.empty())
        std::memcpy(bytes.data() + sizeof header, payload.data(), payload.size());
    return bytes;
}

} // namespace camsim
