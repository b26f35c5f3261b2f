#pragma once

#include "GenApi/PortImpl.h"
#include "MinimalCorvo/DeviceAccessMode.h"

#include <mutex>

namespace Gx {
class ControlChannel;
}

namespace Corvo {

/// Register port of a GigE device: carries the accesses of its node map over the control channel.
///
/// Any thread may call. A transfer holds the port's lock, so a channel that was detached is not in use any more. The
/// lock comes after that of the node map.
class CGxPort : public GenApi::CPortImpl {
public:
    CGxPort() = default;

    /// Makes the port accessible, read-write with Control among the modes, else read-only. The port must be detached.
    /// \param channel not owned; stays until DetachControlChannel.
    void AttachControlChannel(Gx::ControlChannel &channel, const AccessModeSet &modes);
    /// Waits for a transfer under way.
    void DetachControlChannel();

    /// NI while detached.
    GenApi::EAccessMode GetAccessMode() const override;
    /// Exactly 4 bytes are read as one register, any other length as memory. Bytes are in the device's order.
    /// \throws LogicalErrorException while detached; RuntimeException when the device refuses or does not answer, and
    /// for an address or length outside the device's 32 bits.
    void Read(void *pBuffer, int64_t Address, int64_t Length) override;
    /// The same for writing.
    void Write(const void *pBuffer, int64_t Address, int64_t Length) override;

private:
    Gx::ControlChannel &CheckedChannel() const;

    mutable std::recursive_mutex m_memberLock;
    GenApi::EAccessMode m_AccessMode = GenApi::NI;
    Gx::ControlChannel *m_pControlChannel = nullptr;
    /// Accesses of 4 bytes go by register commands.
    bool m_bUseSchema1LittleEndianHack = true;
};

} // namespace Corvo
