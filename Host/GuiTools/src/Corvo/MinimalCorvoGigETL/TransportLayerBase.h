#pragma once

#include "GenApi/Synch.h"
#include "MinimalCorvoGigETL/ITransportLayerPrivate.h"

#include <set>

namespace Corvo {

/// What every transport layer does alike: filtering, sorting, resolving of caller-made infos, keeping of devices.
///
/// \tparam Interface the layer's public interface, derived from ITransportLayer.
///
/// Any thread may call. One lock guards the set of devices and the parameter node map and is never held while the
/// network is used or a device is made or destroyed. Devices that still exist at the layer's end must be destroyed by
/// the derived class's destructor (DestroyAllDevices).
template <class Interface> class CTransportLayerBase : public Interface, public ITransportLayerPrivate {
public:
    CTransportLayerBase();
    CTransportLayerBase(const CTransportLayerBase &) = delete;
    CTransportLayerBase &operator=(const CTransportLayerBase &) = delete;
    virtual ~CTransportLayerBase();

    int EnumerateDevices(DeviceInfoList &list, bool addToList = false) override;
    int EnumerateDevices(DeviceInfoList &list, const DeviceInfoList &filter, bool addToList = false) override;
    bool IsDeviceAccessible(const CDeviceInfo &info, AccessModeSet modes = AccessModeSet(Control),
                            EDeviceAccessiblityInfo *pAccessibilityInfo = nullptr) override;
    ICorvoDevice *CreateDevice(const CDeviceInfo &info) override;
    ICorvoDevice *CreateDevice(const CDeviceInfo &info, const StringList_t &options) override;
    ICorvoDevice *CreateFirstDevice(const CDeviceInfo &info) override;
    ICorvoDevice *CreateFirstDevice(const CDeviceInfo &info, const StringList_t &options) override;
    ICorvoDevice *CreateDevice(const String_t &fullName) override;
    void DestroyDevice(ICorvoDevice *pDevice) override;
    GenApi::INodeMap *GetNodeMap() override;
    void SetDeviceCreationObserver(IDeviceCreationObserver *pObserver) override;

protected:
    /// Whether the environment (CORVO_USE_TL, read once) leaves this layer in use.
    bool IsTLEnabled() const;
    /// The one device that a caller-made info means. \param firstOnly takes the first of several.
    /// \throws RuntimeException when there is none, or several and \p firstOnly is false.
    void FindDevice(const CDeviceInfo &info, CDeviceInfo &result, bool firstOnly);
    /// Appends to \p out what passes the filter, or throws and appends nothing. \returns the number appended.
    int InternalApplyFilter(const DeviceInfoList &source, const DeviceInfoList &filter, DeviceInfoList &out) const;
    bool InternalMatchDeviceClass(const CDeviceInfo &info) const;
    void DestroyAllDevices();

    virtual String_t InternalGetDeviceClass() const = 0;
    /// Appends what is found now. \returns a count, see the derived class.
    virtual int InternalEnumerateDevices(DeviceInfoList &list) = 0;
    /// \param pAccessibilityInfo may be null.
    virtual bool InternalIsDeviceAccessible(const CDeviceInfo &info, const AccessModeSet &modes,
                                            EDeviceAccessiblityInfo *pAccessibilityInfo) = 0;
    /// Whether the device has all properties of the filter entry.
    virtual bool InternalIsSubset(const CDeviceInfo &device, const CDeviceInfo &entry) const = 0;
    /// Whether a caller-made info is resolved by InternalDoTlSpecificDeviceDiscovery instead of an enumeration.
    virtual bool InternalNeedsTlSpecificDeviceDiscovery(const CDeviceInfo &info) const = 0;
    virtual CDeviceInfo InternalDoTlSpecificDeviceDiscovery(const CDeviceInfo &info) = 0;
    /// Makes the object of an enumerated device.
    virtual ICorvoDevice *CreateDeviceImpl(const CDeviceInfo &info, const StringList_t &options) = 0;
    virtual void DestroyDeviceImpl(ICorvoDevice *pDevice) = 0;

private:
    int EnumerateUnfiltered(DeviceInfoList &list);
    bool IsComparable(const CDeviceInfo &entry) const;
    int EnumerateFiltered(DeviceInfoList &list, const DeviceInfoList &filter);
    void CheckDeviceClass(const CDeviceInfo &info) const;
    ICorvoDevice *MakeDevice(const CDeviceInfo &info, const StringList_t &options, bool firstOnly);
    void KeepDevice(ICorvoDevice *pDevice);
    /// \returns false when the device is not one of this layer.
    bool ForgetDevice(ICorvoDevice *pDevice);

    const String_t m_enablingFilter;
    IDeviceCreationObserver *m_pObserver = nullptr;
    GenApi::CLock m_lock;
    std::set<ICorvoDevice *> m_devices;
    GenApi::INodeMap *m_pNodeMap = nullptr;
};

} // namespace Corvo
