#pragma once

#include "GenApi/NodeCallback.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace GenApi {

/// One registration.
///
/// No mutex is held while the callback runs: callbacks outside the lock that change each other's nodes, each on a
/// thread of its own, would wait for each other.
class CRegisteredCallback {
public:
    CRegisteredCallback(std::unique_ptr<CNodeCallback> callback, CallbackHandleType handle)
        : m_callback(std::move(callback)), m_handle(handle), m_type(m_callback->GetCallbackType()) {}

    CallbackHandleType Handle() const { return m_handle; }
    ECallbackType Type() const { return m_type; }
    /// Runs the callback unless it was deactivated. What it throws is traced.
    void Fire() noexcept;
    /// After the return the callback runs no more and has been deleted. Called from the callback itself it does not
    /// wait for anything; then the callback goes with the last that holds the registration.
    void Deactivate();

private:
    bool Begin();
    void Call() const noexcept;
    void End();

    std::mutex m_mutex;
    std::condition_variable m_ended;
    /// The threads on which it runs, one more than once when it is called again further up the stack.
    std::vector<std::thread::id> m_runners;
    std::unique_ptr<CNodeCallback> m_callback;
    CallbackHandleType m_handle;
    ECallbackType m_type;
    bool m_isActive = true;
};

using CallbackPtr = std::shared_ptr<CRegisteredCallback>;

/// The callbacks of one node in the order of registration. Guarded by the node map's lock.
class CCallbackList {
public:
    CCallbackList() = default;
    ~CCallbackList();
    CCallbackList(const CCallbackList &) = delete;
    CCallbackList &operator=(const CCallbackList &) = delete;

    CallbackHandleType Add(INode *node, std::unique_ptr<CNodeCallback> callback);
    /// Takes a registration off the list; null when the handle is unknown. The caller deactivates it.
    CallbackPtr Take(CallbackHandleType handle);
    bool IsEmpty() const { return m_callbacks.empty(); }
    const std::vector<CallbackPtr> &All() const { return m_callbacks; }

private:
    std::vector<CallbackPtr> m_callbacks;
};

} // namespace GenApi
