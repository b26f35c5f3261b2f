#pragma once

#include "CallbackList.h"

#include <unordered_set>
#include <vector>

namespace GenApi {

class CNodeImpl;
class CNodeMapImpl;

/// One operation that may change nodes: holds the map's lock and, when it is the thread's outermost one on this map,
/// fires the callbacks of all nodes that changed: first those inside the lock, then, without it, those outside.
///
/// Operations that callbacks start on the same map are part of the outermost one, which fires each node's callbacks
/// only once and so comes to an end whatever callbacks do.
class CUpdate {
public:
    explicit CUpdate(const CNodeMapImpl &map);
    ~CUpdate();
    CUpdate(const CUpdate &) = delete;
    CUpdate &operator=(const CUpdate &) = delete;

    /// Notes a changed node for its callbacks.
    void Add(const CNodeImpl &node);

private:
    static CUpdate *Outermost(const CNodeMapImpl &map);
    /// \returns the callbacks that are to run outside the lock.
    std::vector<CallbackPtr> FireInsideLock();
    void FireOutsideLock(std::vector<CallbackPtr> callbacks);

    const CNodeMapImpl &m_map;
    /// The thread's next update further out, of any map.
    CUpdate *m_outer = nullptr;
    bool m_isOutermost;
    /// The update that collected changes before this one.
    CUpdate *m_previousCollector;
    std::vector<const CNodeImpl *> m_changed;
    std::size_t m_fired = 0;
    std::unordered_set<const CNodeImpl *> m_known;
};

} // namespace GenApi
