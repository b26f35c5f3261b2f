#pragma once

/// \file
/// The library's own trace facility.

#include <cstdint>

namespace Gx::Trace {

/// Areas; a bit mask selects which are traced.
enum Flags : std::uint32_t {
    FlagGeneral = 1,   ///< general and sockets
    FlagDiscovery = 2, ///< discovery and the other broadcast commands
    FlagControlChannel = 4,
    FlagAll = 7
};

/// A line is passed on when its level is not above the level set.
enum Levels : std::uint32_t { LevelError = 2, LevelWarning = 3, LevelVerbose = 4, LevelMostVerbose = 5 };

/// Receives each formatted line, on whatever thread produced it and possibly on several at once. Some lines end with a
/// line feed. The text lives only during the call. Must not throw and must not call SetSink.
using Sink = void (*)(void *context, std::uint32_t flag, std::uint32_t level, const char *text);

/// Sets or, with a null sink, removes the receiver of traces. Returns when no call of the former sink is running any
/// more. Without a sink a trace costs one branch.
void SetSink(Sink sink, void *context, std::uint32_t flags, std::uint32_t level) noexcept;

} // namespace Gx::Trace
