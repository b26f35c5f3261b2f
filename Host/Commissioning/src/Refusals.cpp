#include "commissioning/Refusals.h"

#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"

#include <algorithm>
#include <strings.h>

namespace commissioning {

using namespace Corvo;

namespace {

constexpr Address FirstMulticast = 0xE0000000;

std::string refusalOfKind(Address address) {
    if (address >> 24 == 0)
        return "No camera can have the address " + toText(address) + ".";
    if (address >> 24 == 127)
        return toText(address) + " is a loopback address.";
    if (address >= FirstMulticast)
        return toText(address) + " is a multicast or reserved address.";
    return "";
}

/// The first and the last address of a subnet belong to nobody, unless there are no others.
std::string refusalInSubnet(Address address, Address mask) {
    if (mask >= 0xFFFFFFFE)
        return "";
    if ((address & ~mask) == 0)
        return toText(address) + " is the address of the network itself.";
    if ((address | mask) == 0xFFFFFFFF)
        return toText(address) + " is the broadcast address of the network.";
    return "";
}

bool isTaken(const CDeviceInfo &device, Address address) {
    const auto stored = storedAddressesOf(device);
    return currentAddressOf(device) == address ||
           (stored && stored->address == address && modeOf(device) == Mode::Static);
}

std::string refusalByCameras(Address address, const std::string &mac, const DeviceInfoList &devices) {
    for (const CDeviceInfo &device : devices) {
        const String_t other = propertyOf(device, PropertyMac);
        if (strcasecmp(other, mac.c_str()) != 0 && isTaken(device, address))
            return "The camera with the MAC address " + macText(other.c_str()) + " has the address " + toText(address) +
                   ".";
    }
    return "";
}

std::string refusalByHost(Address address, const AddressSurroundings &around) {
    const auto isOwn = [&](const AdapterAddress &own) { return own.address == address; };
    if (std::any_of(around.own.begin(), around.own.end(), isOwn))
        return toText(address) + " is an address of this computer.";
    const auto home = std::find_if(around.adapter.begin(), around.adapter.end(),
                                   [&](const AdapterAddress &own) { return isInSubnet(address, own); });
    if (home != around.adapter.end())
        return refusalInSubnet(address, home->mask);
    return around.adapter.empty() || around.allowsForeignSubnet
               ? ""
               : toText(address) + " is outside the subnet of the adapter, so the camera could not be reached.";
}

const char *nameOf(Mode mode) {
    return mode == Mode::Static ? "static addresses" : mode == Mode::Dhcp ? "DHCP" : "Auto IP";
}

} // namespace

std::string refusalOfAddress(Address address, Address mask, const std::string &mac, const AddressSurroundings &around) {
    std::string reason = refusalOfKind(address);
    if (reason.empty())
        reason = refusalInSubnet(address, mask);
    if (reason.empty())
        reason = refusalByHost(address, around);
    if (reason.empty() && around.devices)
        reason = refusalByCameras(address, mac, *around.devices);
    return reason;
}

std::string refusalOf(const Change &change, const AddressSurroundings &around) {
    if (cameraOf(change.device).status == Status::InUse)
        return "The camera is controlled by another application.";
    const std::vector<Mode> modes = cameraOf(change.device).modes;
    if (!change.mode)
        return "No mode is chosen.";
    if (std::find(modes.begin(), modes.end(), *change.mode) == modes.end())
        return std::string("The camera does not support ") + nameOf(*change.mode) + ".";
    if (change.mode != Mode::Static)
        return "";
    return refusalOfAddress(change.address, change.mask, change.device.GetMacAddress().c_str(), around);
}

} // namespace commissioning
