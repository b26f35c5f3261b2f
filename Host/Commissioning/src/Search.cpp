#include "commissioning/Search.h"

#include "Base/GCException.h"
#include "MinimalCorvo/TraceLog.h"
#include "MinimalCorvoGigETL/DistinctDevices.h"
#include "MinimalCorvoGigETL/EnumCallee.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "Registers.h"
#include "SideBySide.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "gxapi/StopToken.h"

#include <algorithm>
#include <ifaddrs.h>
#include <mutex>
#include <net/if.h>
#include <netinet/in.h>
#include <string>
#include <unordered_map>

namespace commissioning {

using namespace Corvo;

namespace {

constexpr const char *Separator = ";";

/// The name of the adapter behind each of this host's addresses.
std::unordered_map<std::string, std::string> adapterNames() {
    constexpr unsigned Required = IFF_UP | IFF_RUNNING;
    std::unordered_map<std::string, std::string> names;
    ifaddrs *first = nullptr;
    if (getifaddrs(&first) != 0)
        return names;
    for (const ifaddrs *entry = first; entry != nullptr; entry = entry->ifa_next) {
        const bool isUsable = (entry->ifa_flags & Required) == Required && (entry->ifa_flags & IFF_LOOPBACK) == 0;
        if (!isUsable || entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET)
            continue;
        const auto *address = reinterpret_cast<const sockaddr_in *>(entry->ifa_addr);
        const std::string label = entry->ifa_name; // of the address, as in "eth0:1"
        names.emplace(toText(ntohl(address->sin_addr.s_addr)), label.substr(0, label.find(':')));
    }
    freeifaddrs(first);
    return names;
}

void addInterfaceNames(DeviceInfoList &devices) {
    const auto names = adapterNames();
    for (CDeviceInfo &device : devices) {
        const auto name = names.find(propertyOf(device, PropertyInterface).c_str());
        if (name != names.end())
            device.SetPropertyValue(PropertyInterfaceName, name->second);
    }
}

/// Joins the entries of each MAC into the first of them; the others lose their MAC.
void mergeByMac(DeviceInfoList &devices) {
    StringList_t keys;
    keys.push_back(PropertyInterface);
    keys.push_back(PropertyInterfaceName);
    std::unordered_map<std::string, CDeviceInfo *> firsts;
    for (CDeviceInfo &device : devices) {
        const String_t mac = propertyOf(device, PropertyMac);
        if (mac.empty())
            continue;
        const auto [first, isFirst] = firsts.emplace(mac.c_str(), &device);
        if (isFirst)
            continue;
        mergeProperties(*first->second, device, Separator, keys, false);
        device.SetPropertyValue(PropertyMac, "");
    }
}

/// What adds to a verdict and never changes it.
void addWhatCanBeRead(CDeviceInfo &device) {
    const EDeviceAccessiblityInfo verdict = verdictOf(device);
    if (verdict != Accessibility_Ok && verdict != Accessibility_Opened)
        return;
    Registers registers{CQuorelGigEDeviceInfo(device)};
    if (const auto stored = registers.readStored())
        setStoredAddresses(device, *stored);
    if (verdict != Accessibility_Opened)
        return;
    if (const auto holder = registers.readHolder())
        device.SetPropertyValue(PropertyHolder, toText(holder->address) + ":" + std::to_string(holder->port));
    device.ClearAccessFlags();
}

void patch(CDeviceInfo &device, const char *ipConfig, const char *ipAddress, const char *subnetMask,
           const char *defaultGateway) {
    CQuorelGigEDeviceInfo info(device);
    if (ipAddress)
        info.SetIpAddress(ipAddress).SetAddress(String_t(ipAddress) + ":" + info.GetPortNr());
    if (subnetMask)
        info.SetSubnetMask(subnetMask);
    if (defaultGateway)
        info.SetDefaultGateway(defaultGateway);
    if (ipConfig)
        info.SetIpConfigCurrent(ipConfig);
    device = info;
}

DeviceInfoList oneForEachMac(const DeviceInfoList &found) {
    DeviceInfoList entries;
    CDistinctDevices distinct(entries);
    for (const CDeviceInfo &device : found)
        distinct.Add(device);
    addInterfaceNames(entries);
    mergeByMac(entries);
    DeviceInfoList devices;
    for (const CDeviceInfo &device : entries) {
        if (!propertyOf(device, PropertyMac).empty())
            devices.push_back(device);
    }
    return devices;
}

std::vector<CDeviceInfo *> unknownOf(DeviceInfoList &devices, const SearchOptions &options) {
    std::vector<CDeviceInfo *> unknown;
    for (CDeviceInfo &device : devices) {
        if (!options.recall || !options.recall(device))
            unknown.push_back(&device);
    }
    return unknown;
}

/// What the probes of one search may write into the trace log.
constexpr unsigned MaxLinesOfProbes = 200;

/// \throws Cancelled
void throwWhenStopped() {
    if (Gx::CStopScope::IsStopRequested())
        throw Cancelled();
}

} // namespace

void ask(Address address, DeviceInfoList &found) {
    constexpr std::uint32_t Patience_ms = 1000;
    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(GVCP_PORT);
    target.sin_addr.s_addr = htonl(address);
    EnumCallee callee(found);
    (void)Gx::Enumerator::Discover(&callee, Patience_ms, Gx::Enumerator::FlagDefault,
                                   reinterpret_cast<const sockaddr *>(&target)); // one that is silent is not found
}

DeviceInfoList discover(IGigETransportLayer &layer, const SearchOptions &options) {
    DeviceInfoList found;
    layer.EnumerateAllDevices(found, false);
    const String_t problem = layer.GetLastHostProblem();
    for (const Address address : options.ask)
        ask(address, found);
    throwWhenStopped();
    if (found.empty() && !problem.empty())
        throw RUNTIME_EXCEPTION("The search for cameras failed: %s", problem.c_str());
    if (options.heard)
        options.heard(found);
    return oneForEachMac(found);
}

DeviceInfoList search(IGigETransportLayer &layer, const SearchOptions &options) {
    // A probe is mostly waiting, so it is threads, not cores, that shorten the time silent devices take.
    constexpr std::size_t MaxAtOnce = 128;
    DeviceInfoList devices = discover(layer, options);
    if (options.found)
        options.found(devices);
    const std::vector<CDeviceInfo *> unknown = unknownOf(devices, options);
    if (unknown.empty())
        return devices;
    if (!options.recall) {
        DeviceInfoList ignored; // What a plain discovery hears does not matter; that devices heard one does.
        layer.EnumerateDevices(ignored, false);
    }
    tracelog::LineBudget budget(tracelog::LogGetCatID("Corvo.GigE.TL"), MaxLinesOfProbes);
    std::mutex judging;
    sideBySide(unknown.size(), std::min(MaxAtOnce, spareDescriptors()), [&](std::size_t index) {
        const tracelog::LineBudget::Use use(budget);
        if (Gx::CStopScope::IsStopRequested())
            return;
        probe(layer, *unknown[index]);
        const std::lock_guard<std::mutex> lock(judging);
        if (options.judged)
            options.judged(*unknown[index]);
    });
    throwWhenStopped();
    return devices;
}

void testAccessibility(IGigETransportLayer &layer, CDeviceInfo &device) {
    // An info that was changed since its enumeration is not tested, and what is written here is no such change.
    device.ClearAccessFlags();
    EDeviceAccessiblityInfo verdict = Accessibility_Unknown;
    layer.IsDeviceAccessible(device, AccessModeSet(Control), &verdict);
    device.SetPropertyValue(PropertyVerdict, std::to_string(static_cast<int>(verdict)).c_str());
    if (verdict == Accessibility_Unknown)
        device.SetPropertyValue(PropertyVerdictReason, layer.GetLastHostProblem());
    device.ClearAccessFlags();
}

void probe(IGigETransportLayer &layer, CDeviceInfo &device) {
    testAccessibility(layer, device);
    addWhatCanBeRead(device);
}

std::size_t updateDeviceInfo(IGigETransportLayer &layer, DeviceInfoList &devices, const char *mac, const char *ipConfig,
                             const char *ipAddress, const char *subnetMask, const char *defaultGateway,
                             bool testAgain) {
    if (!mac || (!ipConfig && !ipAddress && !subnetMask && !defaultGateway))
        return 0;
    std::size_t count = 0;
    for (CDeviceInfo &device : devices) {
        if (propertyOf(device, PropertyMac) != mac)
            continue;
        patch(device, ipConfig, ipAddress, subnetMask, defaultGateway);
        if (testAgain)
            testAccessibility(layer, device);
        ++count;
    }
    return count;
}

Inventory inventoryOf(const DeviceInfoList &devices) {
    Inventory inventory;
    for (const CDeviceInfo &device : devices)
        inventory.cameras.push_back(cameraOf(device));
    return inventory;
}

} // namespace commissioning
