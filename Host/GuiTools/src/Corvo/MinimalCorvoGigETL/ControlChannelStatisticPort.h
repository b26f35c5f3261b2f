#pragma once

#include "GenApi/PortImpl.h"

#include <mutex>

namespace Gx {
class ControlChannel;
}

namespace Corvo {

/// Read-only port with the counters of a control channel. Any thread may call; the lock comes after that of the node
/// map.
class CControlChannelStatisticPort : public GenApi::CPortImpl {
public:
    /// Addresses that can be read, each with 4 bytes in the byte order of this computer.
    enum EStatistic : int64_t { ReadWriteTimeoutCount = 8 };

    CControlChannelStatisticPort() = default;

    /// \param channel not owned; stays until DetachControlChannel.
    void AttachControlChannel(Gx::ControlChannel &channel);
    void DetachControlChannel();

    /// RO while a channel is attached, else NA.
    GenApi::EAccessMode GetAccessMode() const override;
    /// \throws AccessException while detached, and for another address or length.
    void Read(void *pBuffer, int64_t Address, int64_t Length) override;
    /// \throws AccessException always.
    void Write(const void *pBuffer, int64_t Address, int64_t Length) override;

private:
    void SetControlChannel(Gx::ControlChannel *channel);

    mutable std::recursive_mutex m_memberLock;
    Gx::ControlChannel *m_pControlChannel = nullptr;
};

} // namespace Corvo
