#include "Error.h"

#include "GxAssert.h"
#include "GxMessageInfo.h"
#include "TraceImp.h"

#include <cerrno>
#include <cstring>

namespace {

constexpr GXSTATUS FacilityDevice = 0x101;
constexpr GXSTATUS ErrorFromErrno = 0xE1020000;
constexpr GXSTATUS ErrorFromDevice = 0xE1010000;
constexpr GXSTATUS InformationFromDevice = 0x61010000;
constexpr GEV_STATUS GEV_STATUS_LOCAL_PROBLEM = 0x8008;

} // namespace

GXSTATUS GxStatusFromGv(std::uint32_t gevStatus) noexcept {
    const std::uint32_t code = gevStatus & 0xFFFF;
    if (code == 0)
        return GX_SUCCESS;
    return ((code & 0x8000) != 0 ? ErrorFromDevice : InformationFromDevice) | code;
}

GEV_STATUS GevStatusFromGx(GXSTATUS status) noexcept {
    if (status == GX_SUCCESS)
        return 0;
    const bool fromDevice = (status >> 16 & 0xFFF) == FacilityDevice;
    return fromDevice ? static_cast<GEV_STATUS>(status & 0xFFFF) : GEV_STATUS_LOCAL_PROBLEM;
}

GXSTATUS GxStatusFromErrno(int Errno) noexcept {
    GX_ASSERT(0 == (Errno & ~0xffff));
    return ErrorFromErrno | static_cast<GXSTATUS>(Errno);
}

GXSTATUS GxStatusFromSocket(int error) noexcept { return GxStatusFromErrno(error); }

int GxGetSocketError() noexcept { return errno; }

const char *GxDecodeErrnoError(int error) noexcept {
    static char text[1024];
    const char *decoded = strerror_r(error, text, sizeof text);
    if (decoded != text)
        strncpy(text, decoded, sizeof text - 1);
    return text;
}

const char *GxDecodeSocketError(int error) noexcept { return GxDecodeErrnoError(error); }

GXSTATUS GxDecodeGxStatus(GXSTATUS code, char **pText) noexcept {
    char *message = mcgx::GetMessage(code, 0);
    if (!message) {
        GX_TRACE(FlagGeneral, LevelError, "Failed to retrieve GX status message for code 0x%08x", code);
        return GX_FALSE;
    }
    *pText = message;
    return GX_SUCCESS;
}

void GxFreeMessage(char *message) noexcept { mcgx::FreeMessage(message); }

GxImp::ErrnoText::ErrnoText(int error) noexcept : m_Text(strerror_r(error, m_Buffer, sizeof m_Buffer)) {}
