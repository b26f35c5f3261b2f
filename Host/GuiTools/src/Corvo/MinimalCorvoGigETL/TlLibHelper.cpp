#include "MinimalCorvoGigETL/TlLibHelper.h"

#include "MinimalCorvoGigETL/GigETlTrace.h"
#include "MinimalCorvoGigETL/GxStatusException.h"
#include "MinimalCorvoGigETL/QuorelGigETl.h"
#include "MinimalCorvoGigETL/tools.h"
#include "gxapi/Gx.h"

namespace Corvo {

void CGigETlLibHelper::GetTlInfoList(TlInfoList &list) const { list.push_back(GetTLInfoImplGigE()); }

ITransportLayer *CGigETlLibHelper::Create(const CTlInfo &info) const {
    if (info.GetDeviceClass() != GetTLInfoImplGigE().GetDeviceClass())
        return nullptr;
    RouteGxTraces();
    THROW_IF_GX_FAILED(Gx::Init(), "Failed to initialize the protocol library: ");
    return new CQuorelGigETl;
}

void CGigETlLibHelper::Destroy(const ITransportLayer *pLayer) const {
    delete static_cast<const CQuorelGigETl *>(pLayer);
}

} // namespace Corvo
