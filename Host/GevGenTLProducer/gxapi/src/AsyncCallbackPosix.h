#pragma once

namespace GxImp::Posix {

/// Delivers one notification per Queue on a new detached thread. The caller of Queue makes sure, by a reference on the
/// owner, that the object lives until Deliver has run.
class CAsyncCallback {
public:
    /// \return false when no thread can be made; nothing will be delivered then.
    [[nodiscard]] bool Queue() noexcept;

protected:
    CAsyncCallback() noexcept = default;
    virtual ~CAsyncCallback() = default;
    virtual void Deliver() noexcept = 0;

private:
    static void *ThreadProcedure(void *self) noexcept;
};

} // namespace GxImp::Posix
