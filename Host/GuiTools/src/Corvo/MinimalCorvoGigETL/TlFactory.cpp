#include "MinimalCorvoGigETL/TlFactory.h"

#include "MinimalCorvo/CorvoBase.h"
#include "MinimalCorvoGigETL/DeviceEnumerationFilterParser.h"
#include "MinimalCorvoGigETL/TlLibHelper.h"
#include "MinimalCorvoGigETL/TraceAndThrow.h"

#include <algorithm>
#include <cassert>
#include <vector>

namespace Corvo {

namespace {

unsigned long TraceCategory() {
    static const unsigned long category = tracelog::LogGetCatID("corvo.base.TlFactory");
    return category;
}

/// A failure is no reason not to terminate the rest of the library.
void TerminateFactory() noexcept {
    try {
        CTlFactory::GetInstance().Terminate();
    } catch (const std::exception &error) {
        tracelog::LogTrace(TraceCategory(), tracelog::lvError, "Failed to terminate: %s", error.what());
    }
}

using LibraryList = std::vector<std::unique_ptr<CTlLibHelper>>;

LibraryList MakeLibraries() {
    LibraryList libraries;
    libraries.push_back(std::make_unique<CGigETlLibHelper>());
    return libraries;
}

const LibraryList &AvailableTransportLayers() {
    static const LibraryList sAvailableTransportLayers = MakeLibraries();
    return sAvailableTransportLayers;
}

TlInfoList AvailableTls() {
    TlInfoList list;
    for (const auto &pLibrary : AvailableTransportLayers())
        pLibrary->GetTlInfoList(list);
    std::stable_sort(list.begin(), list.end());
    return list;
}

} // namespace

/// A call that Terminate has to wait for.
class CTlFactory::CCall {
public:
    /// \throws LogicalErrorException after the termination.
    explicit CCall(CTlFactory &factory) : m_factory(factory) {
        const std::lock_guard<std::mutex> lock(m_factory.m_lock);
        m_factory.ThrowIfTerminated();
        ++m_factory.m_runningCalls;
    }
    ~CCall() {
        const std::lock_guard<std::mutex> lock(m_factory.m_lock);
        if (--m_factory.m_runningCalls == 0)
            m_factory.m_callEnded.notify_all();
    }
    CCall(const CCall &) = delete;
    CCall &operator=(const CCall &) = delete;

private:
    CTlFactory &m_factory;
};

/// Holds a layer for the length of a scope.
class CTlFactory::CTlHolder {
public:
    /// Holds the layer of a device. \throws InvalidArgumentException for a device that this factory does not know.
    CTlHolder(CTlFactory &factory, ICorvoDevice *pDevice) : m_factory(factory) {
        const std::lock_guard<std::mutex> lock(m_factory.m_lock);
        const auto reference = m_factory.m_implicitTlRefs.find(pDevice);
        if (reference == m_factory.m_implicitTlRefs.end())
            throw INVALID_ARGUMENT_EXCEPTION("The device was not created by this factory.");
        m_pLayer = reference->second;
        ++m_factory.m_tlMap.find(m_pLayer)->second.references;
    }
    /// \throws RuntimeException when there is no layer of that class.
    CTlHolder(CTlFactory &factory, const String_t &deviceClass)
        : m_factory(factory), m_pLayer(factory.CreateTl(deviceClass)) {
        if (m_pLayer == nullptr)
            throw RUNTIME_EXCEPTION("The transport layer for device class '%s' could not be created.",
                                    deviceClass.c_str());
    }
    ~CTlHolder() { m_factory.Release(m_pLayer, &TlEntry::references); }
    CTlHolder(const CTlHolder &) = delete;
    CTlHolder &operator=(const CTlHolder &) = delete;

