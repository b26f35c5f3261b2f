#pragma once

namespace GxImp {

/// True when the calling thread shall end what it waits for.
bool IsStopRequested() noexcept;

/// The part of a wait until the next look at the stop request: all of it when there is no token.
///
/// \param timeout_ms as for poll, -1 waits without end.
int StopPollTimeout(int timeout_ms) noexcept;

} // namespace GxImp
