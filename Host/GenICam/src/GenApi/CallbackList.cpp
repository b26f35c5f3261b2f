#include "CallbackList.h"

#include "Trace.h"

#include <algorithm>
#include <unordered_map>

namespace GenApi {

namespace {

/// Which node each handle of the process belongs to. Its mutex is the innermost one.
class CHandleDirectory {
public:
    static CHandleDirectory &Instance() {
        // Never destroyed: node maps with static lifetime may go later.
        static auto *const instance = new CHandleDirectory;
        return *instance;
    }

    CallbackHandleType Add(INode *node) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_nodes.emplace(++m_lastHandle, node);
        return m_lastHandle;
    }
    void Remove(CallbackHandleType handle) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_nodes.erase(handle);
    }
    INode *Find(CallbackHandleType handle) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_nodes.find(handle);
        return found != m_nodes.end() ? found->second : nullptr;
    }

private:
    std::mutex m_mutex;
    CallbackHandleType m_lastHandle = 0;
    std::unordered_map<CallbackHandleType, INode *> m_nodes;
};

} // namespace

void CRegisteredCallback::Fire() noexcept {
    if (!Begin())
        return;
    Call();
    End();
}

bool CRegisteredCallback::Begin() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isActive)
        m_runners.push_back(std::this_thread::get_id());
    return m_isActive;
}

void CRegisteredCallback::End() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_runners.erase(std::find(m_runners.begin(), m_runners.end(), std::this_thread::get_id()));
    m_ended.notify_all();
}

void CRegisteredCallback::Call() const noexcept {
    try {
        (*m_callback)();
    } catch (const std::exception &e) {
        TraceWarning("A callback of node '%s' failed: %s", m_callback->GetNode()->GetName().c_str(), e.what());
    } catch (...) {
        TraceWarning("A callback of node '%s' failed", m_callback->GetNode()->GetName().c_str());
    }
}

void CRegisteredCallback::Deactivate() {
    std::unique_ptr<CNodeCallback> gone; // destroyed without the mutex
    std::unique_lock<std::mutex> lock(m_mutex);
    m_isActive = false;
    if (std::find(m_runners.begin(), m_runners.end(), std::this_thread::get_id()) != m_runners.end())
        return;
    m_ended.wait(lock, [this] { return m_runners.empty(); });
    gone = std::move(m_callback);
}

CCallbackList::~CCallbackList() {
    for (const CallbackPtr &callback : m_callbacks)
        CHandleDirectory::Instance().Remove(callback->Handle());
}

CallbackHandleType CCallbackList::Add(INode *node, std::unique_ptr<CNodeCallback> callback) {
    const CallbackHandleType handle = CHandleDirectory::Instance().Add(node);
    m_callbacks.push_back(std::make_shared<CRegisteredCallback>(std::move(callback), handle));
    return handle;
}

CallbackPtr CCallbackList::Take(CallbackHandleType handle) {
    const auto found = std::find_if(m_callbacks.begin(), m_callbacks.end(),
                                    [handle](const CallbackPtr &callback) { return callback->Handle() == handle; });
    if (found == m_callbacks.end())
        return nullptr;
    CallbackPtr callback = *found;
    m_callbacks.erase(found);
    CHandleDirectory::Instance().Remove(handle);
    return callback;
}

bool Deregister(CallbackHandleType hCallback) {
    INode *const node = CHandleDirectory::Instance().Find(hCallback);
    return node != nullptr && node->DeregisterCallback(hCallback);
}

} // namespace GenApi
