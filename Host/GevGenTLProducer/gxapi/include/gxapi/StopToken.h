#pragma once

/// \file
/// Ends what another thread waits for in the library.

#include <atomic>

namespace Gx {

/// A request to stop, from any thread to any number of others. Once made it stays.
class CStopToken {
public:
    void RequestStop() noexcept { m_Requested.store(true, std::memory_order_relaxed); }
    bool IsStopRequested() const noexcept { return m_Requested.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> m_Requested{false};
};

/// Makes a token count for the operations that the calling thread starts in this scope; scopes nest, the inner one
/// counts. Without one nothing can be stopped.
///
/// A discovery, Force IP, broadcast IP configuration or control channel operation in progress ends within 50 ms of the
/// request with GX_E_ABORTED, flooded or not; one that starts later sends nothing and ends at once. What was sent
/// before stays sent, and whether it took effect is not known; Discover reports no further devices. A control channel
/// stays connected and usable and its heartbeat goes on. Two things are not cut short: giving a privilege back, and
/// waiting for an operation of another thread on the same channel.
class CStopScope {
public:
    /// \param token not owned; must outlive the scope. Null shields the scope from the outer token.
    explicit CStopScope(const CStopToken *token) noexcept;
    ~CStopScope();
    /// Whether the calling thread has been asked to stop, for what waits beside the library's operations.
    static bool IsStopRequested() noexcept;
    /// The calling thread's token, to be set on threads that work for it; null when there is none.
    static const CStopToken *Current() noexcept;
    CStopScope(const CStopScope &) = delete;
    CStopScope &operator=(const CStopScope &) = delete;

private:
    const CStopToken *m_pOuter;
};

} // namespace Gx
