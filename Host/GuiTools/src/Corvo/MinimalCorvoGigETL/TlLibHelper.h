#pragma once

#include "MinimalCorvoGigETL/ITransportLayer.h"

namespace Corvo {

/// Knows one family of transport layers.
class CTlLibHelper {
public:
    virtual ~CTlLibHelper() = default;

    /// Appends the infos of the layers that Create can make.
    virtual void GetTlInfoList(TlInfoList &list) const = 0;
    /// Makes the layer of the info's device class; null for a class of another family. Every layer offers
    /// ITransportLayerPrivate.
    virtual ITransportLayer *Create(const CTlInfo &info) const = 0;
    /// Destroys a layer that Create made.
    virtual void Destroy(const ITransportLayer *pLayer) const = 0;
};

/// The family of the GigE transport layer.
class CGigETlLibHelper : public CTlLibHelper {
public:
    void GetTlInfoList(TlInfoList &list) const override;
    ITransportLayer *Create(const CTlInfo &info) const override;
    void Destroy(const ITransportLayer *pLayer) const override;
};

} // namespace Corvo
