#include "commissioning/DeviceInfos.h"

#include "MinimalCorvo/Utilities.h"
#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "gxapi/GvcpMessages.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <strings.h>

namespace commissioning {

using namespace Corvo;

namespace {

template <class Number> std::optional<Number> numberFrom(std::string_view text) {
    Number number = 0;
    const char *const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

std::optional<std::uint32_t> numberOf(const IProperties &properties, const char *name) {
    return numberFrom<std::uint32_t>(propertyOf(properties, name).c_str());
}

std::vector<std::string> partsOf(const String_t &text, const String_t &separator) {
    std::vector<std::string> parts;
    String_t part;
    for (std::size_t i = 0; extractSubString(text, separator, i, part); ++i)
        parts.emplace_back(part.c_str());
    return parts;
}

Address addressIn(const IProperties &properties, const char *name) {
    return addressFrom(propertyOf(properties, name).c_str()).value_or(0);
}

std::vector<Mode> modesOf(const CDeviceInfo &device) {
    const std::uint32_t options = numberOf(device, "IpConfigOptions").value_or(0);
    std::vector<Mode> modes;
    for (const Mode mode : {Mode::Static, Mode::Dhcp, Mode::Auto}) {
        const std::uint32_t own =
            mode == Mode::Auto ? GEV_IP_CONFIG_LLA : wordOf(mode) & ~std::uint32_t(GEV_IP_CONFIG_LLA);
        if ((options & own) != 0)
            modes.push_back(mode);
    }
    return modes;
}

Status statusOf(EDeviceAccessiblityInfo verdict) {
    switch (verdict) {
    case Accessibility_Ok:
        return Status::Ok;
    case Accessibility_Opened:
    case Accessibility_OpenedExclusively:
        return Status::InUse;
    case Accessibility_NotReachable:
        return Status::NotReachable;
    case Accessibility_Unknown:
        break;
    }
    return Status::Unknown;
}

std::optional<Holder> holderOf(const CDeviceInfo &device) {
    const std::vector<std::string> parts = partsOf(propertyOf(device, PropertyHolder), ":");
    const auto port = parts.size() == 2 ? numberFrom<std::uint16_t>(parts[1]) : std::nullopt;
    if (!port)
        return std::nullopt;
    return Holder{addressFrom(parts[0]).value_or(0), *port, std::nullopt};
}

} // namespace

String_t propertyOf(const IProperties &properties, const char *name) {
    String_t value;
    properties.GetPropertyValue(name, value);
    return value;
}

bool isPartOf(const String_t &multipartValue, const String_t &value, const String_t &separator) {
    const std::vector<std::string> parts = partsOf(multipartValue, separator);
    return std::find(parts.begin(), parts.end(), value.c_str()) != parts.end();
}

std::size_t mergeProperties(IProperties &to, const IProperties &from, const char *separator, const StringList_t &names,
                            bool allowDuplicates) {
    std::size_t count = 0;
    for (const String_t &name : names) {
        String_t present;
        String_t addition;
        if (!to.GetPropertyValue(name, present) || !from.GetPropertyValue(name, addition))
            continue;
        if (!allowDuplicates && isPartOf(present, addition, separator))
            continue;
        to.SetPropertyValue(name, present + separator + addition);
        ++count;
    }
    return count;
}

EDeviceAccessiblityInfo verdictOf(const CDeviceInfo &device) {
    const std::uint32_t verdict = numberOf(device, PropertyVerdict).value_or(Accessibility_Unknown);
    return verdict <= Accessibility_NotReachable ? static_cast<EDeviceAccessiblityInfo>(verdict)
                                                 : Accessibility_Unknown;
}

std::optional<Mode> modeOf(const CQuorelGigEDeviceInfo &device) {
    return modeOf(numberOf(device, "IpConfigCurrent").value_or(0));
}

std::optional<Mode> modeOf(std::uint32_t word) {
    if ((word & GEV_IP_CONFIG_PERSISTENT_IP) != 0)
        return Mode::Static;
    if ((word & GEV_IP_CONFIG_DHCP) != 0)
        return Mode::Dhcp;
    return (word & GEV_IP_CONFIG_LLA) != 0 ? std::optional(Mode::Auto) : std::nullopt;
}

std::uint32_t wordOf(Mode mode) {
    return GEV_IP_CONFIG_LLA | (mode == Mode::Static ? GEV_IP_CONFIG_PERSISTENT_IP : 0u) |
           (mode == Mode::Dhcp ? GEV_IP_CONFIG_DHCP : 0u);
}

Address currentAddressOf(const CQuorelGigEDeviceInfo &device) { return addressIn(device, "IpAddress"); }

std::optional<StoredAddresses> storedAddressesOf(const CDeviceInfo &device) {
    if (!device.GetPropertyAvailable(PropertyStoredAddress))
        return std::nullopt;
    return StoredAddresses{addressIn(device, PropertyStoredAddress), addressIn(device, PropertyStoredMask),
                           addressIn(device, PropertyStoredGateway)};
}

void setStoredAddresses(CDeviceInfo &device, const StoredAddresses &stored) {
    device.SetPropertyValue(PropertyStoredAddress, toText(stored.address));
    device.SetPropertyValue(PropertyStoredMask, toText(stored.mask));
    device.SetPropertyValue(PropertyStoredGateway, toText(stored.gateway));
    device.ClearAccessFlags();
}

bool operator==(const StoredAddresses &a, const StoredAddresses &b) {
    return a.address == b.address && a.mask == b.mask && a.gateway == b.gateway;
}

CDeviceInfo *findByMac(DeviceInfoList &devices, const std::string &mac) {
    const auto found = std::find_if(devices.begin(), devices.end(), [&](const CDeviceInfo &device) {
        return strcasecmp(propertyOf(device, PropertyMac).c_str(), mac.c_str()) == 0;
    });
    return found != devices.end() ? found : nullptr;
}

Camera cameraOf(const CQuorelGigEDeviceInfo &device) {
    const auto text = [&](const char *name) { return std::string(propertyOf(device, name).c_str()); };
    Camera camera;
    camera.mac = text(PropertyMac);
    camera.vendor = text("VendorName");
    camera.model = text("ModelName");
    camera.serial = text("SerialNumber");
    camera.name = text("UserDefinedName");
    if (device.GetPropertyAvailable(PropertyInterfaceName))
        camera.adapters = partsOf(propertyOf(device, PropertyInterfaceName), ";");
    std::sort(camera.adapters.begin(), camera.adapters.end()); // it was found through them in an order of chance
    camera.address = currentAddressOf(device);
    camera.mask = addressIn(device, "SubnetMask");
    camera.gateway = addressIn(device, "DefaultGateway");
    camera.mode = modeOf(device);
    camera.word = numberOf(device, "IpConfigCurrent").value_or(0);
    camera.modes = modesOf(device);
    camera.status = statusOf(verdictOf(device));
    camera.statusReason = text(PropertyVerdictReason);
    camera.holder = holderOf(device);
    camera.stored = storedAddressesOf(device);
    return camera;
}

CQuorelGigEDeviceInfo infoOf(const Camera &camera) {
    CQuorelGigEDeviceInfo device;
    const auto set = [&](const char *name, const std::string &text) { device.SetPropertyValue(name, text.c_str()); };
    set("VendorName", camera.vendor);
    set("ModelName", camera.model);
    set("SerialNumber", camera.serial);
    set("UserDefinedName", camera.name);
    set("SubnetMask", toText(camera.mask));
    set("DefaultGateway", toText(camera.gateway));
    device.SetMacAddress(camera.mac.c_str());
    device.SetIpAddress(toText(camera.address).c_str());
    std::string adapters;
    for (const std::string &name : camera.adapters)
        adapters += (adapters.empty() ? "" : ";") + name;
    set(PropertyInterfaceName, adapters);
    std::uint32_t modes = 0;
    for (const Mode mode : camera.modes)
        modes |= wordOf(mode);
    set("IpConfigOptions", std::to_string(modes));
    if (camera.mode)
        set("IpConfigCurrent", std::to_string(camera.word != 0 ? camera.word : wordOf(*camera.mode)));
    return device;
}

} // namespace commissioning
