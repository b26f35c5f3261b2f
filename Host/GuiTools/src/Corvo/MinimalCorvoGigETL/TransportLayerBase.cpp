#include "MinimalCorvoGigETL/TransportLayerBase.h"

#include "Base/GCException.h"
#include "MinimalCorvo/Utilities.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "MinimalCorvoGigETL/TlFactory.h"
#include "MinimalCorvoGigETL/TraceAndThrow.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace Corvo {

namespace {

unsigned long TLTraceCategory() {
    static const unsigned long category = tracelog::LogGetCatID("corvo.base.TL");
    return category;
}

String_t EnablingFilter() {
    String_t text;
    GetValueOfEnvironmentVariable("CORVO_USE_TL", text);
    return text;
}

int CountFrom(const DeviceInfoList &list, std::size_t initialSize) {
    return static_cast<int>(list.size() - initialSize);
}

} // namespace

template <class Interface> CTransportLayerBase<Interface>::CTransportLayerBase() : m_enablingFilter(EnablingFilter()) {}

template <class Interface> CTransportLayerBase<Interface>::~CTransportLayerBase() {
    assert(m_devices.empty());
    DestroyNodeMap(m_pNodeMap);
}

template <class Interface> int CTransportLayerBase<Interface>::EnumerateDevices(DeviceInfoList &list, bool addToList) {
    return EnumerateDevices(list, DeviceInfoList(), addToList);
}

template <class Interface>
int CTransportLayerBase<Interface>::EnumerateDevices(DeviceInfoList &list, const DeviceInfoList &filter,
                                                     bool addToList) {
    if (!addToList)
        list.clear();
    const std::size_t initialSize = list.size();
    if (!IsTLEnabled())
        return 0;
    const int count = filter.empty() ? EnumerateUnfiltered(list) : EnumerateFiltered(list, filter);
    assert(list.size() >= initialSize);
    std::stable_sort(list.begin() + initialSize, list.end());
    return count;
}

template <class Interface> int CTransportLayerBase<Interface>::EnumerateUnfiltered(DeviceInfoList &list) {
    const DeviceInfoList *pGlobalFilter = CTlFactory::GetGlobalDeviceFilterInstance();
    if (pGlobalFilter == nullptr)
        return InternalEnumerateDevices(list);
    DeviceInfoList found;
    InternalEnumerateDevices(found);
    DeviceInfoList filter;
    std::copy_if(pGlobalFilter->begin(), pGlobalFilter->end(), std::back_inserter(filter),
                 [this](const CDeviceInfo &entry) { return IsComparable(entry); });
    return InternalApplyFilter(found, filter, list);
}

/// An entry of the environment with a malformed address matches no device; it shall not hinder the others. Nor does one
/// of hidden properties only, of which none would be compared.
template <class Interface> bool CTransportLayerBase<Interface>::IsComparable(const CDeviceInfo &entry) const {
    try {
        StringList_t names;
        return entry.GetPropertyNames(names) > 0 && InternalIsSubset(entry, entry);
    } catch (const GenICam::RuntimeException &error) {
        tracelog::LogTrace(TLTraceCategory(), tracelog::lvWarning, "Device filter: %s", error.GetDescription());
        return false;
    }
}

template <class Interface>
int CTransportLayerBase<Interface>::EnumerateFiltered(DeviceInfoList &list, const DeviceInfoList &filter) {
    if (std::none_of(filter.begin(), filter.end(),
                     [this](const CDeviceInfo &entry) { return InternalMatchDeviceClass(entry); }))
        return 0;
    DeviceInfoList found;
    EnumerateUnfiltered(found);
    return InternalApplyFilter(found, filter, list);
}

template <class Interface>
int CTransportLayerBase<Interface>::InternalApplyFilter(const DeviceInfoList &source, const DeviceInfoList &filter,
                                                        DeviceInfoList &out) const {
    DeviceInfoList passed; // a malformed address among the entries shall not leave half of them in the caller's list
    std::copy_if(source.begin(), source.end(), std::back_inserter(passed), [&](const CDeviceInfo &device) {
        return std::any_of(filter.begin(), filter.end(),
                           [&](const CDeviceInfo &entry) { return InternalIsSubset(device, entry); });
    });
    std::copy(passed.begin(), passed.end(), std::back_inserter(out));
    const int count = CountFrom(passed, 0);
    if (!source.empty())
        tracelog::LogTrace(TLTraceCategory(), tracelog::lvDebug,
                           "Filter applied to device list, count of devices before filter step = %d, after filter step "
                           "= %d.",
                           CountFrom(source, 0), count);
    return count;
}

template <class Interface>
bool CTransportLayerBase<Interface>::InternalMatchDeviceClass(const CDeviceInfo &info) const {
    return !info.IsDeviceClassAvailable() || info.GetDeviceClass() == InternalGetDeviceClass();
}

template <class Interface> void CTransportLayerBase<Interface>::CheckDeviceClass(const CDeviceInfo &info) const {
    if (!InternalMatchDeviceClass(info))
        TraceAndThrow(
            TLTraceCategory(),
            RUNTIME_EXCEPTION("The device class %s is not supported by this transport layer. This transport layer "
                              "supports %s.",
                              info.GetDeviceClass().c_str(), InternalGetDeviceClass().c_str()));
}

template <class Interface> bool CTransportLayerBase<Interface>::IsTLEnabled() const {
    return m_enablingFilter.empty() || m_enablingFilter == this->GetTlInfo().GetDeviceClass();
}

