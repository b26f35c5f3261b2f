#include "Capabilities.h"

#include <array>
#include <cstdint>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace listener {

namespace {

// Two words of 32 capabilities each; the C library has no functions for them.
using Sets = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

bool call(long number, Sets &sets) {
    __user_cap_header_struct self{_LINUX_CAPABILITY_VERSION_3, 0};
    return syscall(number, &self, sets.data()) == 0;
}

} // namespace

bool raiseNetRaw() {
    Sets sets{};
    constexpr std::uint32_t NetRaw = 1U << CAP_NET_RAW;
    if (!call(SYS_capget, sets) || (sets[0].permitted & NetRaw) == 0)
        return false;
    Sets only{};
    only[0].permitted = NetRaw;
    only[0].effective = NetRaw;
    return call(SYS_capset, only);
}

bool dropEverything() {
    Sets none{};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0) == 0 && call(SYS_capset, none);
}

} // namespace listener
