#pragma once

#include "camsim/Address.h"
#include "gxapi/Enumerator.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

constexpr std::uint32_t Timeout_ms = 250;

/// Writes each reported device as "serial, address in its record, sender of the acknowledge, adapter of the host".
class FoundList : public Gx::Enumerator::Callee {
public:
    GXSTATUS EnumCallback(const sockaddr *device, const GEV_DISCOVERY_INFO *info,
                          const sockaddr *adapter) noexcept override {
        const char *serial = info->Description.SerialNumber;
        list.push_back(std::string(serial, strnlen(serial, sizeof info->Description.SerialNumber)) + " " +
                       camsim::Ipv4{info->CurrentIP.IPv4.Address}.toString() + " " + text(device) + " " +
                       text(adapter));
        return GX_SUCCESS;
    }

    std::vector<std::string> list;

private:
    static std::string text(const sockaddr *address) {
        return inet_ntoa(reinterpret_cast<const sockaddr_in *>(address)->sin_addr);
    }
};

/// What a discovery finds, in alphabetical order.
inline std::vector<std::string> discover(std::uint32_t flags) {
    FoundList found;
    EXPECT_EQ(Gx::Enumerator::Discover(&found, Timeout_ms, flags, nullptr), 0u);
    std::sort(found.list.begin(), found.list.end());
    return found.list;
}
