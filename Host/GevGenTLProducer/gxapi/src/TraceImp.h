#pragma once

#include "gxapi/Trace.h"

#include <atomic>

namespace GxImp {

/// 0 without a sink; otherwise flags << 8 | level.
extern std::atomic<std::uint32_t> g_TraceFilter;

inline bool TraceEnabled(std::uint32_t flag, std::uint32_t level) noexcept {
    const std::uint32_t filter = g_TraceFilter.load(std::memory_order_relaxed);
    return filter != 0 && (filter >> 8 & flag) != 0 && level <= (filter & 0xFF);
}

/// Formats one line and hands it to the sink. Lines are cut at 1023 characters.
void TracePrint(std::uint32_t flag, std::uint32_t level, const char *format, ...) noexcept
    __attribute__((format(printf, 3, 4)));

} // namespace GxImp

#define GX_TRACE(flag, level, ...)                                                                                     \
    do {                                                                                                               \
        if (GxImp::TraceEnabled(Gx::Trace::flag, Gx::Trace::level))                                                    \
            GxImp::TracePrint(Gx::Trace::flag, Gx::Trace::level, __VA_ARGS__);                                         \
    } while (false)
