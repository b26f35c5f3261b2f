#include "Judgement.h"

#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "gxapi/GvcpMessages.h"

namespace commissioning {

bool Judgement::hasMode() const {
    if (!m_Result.now)
        return false;
    if (m_Change.word && m_Change.modeDiffers)
        return ((cameraOf(*m_Result.now).word ^ *m_Change.word) & ~std::uint32_t(GEV_IP_CONFIG_LLA)) == 0;
    return !m_Change.mode || modeOf(*m_Result.now) == m_Change.mode;
}

bool Judgement::hasAddress() const {
    return m_Change.mode != Mode::Static || m_Result.addresses == Delivery::NotSent ||
           currentAddressOf(*m_Result.now) == m_Change.address;
}

bool Judgement::hasTaken() const {
    if (!hasMode() || !hasAddress())
        return false;
    const Corvo::CQuorelGigEDeviceInfo &now = *m_Result.now;
    if (m_Change.mode == Mode::Static)
        return m_Result.addresses == Delivery::NotSent || (now.GetSubnetMask() == toText(m_Change.mask).c_str() &&
                                                           now.GetDefaultGateway() == toText(m_Change.gateway).c_str());
    // One that shows the new mode at once, but keeps a static address, has not restarted.
    return !m_Change.modeDiffers || isLinkLocal(currentAddressOf(now)) ||
           now.GetIpAddress() != m_Change.device.GetIpAddress();
}

bool Judgement::isStored() const {
    return hasMode() && (!m_Change.storesAddresses() || m_Result.stored == m_Change.wanted());
}

bool Judgement::isDone() const {
    return hasMode() && hasAddress() && (!m_Result.stored || m_Result.addresses == Delivery::NotSent || isStored());
}

} // namespace commissioning
