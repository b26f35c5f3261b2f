#pragma once

#include "MinimalCorvo/Types.h"
#include "gxapi/GxStatus.h"

namespace Corvo {

/// How grabbing an image ended.
enum EGrabStatus : int { _UndefinedGrabStatus = -1, Idle = 0, Queued = 1, Grabbed = 2, Canceled = 3, Failed = 4 };

/// The English text of a protocol status, or "*** Error getting status message" for one without text.
String_t GxStatus2Msg(GXSTATUS status);

/// Whether an operation failed because this host has no descriptor, thread or memory left for it.
bool IsHostProblem(GXSTATUS status);
/// The English text of the failure of an operation on this host's side: that of the errno in the status, if there is
/// one.
String_t HostProblemText(GXSTATUS status);

/// Grabbed for success, Canceled for a cancelled buffer, Failed for anything else.
EGrabStatus GxStatus2GrabStatus(GXSTATUS status);

} // namespace Corvo
