#pragma once

#include "Base/GCStringVector.h"

namespace Corvo {

/// Every text of the core library and of the layers above it: property names and values, messages.
using String_t = GenICam::gcstring;
using StringList_t = GenICam::gcstring_vector;

} // namespace Corvo
