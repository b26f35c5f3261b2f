#pragma once

#include "MinimalCorvo/TraceLog.h"

namespace Corvo {

inline unsigned long DeviceLogCategory() {
    static const unsigned long category = tracelog::LogGetCatID("Corvo.GigE.Device");
    return category;
}

} // namespace Corvo
