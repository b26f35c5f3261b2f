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

bool isTaken(const Camera &camera, Address address) {
    return camera.address == address ||
           (camera.stored && camera.stored->address == address && camera.mode == Mode::Static);
}

std::string refusalByCamera(const Camera &camera, Address address, const std::string &mac) {
    return isTaken(camera, address) && strcasecmp(camera.mac.c_str(), mac.c_str()) != 0
               ? "The camera with the MAC address " + macText(camera.mac) + " has the address " + toText(address) + "."
               : "";
}

std::string refusalByCameras(Address address, const std::string &mac, const AddressSurroundings &around) {
    std::string reason;
    for (std::size_t i = 0; reason.empty() && i < around.hidden.size(); ++i)
        reason = refusalByCamera(around.hidden[i], address, mac);
    for (std::size_t i = 0; around.devices && reason.empty() && i < around.devices->size(); ++i)
        reason = refusalByCamera(cameraOf((*around.devices)[i]), address, mac);
    return reason;
}

/// " eth1 (192.168.10.1/24)", as far as it is known.
std::string adapterText(const AddressSurroundings &around) {
    std::string text = around.adapterName.empty() ? "" : " " + around.adapterName;
    for (const AdapterAddress &subnet : around.adapter)
        text += (&subnet == &around.adapter.front() ? " (" : ", ") + toText(subnet);
    return text + ")";
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
               : toText(address) + " is outside the subnet of the adapter" + adapterText(around) +
                     ", so the camera could not be reached.";
}

const char *nameOf(Mode mode) {
    return mode == Mode::Static ? "static addresses" : mode == Mode::Dhcp ? "DHCP" : "Auto IP";
}

} // namespace

AddressSurroundings surroundingsOn(const std::vector<Adapter> &host, const Adapter *adapter) {
    AddressSurroundings around;
    for (const Adapter &each : host)
        around.own.insert(around.own.end(), each.addresses.begin(), each.addresses.end());
    if (adapter) {
        around.adapter = adapter->addresses;
        around.adapterName = adapter->name;
    }
    return around;
}

std::string refusalOfHolder(const Camera &camera) {
    if (camera.status != Status::InUse)
        return "";
    return "The camera is controlled by another application" +
           (camera.holder ? ": " + holderText(*camera.holder) : "") + ".";
}

std::string refusalOfHolder(const CDeviceInfo &device) { return refusalOfHolder(cameraOf(device)); }

std::string refusalOfMode(const Camera &camera, Mode mode) {
    const bool isOffered =
        camera.modes.empty() || std::find(camera.modes.begin(), camera.modes.end(), mode) != camera.modes.end();
    return isOffered ? "" : std::string("The camera does not support ") + nameOf(mode) + ".";
}

std::string refusalOfMode(const CDeviceInfo &device, Mode mode) { return refusalOfMode(cameraOf(device), mode); }

bool tellsOfTwin(const Finding &finding) { return finding.code == "duplicate-mac"; }

std::string refusalOfTwin(const std::string &mac, const std::vector<Finding> &findings) {
    const bool hasTwin = std::any_of(findings.begin(), findings.end(), [&](const Finding &finding) {
        return tellsOfTwin(finding) && finding.camera == mac;
    });
    return hasTwin ? "Another camera has the same MAC address: a change could reach either." : "";
}

std::string refusalOfGateway(Address gateway, Address address, Address mask) {
    if (gateway == 0)
        return "";
    if (gateway == address)
        return "The gateway " + toText(gateway) + " would be the camera itself.";
    if (!isInSubnet(gateway, {address, mask}))
        return "The gateway " + toText(gateway) + " is outside the subnet of " + toText({address, mask}) + ".";
    return refusalInSubnet(gateway, mask);
}

std::string refusalByOthers(Address address, const std::string &mac, const std::map<Address, std::string> &taken) {
    const auto other = taken.find(address);
    return other == taken.end() || other->second == mac
               ? ""
               : "Another device, " + macText(other->second) + ", has the address " + toText(address) + ".";
}

std::string refusalOfAddress(Address address, Address mask, const std::string &mac, const AddressSurroundings &around) {
    std::string reason = refusalOfKind(address);
    if (reason.empty() && mask == 0)
        reason = "The subnet mask is not known, and 0.0.0.0 is none.";
    if (reason.empty())
        reason = refusalInSubnet(address, mask);
    if (reason.empty())
        reason = refusalByHost(address, around);
    return reason.empty() ? refusalByCameras(address, mac, around) : reason;
}

std::string refusalOf(const Change &change, const AddressSurroundings &around) {
    if (!change.mode)
        return "No mode is chosen.";
    std::string reason = refusalOfHolder(change.device);
    if (reason.empty())
        reason = refusalOfMode(change.device, *change.mode);
    if (!reason.empty() || change.mode != Mode::Static)
        return reason;
    reason = refusalOfAddress(change.address, change.mask, change.device.GetMacAddress().c_str(), around);
    return reason.empty() ? refusalOfGateway(change.gateway, change.address, change.mask) : reason;
}

} // namespace commissioning
