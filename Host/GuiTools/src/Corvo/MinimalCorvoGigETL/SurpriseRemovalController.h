#pragma once

#include "MinimalCorvoGigETL/GigEDevice.h"

#include <map>

namespace Corvo {

/// Keeps the removal callbacks of an open device.
///
/// The lock is held while callbacks run, so that one that was deregistered runs no more; callbacks use the device, so
/// the lock comes before those of the device.
class CGigEDevice::CSurpriseRemovalController {
public:
    CSurpriseRemovalController() = default;
    CSurpriseRemovalController(const CSurpriseRemovalController &) = delete;
    CSurpriseRemovalController &operator=(const CSurpriseRemovalController &) = delete;

    DeviceCallbackHandle Register(const DeviceCallback &callback);
    /// \returns false when the handle is unknown.
    bool Deregister(DeviceCallbackHandle handle);
    void DeregisterAll();
    /// Calls every callback, in the order of registration. One of them may deregister any, or destroy the device: the
    /// caller keeps the controller alive. What a callback throws is traced.
    void FireCallbacks(ICorvoDevice *device);

private:
    std::recursive_mutex m_lock;
    DeviceCallbackHandle m_lastHandle = 0;
    std::map<DeviceCallbackHandle, DeviceCallback> m_callbacks;
};

} // namespace Corvo
