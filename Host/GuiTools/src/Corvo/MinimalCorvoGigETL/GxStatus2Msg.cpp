#include "MinimalCorvoGigETL/GxStatus2Msg.h"

#include "gxapi/Gx.h"

namespace Corvo {

String_t GxStatus2Msg(GXSTATUS status) {
    char text[2048] = {};
    if (Gx::GetStatusMessage(status, text, sizeof text, nullptr) != GX_SUCCESS)
        return "*** Error getting status message";
    return text;
}

EGrabStatus GxStatus2GrabStatus(GXSTATUS status) {
    if (status == GX_SUCCESS)
        return Grabbed;
    return status == GX_E_BUFFER_CANCELLED ? Canceled : Failed;
}

} // namespace Corvo