    ITransportLayer *operator->() const { return m_pLayer; }

private:
    CTlFactory &m_factory;
    ITransportLayer *m_pLayer = nullptr;
};

CTlFactory::CTlFactory() {
    auto pFilter = std::make_unique<DeviceInfoList>();
    if (GetDeviceEnumerationFilterFromEnvironment(*pFilter) > 0)
        m_pGlobalDeviceFilter = std::move(pFilter);
    SetTerminationHandler(&TerminateFactory);
}

CTlFactory &CTlFactory::GetInstance() {
    // Never destroyed: without CorvoTerminate, threads of devices may still run while the process exits.
    static auto *const pInstance = new CTlFactory;
    return *pInstance;
}

const DeviceInfoList *CTlFactory::GetGlobalDeviceFilterInstance() { return GetInstance().m_pGlobalDeviceFilter.get(); }

void CTlFactory::ThrowIfTerminated() const {
    if (m_terminated)
        throw LOGICAL_ERROR_EXCEPTION("Do not use any corvo object after Corvo::CorvoTerminate() has been called.");
}

int CTlFactory::EnumerateTls(TlInfoList &list) {
    const CCall call(*this);
    list = AvailableTls();
    return static_cast<int>(list.size());
}

ITransportLayer *CTlFactory::CreateTl(const String_t &deviceClass) {
    CTlInfo info;
    info.SetDeviceClass(deviceClass);
    return CreateTl(info);
}

ITransportLayer *CTlFactory::CreateTl(const CTlInfo &info) {
    const CCall call(*this);
    tracelog::LogTrace(TraceCategory(), tracelog::lvDebug, "Trying to create TL '%s' - %s",
                       info.GetDeviceClass().c_str(), info.GetFullName().c_str());
    const std::lock_guard<std::mutex> lock(m_lock);
    auto entry = FindTl(info.GetDeviceClass());
    if (entry == m_tlMap.end())
        entry = MakeTl(info);
    if (entry == m_tlMap.end())
        return nullptr;
    ++entry->second.references;
    return entry->first;
}

CTlFactory::TlMap::iterator CTlFactory::FindTl(const String_t &deviceClass) {
    return std::find_if(m_tlMap.begin(), m_tlMap.end(), [&](const TlMap::value_type &entry) {
        return entry.first->GetTlInfo().GetDeviceClass() == deviceClass;
    });
}

CTlFactory::TlMap::iterator CTlFactory::MakeTl(const CTlInfo &info) {
    for (const auto &pLibrary : AvailableTransportLayers()) {
        if (ITransportLayer *pLayer = pLibrary->Create(info))
            return AddTl(pLayer, *pLibrary);
    }
    return m_tlMap.end();
}

CTlFactory::TlMap::iterator CTlFactory::AddTl(ITransportLayer *pLayer, const CTlLibHelper &library) {
    const auto [entry, added] = m_tlMap.insert({pLayer, {&library}});
    if (!added)
        throw LOGICAL_ERROR_EXCEPTION("Tried to add the same transport layer twice");
    auto *pPrivate = dynamic_cast<ITransportLayerPrivate *>(pLayer);
    assert(pPrivate != nullptr);
    pPrivate->SetDeviceCreationObserver(this);
    return entry;
}

void CTlFactory::ReleaseTl(const ITransportLayer *pLayer) {
    const CCall call(*this);
    if (pLayer != nullptr && !Release(pLayer, &TlEntry::references))
        throw INVALID_ARGUMENT_EXCEPTION("The transport layer is not held.");
}

bool CTlFactory::Release(const ITransportLayer *pLayer, int TlEntry::*references) {
    const CTlLibHelper *pLibrary = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        const auto entry = m_tlMap.find(pLayer);
        if (entry == m_tlMap.end() || entry->second.*references == 0)
            return false;
        --(entry->second.*references);
        if (entry->second.references == 0 && entry->second.implicitReferences == 0) {
            pLibrary = entry->second.pLibrary;
            m_tlMap.erase(entry);
        }
    }
    if (pLibrary != nullptr)
        pLibrary->Destroy(pLayer);
    return true;
}

int CTlFactory::EnumerateDevices(DeviceInfoList &list, bool addToList) {
    return EnumerateDevices(list, DeviceInfoList(), addToList);
}

int CTlFactory::EnumerateDevices(DeviceInfoList &list, const DeviceInfoList &filter, bool addToList) {
    const CCall call(*this);
    if (!addToList)
        list.clear();
    const std::size_t initialSize = list.size();
    for (const CTlInfo &tlInfo : AvailableTls())
        EnumerateDevicesOf(tlInfo, list, filter);
    return static_cast<int>(list.size() - initialSize);
}

void CTlFactory::EnumerateDevicesOf(const CTlInfo &tlInfo, DeviceInfoList &list, const DeviceInfoList &filter) {
    const String_t name = tlInfo.GetFriendlyName();
    try {
        CTlHolder(*this, tlInfo.GetDeviceClass())->EnumerateDevices(list, filter, true);
    } catch (const GenICam::GenericException &error) {
        tracelog::LogTrace(TraceCategory(), tracelog::lvError, "Exception while enumerating %s devices. Error: '%s'",
                           name.c_str(), error.GetDescription());
    } catch (...) {
        tracelog::LogTrace(TraceCategory(), tracelog::lvError, "Unknown error while enumerating %s devices.",
                           name.c_str());
    }
}

