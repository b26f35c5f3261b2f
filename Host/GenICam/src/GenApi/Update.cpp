#include "Update.h"

#include "NodeImpl.h"
#include "NodeMapImpl.h"

namespace GenApi {

namespace {

thread_local CUpdate *t_innermost = nullptr;

} // namespace

CUpdate::CUpdate(const CNodeMapImpl &map) : m_map(map) {
    m_map.GetLock().Lock();
    CUpdate *const outermost = Outermost(map);
    m_isOutermost = outermost == nullptr;
    if (m_isOutermost) {
        m_outer = t_innermost;
        t_innermost = this;
    }
    m_previousCollector = m_map.SetCollector(m_isOutermost ? this : outermost);
    if (m_map.Evaluation().operations++ == 0)
        m_map.Evaluation().Advance();
}

CUpdate::~CUpdate() {
    // What callbacks do are operations of their own, which see the device as it is then.
    --m_map.Evaluation().operations;
    std::vector<CallbackPtr> outside;
    if (m_isOutermost)
        outside = FireInsideLock();
    m_map.SetCollector(m_previousCollector);
    m_map.GetLock().Unlock();
    if (!m_isOutermost)
        return;
    FireOutsideLock(std::move(outside));
    t_innermost = m_outer;
}

/// What callbacks change fires further callbacks, so the list of changed nodes may grow while it is worked off.
std::vector<CallbackPtr> CUpdate::FireInsideLock() {
    std::vector<CallbackPtr> outside;
    for (; m_fired < m_changed.size(); ++m_fired) {
        const std::vector<CallbackPtr> callbacks = m_changed[m_fired]->Callbacks().All();
        for (const CallbackPtr &callback : callbacks)
            if (callback->Type() == cbPostOutsideLock)
                outside.push_back(callback);
            else
                callback->Fire();
    }
    return outside;
}

void CUpdate::FireOutsideLock(std::vector<CallbackPtr> callbacks) {
    for (;;) {
        for (const CallbackPtr &callback : callbacks)
            callback->Fire();
        if (m_fired == m_changed.size())
            return;
        const AutoLock lock(m_map.GetLock());
        CUpdate *const previous = m_map.SetCollector(this);
        callbacks = FireInsideLock();
        m_map.SetCollector(previous);
    }
}

CUpdate *CUpdate::Outermost(const CNodeMapImpl &map) {
    for (CUpdate *update = t_innermost; update != nullptr; update = update->m_outer)
        if (&update->m_map == &map)
            return update;
    return nullptr;
}

void CUpdate::Add(const CNodeImpl &node) {
    if (!node.Callbacks().IsEmpty() && m_known.insert(&node).second)
        m_changed.push_back(&node);
}

} // namespace GenApi
