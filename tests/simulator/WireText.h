#pragma once

#include "camsim/Camera.h"

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

/// The 56-byte payload of FORCEIP; addresses are 8 hexadecimal digits.
inline std::string forceIp(const std::string &mac, const std::string &ip, const std::string &mask,
                           const std::string &gateway = "00000000") {
    return "42 01 0004 0038 FFFF 0000" + mac + zeros(12) + ip + zeros(12) + mask + zeros(12) + gateway;
}

} // namespace wire

/// A camera and the application that talks to it, with a clock that stands until it is moved.
class Conversation {
public:
    explicit Conversation(const camsim::CameraConfig &config) : camera(config, now) {}

    std::vector<camsim::Reply> send(const std::string &hex, const std::string &destination = "255.255.255.255") {
        const auto datagram = wire::bytes(hex);
        return camera.receive({application, camsim::Ipv4::parse(destination), datagram.data(), datagram.size()}, now);
    }
    /// Sends to the camera's own address; the acknowledge as text, "" for none.
    std::string ask(const std::string &hex) {
        const auto replies = send(hex, camera.current() ? camera.current()->address.toString() : "0.0.0.0");
        return replies.empty() ? "" : wire::text(replies[0].bytes);
    }
    void pass(std::chrono::milliseconds time) {
        now += time;
        camera.advance(now);
    }

    camsim::TimePoint now = camsim::TimePoint{} + std::chrono::hours(1);
    camsim::Endpoint application{camsim::Ipv4::parse("192.168.1.1"), 40000};
    camsim::Camera camera;
};