CDeviceInfo CTlFactory::FindOnAllTls(const CDeviceInfo &info, bool firstOnly) {
    DeviceInfoList filter;
    filter.push_back(info);
    DeviceInfoList matches;
    const int count = EnumerateDevices(matches, filter);
    if (count == 0)
        TraceAndThrow(
            TraceCategory(),
            RUNTIME_EXCEPTION("No device is available or no device contains the provided device info properties."));
    if (count > 1 && !firstOnly)
        TraceAndThrow(TraceCategory(),
                      RUNTIME_EXCEPTION("Ambiguous device info properties. %i devices match the provided device info "
                                        "properties.",
                                        count));
    return matches.front();
}

bool CTlFactory::IsDeviceAccessible(const CDeviceInfo &info, AccessModeSet modes,
                                    EDeviceAccessiblityInfo *pAccessibilityInfo) {
    const CCall call(*this);
    const CDeviceInfo device = info.IsDeviceClassAvailable() ? info : FindOnAllTls(info, false);
    return CTlHolder(*this, device.GetDeviceClass())->IsDeviceAccessible(device, modes, pAccessibilityInfo);
}

ICorvoDevice *CTlFactory::InternalCreateDevice(const CDeviceInfo &info, const StringList_t &options, bool firstOnly) {
    const CCall call(*this);
    const CDeviceInfo device = info.IsDeviceClassAvailable() ? info : FindOnAllTls(info, firstOnly);
    const CTlHolder layer(*this, device.GetDeviceClass());
    return firstOnly ? layer->CreateFirstDevice(device, options) : layer->CreateDevice(device, options);
}

ICorvoDevice *CTlFactory::CreateDevice(const CDeviceInfo &info) { return InternalCreateDevice(info, {}, false); }

ICorvoDevice *CTlFactory::CreateDevice(const CDeviceInfo &info, const StringList_t &options) {
    return InternalCreateDevice(info, options, false);
}

ICorvoDevice *CTlFactory::CreateFirstDevice(const CDeviceInfo &info) { return InternalCreateDevice(info, {}, true); }

ICorvoDevice *CTlFactory::CreateFirstDevice(const CDeviceInfo &info, const StringList_t &options) {
    return InternalCreateDevice(info, options, true);
}

ICorvoDevice *CTlFactory::CreateDevice(const String_t &fullName) {
    tracelog::LogTrace(TraceCategory(), tracelog::lvWarning,
                       "The function CTlFactory::CreateDevice(const String_t& fullname) is deprecated. Please use "
                       "CTlFactory::CreateDevice(const CDeviceInfo& di) instead.");
    CDeviceInfo info;
    info.SetFullName(fullName);
    return InternalCreateDevice(info, {}, false);
}

void CTlFactory::OnDeviceCreated(ITransportLayer &layer, ICorvoDevice *pDevice) {
    const std::lock_guard<std::mutex> lock(m_lock);
    const auto entry = m_tlMap.find(&layer);
    if (entry == m_tlMap.end()) // terminated meanwhile
        return;
    m_implicitTlRefs.emplace(pDevice, &layer);
    ++entry->second.implicitReferences;
}

void CTlFactory::OnDeviceDestroyed(ICorvoDevice *pDevice) {
    ITransportLayer *pLayer = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        const auto reference = m_implicitTlRefs.find(pDevice);
        if (reference == m_implicitTlRefs.end())
            return;
        pLayer = reference->second;
        m_implicitTlRefs.erase(reference);
    }
    Release(pLayer, &TlEntry::implicitReferences);
}

void CTlFactory::DestroyDevice(ICorvoDevice *pDevice) {
    const CCall call(*this);
    if (pDevice == nullptr)
        return;
    const CTlHolder layer(*this, pDevice);
    layer->DestroyDevice(pDevice);
}

void CTlFactory::Terminate() {
    TlMap layers;
    {
        std::unique_lock<std::mutex> lock(m_lock);
        m_terminated = true;
        m_callEnded.wait(lock, [this] { return m_runningCalls == 0; });
        m_implicitTlRefs.clear();
        layers.swap(m_tlMap);
    }
    for (const auto &[pLayer, entry] : layers)
        entry.pLibrary->Destroy(pLayer);
}

} // namespace Corvo
