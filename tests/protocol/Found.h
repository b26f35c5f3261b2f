#pragma once

#include "camsim/Address.h"
#include "gxapi/Enumerator.h"

#include <arpa/inet.h>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

/// One reported device; the parts a test compares.
struct Found {
    std::string serial;
    std::string ip;      ///< as the device says in its record
    std::string sender;  ///< source of the acknowledge
    std::string adapter; ///< of the host

    friend bool operator==(const Found &a, const Found &b) {
        return a.serial == b.serial && a.ip == b.ip && a.sender == b.sender && a.adapter == b.adapter;
    }
    friend bool operator<(const Found &a, const Found &b) {
        return a.serial != b.serial ? a.serial < b.serial : a.adapter < b.adapter;
    }
    friend std::ostream &operator<<(std::ostream &out, const Found &found) {
        return out << found.serial << " " << found.ip << " from " << found.sender << " at " << found.adapter;
    }
};

class FoundList : public Gx::Enumerator::Callee {
public:
    GXSTATUS EnumCallback(const sockaddr *device, const GEV_DISCOVERY_INFO *info,
                          const sockaddr *adapter) noexcept override {
        Found found;
        const char *serial = info->Description.SerialNumber;
        found.serial.assign(serial, strnlen(serial, sizeof info->Description.SerialNumber));
        found.ip = camsim::Ipv4{info->CurrentIP.IPv4.Address}.toString();
        found.sender = text(device);
        found.adapter = text(adapter);
        list.push_back(found);
        return GX_SUCCESS;
    }

    std::vector<Found> list;

private:
    static std::string text(const sockaddr *address) {
        return inet_ntoa(reinterpret_cast<const sockaddr_in *>(address)->sin_addr);
    }
};
