#include "Privilege.h"

namespace camsim {

bool Privilege::request(const Endpoint &application, std::uint32_t value, TimePoint now) {
    if (held() && !heldBy(application))
        return false;
    if ((value & GEV_EXCLUSIVE_CONTROL_ACCESS) != 0)
        set(Holder{application, GEV_EXCLUSIVE_CONTROL_ACCESS, false}, now);
    else if ((value & GEV_CONTROL_ACCESS) != 0)
        set(Holder{application, GEV_CONTROL_ACCESS, false}, now);
    else
        holder_.reset();
    return true;
}

void Privilege::set(std::optional<Holder> holder, TimePoint now) {
    holder_ = holder;
    lastHeartbeat_ = now;
}

bool Privilege::deniesReading(const Endpoint &application) const {
    return held() && holder_->privilege == GEV_EXCLUSIVE_CONTROL_ACCESS && !heldBy(application);
}

std::optional<TimePoint> Privilege::expiry(std::chrono::milliseconds timeout) const {
    if (!held() || holder_->keepsAlive)
        return std::nullopt;
    return lastHeartbeat_ + timeout;
}

} // namespace camsim
