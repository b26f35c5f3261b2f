// What a camera tells of itself, on its way to the terminal and into JSON: a discovery acknowledge (big-endian, without
// its header), then its stored address, mask and gateway, then who holds it. fuzz_inventory -max_len=512 CORPUS
// seeds/fuzz_inventory

#include "FuzzInput.h"

#include "Json.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "MinimalCorvoGigETL/tools.h"
#include "Text.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Search.h"
#include "commissioning/Selection.h"

#include <algorithm>

using namespace commissioning;

namespace {

Corvo::CQuorelGigEDeviceInfo deviceOf(FuzzInput &input) {
    GEV_DISCOVERY_INFO record{};
    const Bytes bytes = input.Take(sizeof record);
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t *>(&record));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(0xC0A80A15);
    const sockaddr general = Corvo::AsSockaddr(address);
    return Corvo::CQuorelGigEDeviceInfoImpl(general, &record, general);
}

Address wordOf(FuzzInput &input) {
    Bytes bytes = input.Take(sizeof(Address));
    bytes.resize(sizeof(Address));
    return Word(bytes, 0);
}

bool isHarmless(const std::string &text) {
    return std::none_of(text.begin(), text.end(), [](char ch) { return (ch >= 0 && ch < ' ') || ch == 0x7F; });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    FuzzInput input(bytes, size);
    Corvo::DeviceInfoList devices;
    Corvo::CQuorelGigEDeviceInfo device = deviceOf(input);
    const Address address = wordOf(input);
    const Address mask = wordOf(input);
    setStoredAddresses(device, {address, mask, wordOf(input)});
    device.SetPropertyValue(PropertyHolder, input.Text().c_str());
    devices.push_back(device);

    const Inventory inventory = inventoryOf(devices);
    const Camera &camera = inventory.cameras.at(0);
    Require(camera.stored && camera.stored->address == address && camera.stored->mask == mask, "other stored settings");
    Require(camera.mac.size() == 12, "a MAC that is none");
    const auto object = commandline::Json::parse(commandline::printed(commandline::inventoryJson(inventory)));
    Require(object["cameras"].size() == 1, "a camera lost in JSON");
    for (const std::string &text : {camera.vendor, camera.model, camera.serial, camera.name}) {
        Require(isHarmless(commandline::harmless(text)), "a text that drives the terminal");
        Require(commandline::displayWidth(text) >= 0, "a text of no width");
    }
    Require(!camerasNamed(camera.mac, inventory).empty(), "a camera that its MAC does not name");
    return 0;
}
