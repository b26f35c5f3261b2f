#pragma once

#include "MinimalCorvoGigETL/IDeviceFactory.h"

namespace GenApi {
class INodeMap;
}

namespace Corvo {

/// One way to reach devices. Made and destroyed by CTlFactory alone.
class ITransportLayer : public IDeviceFactory {
public:
    virtual CTlInfo GetTlInfo() const = 0;
    /// The layer's own parameters, made on the first call; owned by the layer.
    virtual GenApi::INodeMap *GetNodeMap() = 0;

protected:
    ~ITransportLayer() = default;
};

} // namespace Corvo
