#pragma once

#include "gxapi/ControlChannel.h"

#include <memory>

namespace Corvo {

class CQuorelGigEDeviceInfo;

struct ControlChannelDeleter {
    void operator()(Gx::ControlChannel *channel) const noexcept { (void)channel->Destroy(); }
};

/// Owns an open control channel. A registered removal callback must be unregistered before.
using ControlChannelPtr = std::unique_ptr<Gx::ControlChannel, ControlChannelDeleter>;

/// Opens a channel to the device's address with the default heartbeat timeout, see Gx::ControlChannel::Create.
/// \param pChannel empty after a failure. \param lifetime_ms after which the device counts as lost.
[[nodiscard]] GXSTATUS OpenControlChannel(const CQuorelGigEDeviceInfo &info, std::uint32_t privilege,
                                          ControlChannelPtr *pChannel, std::uint32_t lifetime_ms = UINT32_MAX);

} // namespace Corvo
