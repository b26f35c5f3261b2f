#pragma once

#include "MinimalCorvoGigETL/ITransportLayer.h"

namespace Corvo {

/// Told of the devices of a transport layer, whoever had them made; called on the thread that makes or destroys them.
class IDeviceCreationObserver {
public:
    virtual void OnDeviceCreated(ITransportLayer &layer, ICorvoDevice *pDevice) = 0;
    /// The last thing the layer does for a device, which is gone; the layer may be destroyed inside.
    virtual void OnDeviceDestroyed(ICorvoDevice *pDevice) = 0;

protected:
    ~IDeviceCreationObserver() = default;
};

/// What every transport layer offers to the factory besides its public interface.
class ITransportLayerPrivate {
public:
    /// \param pObserver not owned; null for none. Set before the layer is used.
    virtual void SetDeviceCreationObserver(IDeviceCreationObserver *pObserver) = 0;

protected:
    ~ITransportLayerPrivate() = default;
};

} // namespace Corvo
