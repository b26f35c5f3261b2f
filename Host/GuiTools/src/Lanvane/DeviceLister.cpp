#include "Lanvane/DeviceLister.h"

#include "Base/GCException.h"
#include "Lanvane/NetworkAdapter.h"
#include "MinimalCorvoGigETL/DistinctDevices.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "MinimalCorvoGigETL/TlFactory.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

using namespace Corvo;

const char *const PropMacAddress = "MacAddress";
const char *const PropInterface = "Interface";
const char *const PropIfName = "IF_~_Name";
const char *const PropAccessible = "DEV_~_Accessible";

IGigETransportLayer *DeviceLister::s_pTl = nullptr;
QAtomicInt DeviceLister::s_ref(0);

namespace {

constexpr const char *Separator = ";";

String_t propertyOf(const IProperties &properties, const char *name) {
    String_t value;
    properties.GetPropertyValue(name, value);
    return value;
}

void addInterfaceNames(DeviceInfoList &devices) {
    const CNetworkAdapterList adapters = CNetworkAdapter::allNetworkAdapters(
        QNetworkInterface::IsUp | QNetworkInterface::IsRunning, QNetworkInterface::IsLoopBack);
    for (CDeviceInfo &device : devices) {
        String_t address;
        if (!device.GetPropertyValue(PropInterface, address))
            continue;
        const CNetworkAdapter *adapter =
            CNetworkAdapter::findByIpAddress(adapters, QHostAddress(QString::fromLatin1(address.c_str())));
        if (adapter)
            device.SetPropertyValue(PropIfName, adapter->name().toLocal8Bit().constData());
    }
}

/// Joins the entries of each MAC into the first of them; the others lose their MAC.
void mergeByMac(DeviceInfoList &devices) {
    StringList_t keys;
    keys.push_back(PropInterface);
    keys.push_back(PropIfName);
    std::unordered_map<std::string, CDeviceInfo *> firsts;
    for (CDeviceInfo &device : devices) {
        const String_t mac = propertyOf(device, PropMacAddress);
        if (mac.empty())
            continue;
        const auto [first, isFirst] = firsts.emplace(mac.c_str(), &device);
        if (isFirst)
            continue;
        DeviceLister::mergeProperties(*first->second, device, Separator, keys, false);
        device.SetPropertyValue(PropMacAddress, "");
    }
}

} // namespace

DeviceLister::DeviceLister() { s_ref.ref(); }

DeviceLister::~DeviceLister() {
    if (s_ref.deref() || !s_pTl)
        return;
    try {
        CTlFactory::GetInstance().ReleaseTl(s_pTl);
    } catch (const GenICam::GenericException &) { // The factory has been terminated and the layer with it.
    }
    s_pTl = nullptr;
}

IGigETransportLayer &DeviceLister::Tl() {
    if (!s_pTl) {
        ITransportLayer *layer = CTlFactory::GetInstance().CreateTl("QuorelGigE");
        s_pTl = dynamic_cast<IGigETransportLayer *>(layer);
        if (!s_pTl)
            throw RUNTIME_EXCEPTION("Failed to create transport layer object");
    }
    return *s_pTl;
}

void DeviceLister::discoverAllDevices() {
    IGigETransportLayer &tl = Tl();
    DeviceInfoList found;
    tl.EnumerateAllDevices(found, false);
    m_lstDevices.clear();
    if (found.empty())
        return;

    DeviceInfoList devices;
    CDistinctDevices distinct(devices);
    for (const CDeviceInfo &device : found)
        distinct.Add(device);
    addInterfaceNames(devices);
    mergeByMac(devices);
    for (const CDeviceInfo &device : devices) {
        if (!propertyOf(device, PropMacAddress).empty())
            m_lstDevices.push_back(device);
    }
    DeviceInfoList ignored; // What a plain discovery hears does not matter; that devices heard one does.
    tl.EnumerateDevices(ignored, false);
    testAllAccessibilities();
}

void DeviceLister::testAllAccessibilities() {
    // A probe is mostly waiting, so it is threads, not cores, that shorten the time silent devices take.
    constexpr std::size_t MaxThreads = 128;
    std::atomic<std::size_t> next{0};
    const auto probe = [&] {
        for (std::size_t i = next++; i < m_lstDevices.size(); i = next++)
            testAccessibility(m_lstDevices[i]);
    };
    std::vector<std::future<void>> helpers;
    try {
        while (helpers.size() + 1 < std::min(MaxThreads, m_lstDevices.size()))
            helpers.push_back(std::async(std::launch::async, probe));
    } catch (const std::system_error &) { // The host has no more threads: those there are do it, only slower.
    }
    probe();
    for (std::future<void> &helper : helpers)
        helper.get();
}

void DeviceLister::testAccessibility(CDeviceInfo &device) {
    // An info that was changed since its enumeration is not tested, and what is written here is no such change.
    device.ClearAccessFlags();
    EDeviceAccessiblityInfo verdict = Accessibility_Unknown;
    Tl().IsDeviceAccessible(device, AccessModeSet(Control), &verdict);
    device.SetPropertyValue(PropAccessible, std::to_string(static_cast<int>(verdict)).c_str());
    device.ClearAccessFlags();
}

std::size_t DeviceLister::updateDeviceInfo(const char *pstrMac, const char *pstrIpConfig, const char *pstrIpAddress,
                                           const char *pstrSubnetMask, const char *pstrDefaultGateway,
                                           bool testAccess) {
    if (!pstrMac || (!pstrIpConfig && !pstrIpAddress && !pstrSubnetMask && !pstrDefaultGateway))
        return 0;
    std::size_t count = 0;
    for (CDeviceInfo &device : m_lstDevices) {
        if (propertyOf(device, PropMacAddress) != pstrMac)
            continue;
        CQuorelGigEDeviceInfo info(device);
        if (pstrIpAddress)
            info.SetIpAddress(pstrIpAddress).SetAddress(String_t(pstrIpAddress) + ":" + info.GetPortNr());
        if (pstrSubnetMask)
            info.SetSubnetMask(pstrSubnetMask);
        if (pstrDefaultGateway)
            info.SetDefaultGateway(pstrDefaultGateway);
        if (pstrIpConfig)
            info.SetIpConfigCurrent(pstrIpConfig);
        device = info;
        if (testAccess)
            testAccessibility(device);
        ++count;
    }
    return count;
}

bool DeviceLister::ValExistsInMultipartPropertyValue(const String_t &multipartValue, const String_t &value,
                                                     const char *separator) {
    const QStringList parts = QString::fromUtf8(multipartValue.c_str()).split(QString::fromUtf8(separator));
    return parts.contains(QString::fromUtf8(value.c_str()));
}

std::size_t DeviceLister::mergeProperties(IProperties &props1, const IProperties &props2, const char *pszSeparator,
                                          const StringList_t &propNames, bool allowDuplicates) {
    std::size_t count = 0;
    for (const String_t &name : propNames) {
        String_t value1;
        String_t value2;
        if (!props1.GetPropertyValue(name, value1) || !props2.GetPropertyValue(name, value2))
            continue;
        if (!allowDuplicates && ValExistsInMultipartPropertyValue(value1, value2, pszSeparator))
            continue;
        props1.SetPropertyValue(name, value1 + pszSeparator + value2);
        ++count;
    }
    return count;
}

std::size_t DeviceLister::mergeProperties(IProperties &props1, const IProperties &props2, const char *pszSeparator,
                                          bool allowDuplicates) {
    StringList_t names;
    props2.GetPropertyNames(names);
    return mergeProperties(props1, props2, pszSeparator, names, allowDuplicates);
}
