#include "gxapi/Gx.h"

#include "BroadcastSocketCollection.h"
#include "Error.h"
#include "TraceImp.h"
#include "Utf8.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

GXSTATUS Gx::Init() noexcept {
    const char *text = std::getenv("CORVO_BROADCAST_RECV_BUF_SIZE");
    const long size = text ? std::strtol(text, nullptr, 10) : 0;
    if (size != 0)
        GxImp::g_cBroadcastSocketRecvBufSize = static_cast<int>(std::clamp<long>(size, INT_MIN, INT_MAX));
    return GX_SUCCESS;
}

GXSTATUS Gx::Exit() noexcept { return GX_SUCCESS; }

void Gx::GetVersion(std::uint32_t *pMajor, std::uint32_t *pMinor) noexcept {
    *pMajor = 10;
    *pMinor = 5;
}

namespace {

GXSTATUS CopyMessage(const char *encoded, std::size_t length, char *buffer, std::size_t bufferSize) noexcept {
    if (!buffer)
        return GX_SUCCESS;
    // Deliberately compared without the terminator, as documented.
    if (bufferSize < length)
        return GX_E_BUFFER_TOO_SMALL;
    std::memcpy(buffer, encoded, length + 1);
    return GX_SUCCESS;
}

} // namespace

GXSTATUS Gx::GetStatusMessage(GXSTATUS code, char *buffer, std::size_t bufferSize,
                              std::size_t *pRequiredSize) noexcept {
    if (!buffer && bufferSize != 0)
        return GX_E_INVALID_PARAMETER;

    char *decoded = nullptr;
    GXSTATUS status = GxDecodeGxStatus(code, &decoded);
    if (status != GX_SUCCESS) {
        GX_TRACE(FlagGeneral, LevelError, "Failed decode GX status code 0x%08X. Status = 0x%08X.", code, status);
        return status;
    }

    std::size_t length = 0;
    char *encoded = GxImp::EncodeUtf8(decoded, length);
    if (encoded) {
        if (pRequiredSize)
            *pRequiredSize = length;
        status = CopyMessage(encoded, length, buffer, bufferSize);
    } else {
        status = GX_E_OUT_OF_MEMORY;
    }
    std::free(encoded);
    GxFreeMessage(decoded);
    return status;
}
