#include "MinimalCorvoGigETL/SurpriseRemovalController.h"

#include "MinimalCorvoGigETL/DeviceLog.h"

namespace Corvo {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

void Call(const DeviceCallback &callback, ICorvoDevice *device) {
    try {
        callback(device);
    } catch (const std::exception &e) {
        tracelog::LogTrace(DeviceLogCategory(), tracelog::lvWarning, "A device removal callback failed. (Err='%s')",
                           e.what());
    } catch (...) {
        tracelog::LogTrace(DeviceLogCategory(), tracelog::lvWarning, "A device removal callback failed.");
    }
}

} // namespace

DeviceCallbackHandle CGigEDevice::CSurpriseRemovalController::Register(const DeviceCallback &callback) {
    const Lock lock(m_lock);
    m_callbacks.emplace(++m_lastHandle, callback);
    return m_lastHandle;
}

bool CGigEDevice::CSurpriseRemovalController::Deregister(DeviceCallbackHandle handle) {
    const Lock lock(m_lock);
    return m_callbacks.erase(handle) != 0;
}

void CGigEDevice::CSurpriseRemovalController::DeregisterAll() {
    const Lock lock(m_lock);
    m_callbacks.clear();
}

void CGigEDevice::CSurpriseRemovalController::FireCallbacks(ICorvoDevice *device) {
    const Lock lock(m_lock);
    const DeviceCallbackHandle last = m_lastHandle; // what callbacks register themselves waits for the next time
    auto next = m_callbacks.begin();
    while (next != m_callbacks.end() && next->first <= last) {
        const auto [handle, callback] = *next; // a copy: the callback may deregister itself
        Call(callback, device);
        next = m_callbacks.upper_bound(handle);
    }
}

} // namespace Corvo
