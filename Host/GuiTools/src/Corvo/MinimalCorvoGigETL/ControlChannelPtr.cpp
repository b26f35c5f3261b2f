#include "MinimalCorvoGigETL/ControlChannelPtr.h"

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "MinimalCorvoGigETL/tools.h"

namespace Corvo {

GXSTATUS OpenControlChannel(const CQuorelGigEDeviceInfo &info, std::uint32_t privilege, ControlChannelPtr *pChannel,
                            std::uint32_t lifetime_ms) {
    constexpr std::uint32_t fallback_ms = 3000;
    const std::uint32_t timeout_ms = GetDefaultHeartbeatTimeout();
    const sockaddr address = Address(info);
    Gx::ControlChannel *channel = nullptr;
    const GXSTATUS status = Gx::ControlChannel::Create(&address, privilege, timeout_ms != 0 ? timeout_ms : fallback_ms,
                                                       lifetime_ms, &channel);
    pChannel->reset(channel);
    return status;
}

} // namespace Corvo