template <class Interface>
bool CTransportLayerBase<Interface>::IsDeviceAccessible(const CDeviceInfo &info, AccessModeSet modes,
                                                        EDeviceAccessiblityInfo *pAccessibilityInfo) {
    if (info.IsUserProvided()) {
        CheckDeviceClass(info);
        CDeviceInfo device;
        FindDevice(info, device, false);
        return InternalIsDeviceAccessible(device, modes, pAccessibilityInfo);
    }
    if (!info.IsModified())
        return InternalIsDeviceAccessible(info, modes, pAccessibilityInfo);
    if (pAccessibilityInfo != nullptr) // it no longer names what was found
        *pAccessibilityInfo = Accessibility_Unknown;
    return false;
}

template <class Interface>
void CTransportLayerBase<Interface>::FindDevice(const CDeviceInfo &info, CDeviceInfo &result, bool firstOnly) {
    if (InternalNeedsTlSpecificDeviceDiscovery(info)) {
        result = InternalDoTlSpecificDeviceDiscovery(info);
        if (!InternalIsSubset(result, info))
            throw RUNTIME_EXCEPTION("The found device does not contain all the provided device info properties.");
        return;
    }
    if (!IsTLEnabled())
        throw RUNTIME_EXCEPTION("Device not accessible. Transport layer is restricted by the environment");
    CheckDeviceClass(info);
    DeviceInfoList filter;
    filter.push_back(info);
    DeviceInfoList matches;
    const int count = EnumerateDevices(matches, filter);
    if (count == 0)
        TraceAndThrow(
            TLTraceCategory(),
            RUNTIME_EXCEPTION("No device is available or no device contains the provided device info properties"));
    if (count > 1 && !firstOnly)
        TraceAndThrow(
            TLTraceCategory(),
            RUNTIME_EXCEPTION("Too many devices (%d) match the provided device info properties, don't know which "
                              "device to use.",
                              count));
    result = matches.front();
}

template <class Interface> ICorvoDevice *CTransportLayerBase<Interface>::CreateDevice(const CDeviceInfo &info) {
    return MakeDevice(info, {}, false);
}

template <class Interface>
ICorvoDevice *CTransportLayerBase<Interface>::CreateDevice(const CDeviceInfo &info, const StringList_t &options) {
    return MakeDevice(info, options, false);
}

template <class Interface> ICorvoDevice *CTransportLayerBase<Interface>::CreateFirstDevice(const CDeviceInfo &info) {
    return MakeDevice(info, {}, true);
}

template <class Interface>
ICorvoDevice *CTransportLayerBase<Interface>::CreateFirstDevice(const CDeviceInfo &info, const StringList_t &options) {
    return MakeDevice(info, options, true);
}

template <class Interface> ICorvoDevice *CTransportLayerBase<Interface>::CreateDevice(const String_t &fullName) {
    CDeviceInfo info;
    info.SetFullName(fullName);
    return MakeDevice(info, {}, false);
}

template <class Interface>
ICorvoDevice *CTransportLayerBase<Interface>::MakeDevice(const CDeviceInfo &info, const StringList_t &options,
                                                         bool firstOnly) {
    CDeviceInfo device = info;
    if (info.IsUserProvided())
        FindDevice(info, device, firstOnly);
    else
        CheckDeviceClass(info);
    ICorvoDevice *pDevice = CreateDeviceImpl(device, options);
    try {
        KeepDevice(pDevice);
    } catch (...) {
        ForgetDevice(pDevice);
        DestroyDeviceImpl(pDevice);
        throw;
    }
    return pDevice;
}

template <class Interface> void CTransportLayerBase<Interface>::KeepDevice(ICorvoDevice *pDevice) {
    {
        const GenApi::AutoLock lock(m_lock);
        m_devices.insert(pDevice);
    }
    if (m_pObserver != nullptr)
        m_pObserver->OnDeviceCreated(*this, pDevice);
}

template <class Interface> bool CTransportLayerBase<Interface>::ForgetDevice(ICorvoDevice *pDevice) {
    const GenApi::AutoLock lock(m_lock);
    return m_devices.erase(pDevice) != 0;
}

template <class Interface> void CTransportLayerBase<Interface>::DestroyDevice(ICorvoDevice *pDevice) {
    if (pDevice == nullptr)
        return;
    if (!ForgetDevice(pDevice))
        throw INVALID_ARGUMENT_EXCEPTION("The device was not created by this transport layer.");
    DestroyDeviceImpl(pDevice);
    if (IDeviceCreationObserver *pObserver = m_pObserver)
        pObserver->OnDeviceDestroyed(pDevice);
}

template <class Interface> void CTransportLayerBase<Interface>::DestroyAllDevices() {
    std::set<ICorvoDevice *> devices; // those in the member could be destroyed by their removal callbacks meanwhile
    {
        const GenApi::AutoLock lock(m_lock);
        devices.swap(m_devices);
    }
    for (ICorvoDevice *pDevice : devices)
        DestroyDeviceImpl(pDevice);
}

template <class Interface> GenApi::INodeMap *CTransportLayerBase<Interface>::GetNodeMap() {
    const GenApi::AutoLock lock(m_lock);
    if (m_pNodeMap == nullptr)
        m_pNodeMap = CreateDefaultTransportLayerParamsNodeMap();
    return m_pNodeMap;
}

template <class Interface>
void CTransportLayerBase<Interface>::SetDeviceCreationObserver(IDeviceCreationObserver *pObserver) {
    m_pObserver = pObserver;
}

template class CTransportLayerBase<IGigETransportLayer>;

} // namespace Corvo
