#pragma once

#include "MinimalCorvo/Types.h"
#include "gxapi/GxStatus.h"

namespace Corvo {

/// How grabbing an image ended.
enum EGrabStatus : int { _UndefinedGrabStatus = -1, Idle = 0, Queued = 1, Grabbed = 2, Canceled = 3, Failed = 4 };

/// The English text of a protocol status, or "*** Error getting status message" for one without text.
String_t GxStatus2Msg(GXSTATUS status);

/// Grabbed for success, Canceled for a cancelled buffer, Failed for anything else.
EGrabStatus GxStatus2GrabStatus(GXSTATUS status);

} // namespace Corvo
