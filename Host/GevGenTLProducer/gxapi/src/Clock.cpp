#include "Clock.h"

#include <algorithm>
#include <climits>

namespace GxImp {

namespace {

constexpr std::int64_t NanosecondsPerMillisecond = 1000000;

std::int64_t Now() noexcept {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * (1000 * NanosecondsPerMillisecond) + now.tv_nsec;
}

} // namespace

timespec MonotonicIn(std::uint32_t milliseconds) noexcept {
    const std::int64_t time_ns = Now() + milliseconds * NanosecondsPerMillisecond;
    constexpr std::int64_t Second_ns = 1000 * NanosecondsPerMillisecond;
    return {static_cast<time_t>(time_ns / Second_ns), static_cast<long>(time_ns % Second_ns)};
}

Deadline::Deadline(std::uint32_t timeout_ms) noexcept
    : m_Deadline_ns(timeout_ms == GX_INFINITE ? -1 : Now() + timeout_ms * NanosecondsPerMillisecond) {}

bool Deadline::HasPassed() const noexcept { return m_Deadline_ns >= 0 && Now() >= m_Deadline_ns; }

int Deadline::RemainingPollTimeout() const noexcept {
    if (m_Deadline_ns < 0)
        return -1;
    const std::int64_t left = m_Deadline_ns - Now();
    const std::int64_t left_ms = (left + NanosecondsPerMillisecond - 1) / NanosecondsPerMillisecond;
    return static_cast<int>(std::clamp<std::int64_t>(left_ms, 0, INT_MAX));
}

} // namespace GxImp
