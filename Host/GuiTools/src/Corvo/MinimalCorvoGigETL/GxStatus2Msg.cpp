#include "MinimalCorvoGigETL/GxStatus2Msg.h"

#include "gxapi/Gx.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace Corvo {

String_t GxStatus2Msg(GXSTATUS status) {
    char text[2048] = {};
    if (Gx::GetStatusMessage(status, text, sizeof text, nullptr) != GX_SUCCESS)
        return "*** Error getting status message";
    return text;
}

namespace {

/// The errno of a status of facility 0x102, also of those that stand for one; 0 for any other.
int ErrnoOf(GXSTATUS status) {
    constexpr GXSTATUS facilityMask = 0x0FFF0000;
    constexpr GXSTATUS errnoFacility = 0x01020000;
    switch (status) {
    case GX_E_OUT_OF_MEMORY:
        return ENOMEM;
    case GX_E_NO_RESOURCES:
    case GX_E_INTERNAL: // of a channel that gets no thread
        return EAGAIN;
    default:
        return (status & facilityMask) == errnoFacility ? static_cast<int>(status & 0xFFFF) : 0;
    }
}

} // namespace

bool IsHostProblem(GXSTATUS status) {
    constexpr int shortages[] = {EMFILE, ENFILE, ENOMEM, ENOBUFS, EAGAIN};
    return std::find(std::begin(shortages), std::end(shortages), ErrnoOf(status)) != std::end(shortages);
}

String_t HostProblemText(GXSTATUS status) {
    const int error = ErrnoOf(status);
    return error != 0 ? String_t(std::generic_category().message(error)) : GxStatus2Msg(status);
}

EGrabStatus GxStatus2GrabStatus(GXSTATUS status) {
    if (status == GX_SUCCESS)
        return Grabbed;
    return status == GX_E_BUFFER_CANCELLED ? Canceled : Failed;
}

} // namespace Corvo
