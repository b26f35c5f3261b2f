#pragma once

namespace listener {

/// Makes CAP_NET_RAW effective. \return false when the program was not given it.
bool raiseNetRaw();

/// Gives every capability up, for this process and all that could come of it. \return false when the kernel refuses.
bool dropEverything();

} // namespace listener
