// The blocking register and memory operations: splitting into transactions.

#include "ControlChannelXaction.h"
#include "TraceImp.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace GxImp {

namespace {

// Pieces that fit the GVCP payload of 540 bytes.
constexpr std::uint32_t MaxReadRegs = GVCP_MAX_PAYLOAD / sizeof(std::uint32_t);
constexpr std::uint32_t MaxWriteRegs = GVCP_MAX_PAYLOAD / sizeof(GVCP_WRITEREG_ITEM);
constexpr std::uint32_t MaxMemBytes = GVCP_MAX_PAYLOAD - sizeof(std::uint32_t);
constexpr std::uint32_t MaxEmulatedBytes = MaxWriteRegs * sizeof(std::uint32_t);
static_assert(MaxReadRegs == 135 && MaxWriteRegs == 67 && MaxMemBytes == 536 && MaxEmulatedBytes == 268);

/// The words of one kind of access in its traces.
struct AccessText {
    const char *Verb; ///< "read" or "write"
    const char *Unit; ///< "register(s)" or "bytes"
    const char *Kind; ///< "Read register" ...
};

constexpr AccessText ReadRegText{"read", "register(s)", "Read register"};
constexpr AccessText WriteRegText{"write", "register(s)", "Write register"};
constexpr AccessText ReadMemText{"read", "bytes", "Read memory"};
constexpr AccessText WriteMemText{"write", "bytes", "Write memory"};

GXSTATUS TraceFailure(const char *step, const AccessText &text, std::uint32_t count, GXSTATUS status) noexcept {
    if (status != GX_SUCCESS)
        GX_TRACE(FlagControlChannel, LevelError, "Failed to %s transaction to %s %lu %s. Status = 0x%08X.", step,
                 text.Verb, static_cast<unsigned long>(count), text.Unit, status);
    return status;
}

/// Creates and starts one transaction. \param pXaction is empty after a failure, so that the lock is free again.
template <typename Xaction, typename... Arguments>
GXSTATUS Begin(const AccessText &text, CControlChannel &channel, std::uint32_t count,
               std::unique_ptr<Xaction> *pXaction, Arguments... arguments) noexcept {
    *pXaction = Xaction::Create(count);
    if (!*pXaction) {
        GX_TRACE(FlagControlChannel, LevelError, "%s transaction could not be created", text.Kind);
        return GX_E_OUT_OF_MEMORY;
    }
    const GXSTATUS status = (*pXaction)->Init(channel, arguments...);
    if (status != GX_SUCCESS)
        pXaction->reset();
    return TraceFailure("start", text, count, status);
}

/// One transaction from start to end.
template <typename Xaction, typename... Arguments>
GXSTATUS Transact(const AccessText &text, CControlChannel &channel, std::uint32_t count,
                  Arguments... arguments) noexcept {
    std::unique_ptr<Xaction> xaction;
    const GXSTATUS status = Begin(text, channel, count, &xaction, arguments...);
    if (status != GX_SUCCESS)
        return status;
    return TraceFailure("complete", text, count, xaction->Complete());
}

/// Calls piece(offset, count) for consecutive pieces until one fails.
template <typename Piece> GXSTATUS ForEachPiece(std::uint32_t total, std::uint32_t limit, Piece piece) noexcept {
    GXSTATUS status = GX_SUCCESS;
    for (std::uint32_t offset = 0; offset < total && status == GX_SUCCESS;) {
        const std::uint32_t count = std::min(limit, total - offset);
        status = piece(offset, count);
        offset += count;
    }
    return status;
}

} // namespace

GXSTATUS CControlChannel::ReadRegBegin(const std::uint32_t *addresses, std::uint32_t *values, std::uint32_t count,
                                       std::unique_ptr<CReadRegXaction> *pXaction) noexcept {
    return Begin(ReadRegText, *this, count, pXaction, addresses, values);
}

GXSTATUS CControlChannel::WriteRegBegin(const std::uint32_t *addresses, const std::uint32_t *values,
                                        std::uint32_t count, std::unique_ptr<CWriteRegXaction> *pXaction) noexcept {
    return Begin(WriteRegText, *this, count, pXaction, addresses, values);
}

