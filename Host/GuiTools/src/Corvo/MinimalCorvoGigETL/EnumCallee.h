#pragma once

#include "MinimalCorvoGigETL/DistinctDevices.h"
#include "gxapi/Enumerator.h"

namespace Corvo {

/// Puts what a discovery finds into a list, every exact repeat of an answer once. The list must not be touched by
/// anybody else while the discovery runs.
class EnumCallee : public Gx::Enumerator::Callee {
public:
    /// \param list filled, not owned.
    explicit EnumCallee(DeviceInfoList &list) : m_devices(list) {}

    /// Every device is admitted, whatever its vendor. One that cannot be stored for lack of memory is left out.
    /// \returns always 0, so that the discovery goes on.
    GXSTATUS EnumCallback(const sockaddr *pDeviceAddress, const GEV_DISCOVERY_INFO *pInfo,
                          const sockaddr *pInterfaceAddress) noexcept override;

private:
    void Add(const CDeviceInfo &device);

    CDistinctDevices m_devices;
};

} // namespace Corvo
