#pragma once

#include "commissioning/Inventory.h"

#include <string>

namespace commissioning {

std::string toText(Address address);         ///< "192.168.10.1"
std::string toText(const AdapterAddress &a); ///< "192.168.10.1/24"
/// "192.168.10.200:5555", with the process where it is known: "192.168.10.1:5555 (viewer, process 12)".
std::string holderText(const Holder &holder);
/// "02:5A:E3:01:02:03" of twelve digits; any other text as it is.
std::string macText(const std::string &mac);

unsigned prefixLength(Address mask); ///< number of its leading ones
inline bool isInSubnet(Address address, const AdapterAddress &subnet) {
    return ((address ^ subnet.address) & subnet.mask) == 0;
}
inline bool isLinkLocal(Address address) { return address >> 16 == 0xA9FE; }

} // namespace commissioning
