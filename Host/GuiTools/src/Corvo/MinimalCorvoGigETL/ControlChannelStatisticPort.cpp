#include "MinimalCorvoGigETL/ControlChannelStatisticPort.h"

#include "Base/GCException.h"
#include "gxapi/ControlChannel.h"

namespace Corvo {

void CControlChannelStatisticPort::AttachControlChannel(Gx::ControlChannel &channel) { SetControlChannel(&channel); }

void CControlChannelStatisticPort::DetachControlChannel() { SetControlChannel(nullptr); }

void CControlChannelStatisticPort::SetControlChannel(Gx::ControlChannel *channel) {
    {
        const std::lock_guard<std::recursive_mutex> lock(m_memberLock);
        m_pControlChannel = channel;
    }
    InvalidateNode();
}

GenApi::EAccessMode CControlChannelStatisticPort::GetAccessMode() const {
    const std::lock_guard<std::recursive_mutex> lock(m_memberLock);
    return m_pControlChannel != nullptr ? GenApi::RO : GenApi::NA;
}

void CControlChannelStatisticPort::Read(void *pBuffer, int64_t Address, int64_t Length) {
    const std::lock_guard<std::recursive_mutex> lock(m_memberLock);
    if (GetAccessMode() != GenApi::RO)
        throw ACCESS_EXCEPTION("Control channel statistic port is not readable.");
    if (Address != ReadWriteTimeoutCount || Length != sizeof(std::uint32_t))
        throw ACCESS_EXCEPTION("Control channel statistic port read failed.");
    (void)m_pControlChannel->GetProperty(Gx::ControlChannel::StatisticReadWriteTimeoutCount, pBuffer,
                                         sizeof(std::uint32_t), nullptr);
}

void CControlChannelStatisticPort::Write(const void * /*pBuffer*/, int64_t /*Address*/, int64_t /*Length*/) {
    throw ACCESS_EXCEPTION("Control channel statistic port is not writable.");
}

} // namespace Corvo
