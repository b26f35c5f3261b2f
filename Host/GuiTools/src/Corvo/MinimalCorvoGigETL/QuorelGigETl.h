#pragma once

#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "MinimalCorvoGigETL/TransportLayerBase.h"
#include "MinimalCorvoGigETL/XmlFileProvider.h"

#include <sys/socket.h>

namespace Corvo {

/// The transport layer of GigE Vision cameras. Any thread may call; each call works on its own, no list of devices is
/// kept between calls.
///
/// A caller-made info that holds "IpAddress" is looked for by unicast at that address, so that cameras behind a router
/// can be reached.
class CQuorelGigETl : public CTransportLayerBase<IGigETransportLayer>, public XmlFileProviderPrivateImpl {
public:
    ~CQuorelGigETl() override;

    CTlInfo GetTlInfo() const override;

    int EnumerateAllDevices(DeviceInfoList &list, bool addToList = false) override;
    void ForceIp(const String_t &macAddress, const String_t &ipAddress, const String_t &subnetMask,
                 const String_t &defaultGateway) override;
    bool BroadcastIpConfiguration(const String_t &macAddress, bool enablePersistentIp, bool enableDhcp,
                                  const String_t &ipAddress, const String_t &subnetMask, const String_t &defaultGateway,
                                  const String_t &userDefinedName) override;
    void RestartIpConfiguration(const String_t &macAddress) override;
    bool AnnounceRemoteDevice(const String_t &ipAddress, CDeviceInfo *pInfo = nullptr) override;
    bool RenounceRemoteDevice(const String_t &ipAddress) override;
    String_t GetLastHostProblem() const override;

protected:
    String_t InternalGetDeviceClass() const override;
    /// \returns the size of the whole list, not what was added.
    int InternalEnumerateDevices(DeviceInfoList &list) override;
    bool InternalIsDeviceAccessible(const CDeviceInfo &info, const AccessModeSet &modes,
                                    EDeviceAccessiblityInfo *pAccessibilityInfo) override;
    bool InternalIsSubset(const CDeviceInfo &device, const CDeviceInfo &entry) const override;
    bool InternalNeedsTlSpecificDeviceDiscovery(const CDeviceInfo &info) const override;
    CDeviceInfo InternalDoTlSpecificDeviceDiscovery(const CDeviceInfo &info) override;
    ICorvoDevice *CreateDeviceImpl(const CDeviceInfo &info, const StringList_t &options) override;
    void DestroyDeviceImpl(ICorvoDevice *pDevice) override;

private:
    /// \param target null for a broadcast on all adapters. \returns the growth of the list.
    int DoDeviceEnumeration(DeviceInfoList &list, bool broadcastAcknowledge, const sockaddr *target);
    int EnumerateAnnouncedDevices(DeviceInfoList &list);
    /// Appends what \p target does not hold yet. \returns the size of the whole target.
    static int MergeDeviceInfoList(DeviceInfoList &target, const DeviceInfoList &source);

    GenApi::CLock m_announcedLock;
    DeviceInfoList m_announcedDevices;
};

} // namespace Corvo
