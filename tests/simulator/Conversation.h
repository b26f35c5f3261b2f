#pragma once

#include "camsim/Camera.h"
#include "support/WireText.h"

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
