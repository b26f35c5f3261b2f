#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace listener {

/// Length of the payload of DISCOVERY_ACK.
constexpr std::size_t InfoSize = 248;

/// A DISCOVERY_ACK in a frame.
struct Acknowledge {
    std::uint32_t sender = 0; ///< IPv4 address in host order
    const std::uint8_t *info; ///< InfoSize bytes inside the frame
};

/// Looks for a successful acknowledge to a discovery in an IPv4 datagram, as a packet socket gives it. The bytes need
/// no alignment and may be anything. Checksums are not looked at, because adapters fill them in late.
std::optional<Acknowledge> readFrame(const std::uint8_t *data, std::size_t size);

/// "ack nic0 123456 192.168.1.20 00020000...\n", see lanvane-listen(1).
std::string acknowledgeLine(const std::string &adapter, std::int64_t time_us, const Acknowledge &acknowledge);

} // namespace listener
