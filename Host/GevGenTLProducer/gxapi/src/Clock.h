#pragma once

#include <cstdint>
#include <ctime>

/// Timeout value for waiting without end.
constexpr std::uint32_t GX_INFINITE = 0xFFFFFFFF;

namespace GxImp {

/// The time of the monotonic clock a while from now.
timespec MonotonicIn(std::uint32_t milliseconds) noexcept;

/// A point in time on the monotonic clock, so that neither signals nor clock changes extend a wait.
class Deadline {
public:
    /// \param timeout_ms from now; GX_INFINITE never passes.
    explicit Deadline(std::uint32_t timeout_ms) noexcept;

    bool HasPassed() const noexcept;
    /// Milliseconds left for poll, rounded up and at most INT_MAX; -1 for a deadline that never passes.
    int RemainingPollTimeout() const noexcept;

private:
    std::int64_t m_Deadline_ns; ///< -1 for never
};

} // namespace GxImp