GXSTATUS CControlChannel::ReadMemBegin(std::uint32_t address, void *buffer, std::uint32_t size,
                                       std::unique_ptr<CReadMemXaction> *pXaction) noexcept {
    return Begin(ReadMemText, *this, size, pXaction, address, buffer);
}

GXSTATUS CControlChannel::WriteMemBegin(std::uint32_t address, const void *data, std::uint32_t size,
                                        std::unique_ptr<CWriteMemXaction> *pXaction) noexcept {
    return Begin(WriteMemText, *this, size, pXaction, address, data);
}

GXSTATUS CControlChannel::ReadReg(const std::uint32_t *addresses, std::uint32_t *values, std::uint32_t count) noexcept {
    const std::uint32_t limit = HasCapability(GEV_CAPABILITY_CONCATENATION) ? MaxReadRegs : 1;
    return ForEachPiece(count, limit, [=](std::uint32_t offset, std::uint32_t piece) {
        return Transact<CReadRegXaction>(ReadRegText, *this, piece, addresses + offset, values + offset);
    });
}

GXSTATUS CControlChannel::WriteReg(const std::uint32_t *addresses, const std::uint32_t *values,
                                   std::uint32_t count) noexcept {
    const std::uint32_t limit = HasCapability(GEV_CAPABILITY_CONCATENATION) ? MaxWriteRegs : 1;
    return ForEachPiece(count, limit, [=](std::uint32_t offset, std::uint32_t piece) {
        return Transact<CWriteRegXaction>(WriteRegText, *this, piece, addresses + offset, values + offset);
    });
}

GXSTATUS CControlChannel::ReadMem(std::uint32_t address, void *buffer, std::uint32_t size) noexcept {
    return ForEachPiece(size, MaxMemBytes, [=](std::uint32_t offset, std::uint32_t piece) {
        void *destination = static_cast<std::uint8_t *>(buffer) + offset;
        return Transact<CReadMemXaction>(ReadMemText, *this, piece, address + offset, destination);
    });
}

GXSTATUS CControlChannel::WriteMem(std::uint32_t address, const void *data, std::uint32_t size) noexcept {
    const auto *bytes = static_cast<const std::uint8_t *>(data);
    if (HasCapability(GEV_CAPABILITY_WRITEMEM)) {
        return ForEachPiece(size, MaxMemBytes, [=](std::uint32_t offset, std::uint32_t piece) {
            const void *source = bytes + offset;
            return Transact<CWriteMemXaction>(WriteMemText, *this, piece, address + offset, source);
        });
    }
    return ForEachPiece(size, MaxEmulatedBytes, [=](std::uint32_t offset, std::uint32_t piece) {
        const GXSTATUS status = WriteMemEmulated(address + offset, bytes + offset, piece);
        if (status != GX_SUCCESS)
            GX_TRACE(FlagControlChannel, LevelError, "Failed to write %lu bytes (WriteMemEmulated). Status = 0x%08X.",
                     static_cast<unsigned long>(piece), status);
        return status;
    });
}

GXSTATUS CControlChannel::WriteMemEmulated(std::uint32_t address, const void *data, std::uint32_t size) noexcept {
    const std::uint32_t count = size / 4;
    const std::unique_ptr<std::uint32_t[]> words(new (std::nothrow) std::uint32_t[std::size_t{2} * count]);
    if (!words)
        return GX_E_OUT_OF_MEMORY;
    std::uint32_t *addresses = words.get();
    std::uint32_t *values = words.get() + count;
    const bool bigEndianDevice = (m_DeviceMode & GEV_DEVICE_MODE_BIG_ENDIAN) != 0;
    std::memcpy(values, data, std::size_t{4} * count);
    for (std::uint32_t i = 0; i < count; ++i) {
        addresses[i] = address + 4 * i;
        if (bigEndianDevice)
            values[i] = ntohl(values[i]);
    }
    return WriteReg(addresses, values, count);
}

} // namespace GxImp
