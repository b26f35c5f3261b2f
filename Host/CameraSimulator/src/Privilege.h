#pragma once

#include "camsim/Camera.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace camsim {

/// The control channel privilege: who holds it and until when without a heartbeat.
class Privilege {
public:
    bool held() const { return holder_.has_value(); }
    bool heldBy(const Endpoint &application) const { return held() && holder_->application == application; }
    const std::optional<Holder> &holder() const { return holder_; }
    /// Value of the privilege register.
    std::uint32_t value() const { return held() ? holder_->privilege : 0; }

    /// A write of `value` to the privilege register; false when somebody else holds it.
    bool request(const Endpoint &application, std::uint32_t value, TimePoint now);
    void set(std::optional<Holder> holder, TimePoint now);
    /// Reading is refused to others under exclusive access.
    bool deniesReading(const Endpoint &application) const;

    void heartbeat(TimePoint now) { lastHeartbeat_ = now; }
    /// When the privilege is lost without a further heartbeat.
    std::optional<TimePoint> expiry(std::chrono::milliseconds timeout) const;

private:
    std::optional<Holder> holder_;
    TimePoint lastHeartbeat_{};
};

} // namespace camsim
