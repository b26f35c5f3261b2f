#pragma once

namespace GxImp {

/// Reports a broken invariant of this library on standard error and aborts.
[[noreturn]] void AssertionFailed(const char *expression, const char *file, int line) noexcept;

} // namespace GxImp

/// Stays active in release builds: for our own bugs only, never for what a device or the network sends.
#define GX_ASSERT(expression)                                                                                          \
    (static_cast<bool>(expression) ? static_cast<void>(0) : GxImp::AssertionFailed(#expression, __FILE__, __LINE__))
