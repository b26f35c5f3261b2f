#include "MinimalCorvoGigETL/GxPort.h"

#include "Base/GCException.h"
#include "MinimalCorvoGigETL/GxStatusException.h"
#include "gxapi/ControlChannel.h"

#include <arpa/inet.h>
#include <cassert>
#include <cinttypes>
#include <cstring>
#include <limits>

namespace Corvo {

namespace {

constexpr int64_t RegisterBytes = 4;

/// A negative address that fits 32 bits is one that a signed register of the description holds.
bool FitsDevice(int64_t address, int64_t length) {
    constexpr int64_t end = int64_t{std::numeric_limits<std::uint32_t>::max()} + 1;
    if (address < 0 && address >= std::numeric_limits<std::int32_t>::min())
        address += end;
    return address >= 0 && length >= 0 && address < end && length <= end - address && length < end;
}

GXSTATUS ReadRegister(Gx::ControlChannel &channel, std::uint32_t address, void *buffer) {
    std::uint32_t value = 0;
    const GXSTATUS status = channel.ReadReg(&address, &value, 1);
    value = htonl(value);
    if (status == GX_SUCCESS)
        std::memcpy(buffer, &value, sizeof value);
    return status;
}

GXSTATUS WriteRegister(Gx::ControlChannel &channel, std::uint32_t address, const void *buffer) {
    std::uint32_t value = 0;
    std::memcpy(&value, buffer, sizeof value);
    value = ntohl(value);
    return channel.WriteReg(&address, &value, 1);
}

} // namespace

void CGxPort::AttachControlChannel(Gx::ControlChannel &channel, const AccessModeSet &modes) {
    {
        const std::lock_guard<std::recursive_mutex> lock(m_memberLock);
        assert(m_pControlChannel == nullptr);
        m_pControlChannel = &channel;
        m_AccessMode = modes.test(Control) ? GenApi::RW : GenApi::RO;
    }
    InvalidateNode();
}

void CGxPort::DetachControlChannel() {
    const std::lock_guard<std::recursive_mutex> lock(m_memberLock);
    m_pControlChannel = nullptr;
    m_AccessMode = GenApi::NI;
}

GenApi::EAccessMode CGxPort::GetAccessMode() const {
    const std::lock_guard<std::recursive_mutex> lock(m_memberLock);
    return m_AccessMode;
}

Gx::ControlChannel &CGxPort::CheckedChannel() const {
    if (m_pControlChannel == nullptr)
        throw LOGICAL_ERROR_EXCEPTION("Control channel not open.");
    return *m_pControlChannel;
}

void CGxPort::Read(void *pBuffer, int64_t Address, int64_t Length) {
    const std::lock_guard<std::recursive_mutex> lock(m_memberLock);
    Gx::ControlChannel &channel = CheckedChannel();
    const auto address = static_cast<std::uint32_t>(Address);
    GXSTATUS status = GX_E_INVALID_PARAMETER;
    if (FitsDevice(Address, Length))
        status = m_bUseSchema1LittleEndianHack && Length == RegisterBytes
                     ? ReadRegister(channel, address, pBuffer)
                     : channel.ReadMem(address, pBuffer, static_cast<std::uint32_t>(Length));
    THROW_IF_GX_FAILED(status, "Failed to read memory at 0x%" PRIx64 ", 0x%" PRIx64 " bytes. ",
                       static_cast<std::uint64_t>(Address), static_cast<std::uint64_t>(Length));
}

void CGxPort::Write(const void *pBuffer, int64_t Address, int64_t Length) {
    const std::lock_guard<std::recursive_mutex> lock(m_memberLock);
    Gx::ControlChannel &channel = CheckedChannel();
    const auto address = static_cast<std::uint32_t>(Address);
    GXSTATUS status = GX_E_INVALID_PARAMETER;
    if (FitsDevice(Address, Length))
        status = m_bUseSchema1LittleEndianHack && Length == RegisterBytes
                     ? WriteRegister(channel, address, pBuffer)
                     : channel.WriteMem(address, pBuffer, static_cast<std::uint32_t>(Length));
    THROW_IF_GX_FAILED(status, "Failed to write memory at 0x%" PRIx64 ", 0x%" PRIx64 " bytes. ",
                       static_cast<std::uint64_t>(Address), static_cast<std::uint64_t>(Length));
}

} // namespace Corvo
