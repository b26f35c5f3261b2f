#include "MinimalCorvoGigETL/EnumCallee.h"

#include "MinimalCorvoGigETL/GigETlTrace.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"

#include <cassert>
#include <exception>

namespace Corvo {

GXSTATUS EnumCallee::EnumCallback(const sockaddr *pDeviceAddress, const GEV_DISCOVERY_INFO *pInfo,
                                  const sockaddr *pInterfaceAddress) noexcept {
    assert(pDeviceAddress != nullptr);
    try {
        Add(CQuorelGigEDeviceInfoImpl(*pDeviceAddress, pInfo, *pInterfaceAddress));
    } catch (const std::exception &) {
        // Out of memory; tracing would only need more of it.
    }
    return GX_SUCCESS;
}

void EnumCallee::Add(const CDeviceInfo &device) {
    if (!m_devices.Add(device))
        return;
    tracelog::LogTrace(GigETlTraceCategory(), tracelog::lvDebug,
                       "Adding discovered device '%s' discovered on interface '%s'", device.GetFullName().c_str(),
                       CQuorelGigEDeviceInfo(device).GetInterface().c_str());
}

} // namespace Corvo
