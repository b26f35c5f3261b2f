#pragma once

#include "MinimalCorvoGigETL/ITransportLayerPrivate.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace Corvo {

class CTlLibHelper;

/// The one place where transport layers and devices are made.
///
/// GetInstance makes the factory on its first call, from the main thread and after CorvoInitialize; the final
/// CorvoTerminate terminates it, and after that every operation throws LogicalErrorException. Devices and layers that
/// exist then are destroyed.
///
/// Any thread may call. One lock guards the tables of layers and devices and is never held while a layer works or is
/// destroyed. A layer lives as long as somebody holds it (CreateTl, ReleaseTl) or one of its devices exists; Terminate
/// destroys it all the same, so who calls a layer directly must have come back by then.
class CTlFactory : public IDeviceFactory, private IDeviceCreationObserver {
public:
    static CTlFactory &GetInstance();
    CTlFactory(const CTlFactory &) = delete;
    CTlFactory &operator=(const CTlFactory &) = delete;

    /// The filter that the environment puts on every enumeration (CORVO_DEVICE_FILTER, read when the factory is made);
    /// null for none.
    static const DeviceInfoList *GetGlobalDeviceFilterInstance();

    /// Lists all layers that can be made, sorted. \returns their number.
    int EnumerateTls(TlInfoList &list);
    /// The layer of a device class, made when there is none yet; to be given back by ReleaseTl. \returns null for a
    /// class that nobody knows.
    ITransportLayer *CreateTl(const CTlInfo &info);
    ITransportLayer *CreateTl(const String_t &deviceClass);
    /// Null is ignored. \throws InvalidArgumentException for a layer that the caller does not hold.
    void ReleaseTl(const ITransportLayer *pLayer);

    // Over all layers. A layer that fails is traced and does not keep the others from being asked.
    int EnumerateDevices(DeviceInfoList &list, bool addToList = false) override;
    int EnumerateDevices(DeviceInfoList &list, const DeviceInfoList &filter, bool addToList = false) override;

    // An info without device class is looked for on all layers.
    bool IsDeviceAccessible(const CDeviceInfo &info, AccessModeSet modes = AccessModeSet(Control),
                            EDeviceAccessiblityInfo *pAccessibilityInfo = nullptr) override;
    ICorvoDevice *CreateDevice(const CDeviceInfo &info) override;
    ICorvoDevice *CreateDevice(const CDeviceInfo &info, const StringList_t &options) override;
    ICorvoDevice *CreateFirstDevice(const CDeviceInfo &info) override;
    ICorvoDevice *CreateFirstDevice(const CDeviceInfo &info, const StringList_t &options) override;
    ICorvoDevice *CreateDevice(const String_t &fullName) override;
    void DestroyDevice(ICorvoDevice *pDevice) override;

    /// Ends the use of the factory for good; a second call does nothing. Waits for the calls of other threads to
    /// return, and so must not be called from a callback that such a call may wait for, as destroying a device waits
    /// for a removal callback that is running.
    void Terminate();

private:
    struct TlEntry {
        const CTlLibHelper *pLibrary = nullptr;
        int references = 0;         ///< held by the application and, for the length of a call, by this factory
        int implicitReferences = 0; ///< one for each existing device
    };
    using TlMap = std::map<ITransportLayer *, TlEntry, std::less<>>;
    class CCall;
    class CTlHolder;

    CTlFactory();
    ~CTlFactory() = default;

    void OnDeviceCreated(ITransportLayer &layer, ICorvoDevice *pDevice) override;
    void OnDeviceDestroyed(ICorvoDevice *pDevice) override;

    /// Drops a reference of either kind; the last one destroys the layer. \returns false when there was none.
    bool Release(const ITransportLayer *pLayer, int TlEntry::*references);
    void EnumerateDevicesOf(const CTlInfo &tlInfo, DeviceInfoList &list, const DeviceInfoList &filter);
    CDeviceInfo FindOnAllTls(const CDeviceInfo &info, bool firstOnly);
    ICorvoDevice *InternalCreateDevice(const CDeviceInfo &info, const StringList_t &options, bool firstOnly);

    // Called with the lock.
    void ThrowIfTerminated() const;
    TlMap::iterator FindTl(const String_t &deviceClass);
    TlMap::iterator MakeTl(const CTlInfo &info);
    TlMap::iterator AddTl(ITransportLayer *pLayer, const CTlLibHelper &library);

    std::unique_ptr<const DeviceInfoList> m_pGlobalDeviceFilter;
    std::mutex m_lock;
    bool m_terminated = false;
    int m_runningCalls = 0;
    std::condition_variable m_callEnded;
    TlMap m_tlMap;
    /// An address is there twice when a new device got that of one whose end is not yet reported.
    std::multimap<ICorvoDevice *, ITransportLayer *> m_implicitTlRefs;
};

} // namespace Corvo
