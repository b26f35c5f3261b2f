#pragma once

#include "MinimalCorvoGigETL/ITransportLayer.h"

namespace Corvo {

/// The transport layer of GigE Vision cameras.
///
/// MAC addresses are 12 hexadecimal digits without separators, as the property "MacAddress" holds them; a text of any
/// other form is not refused but addresses some other MAC. IP addresses are dotted quads, a port behind a colon is
/// ignored; a text that is none is sent as 255.255.255.255. Validation is the caller's duty.
class IGigETransportLayer : public ITransportLayer {
public:
    /// Finds all devices and lets them answer by broadcast, so that those in foreign subnets are heard too. Neither
    /// filtered nor sorted. Takes 250 ms. \returns the number of infos added.
    virtual int EnumerateAllDevices(DeviceInfoList &list, bool addToList = false) = 0;

    /// Gives the device a temporary address that lasts until its next restart. Waits up to 3 s for the acknowledge.
    /// \throws RuntimeException when nobody acknowledges or the device refuses.
    virtual void ForceIp(const String_t &macAddress, const String_t &ipAddress, const String_t &subnetMask,
                         const String_t &defaultGateway) = 0;

    /// Stores how the device gets its address at its next restart; link-local addressing is always enabled. Waits up to
    /// 3 s for the acknowledge.
    /// \param ipAddress, subnetMask, defaultGateway sent only with \p enablePersistentIp.
    /// \param userDefinedName its first 16 bytes are sent.
    /// \returns false on any failure, such as a device that does not know this command.
    virtual bool BroadcastIpConfiguration(const String_t &macAddress, bool enablePersistentIp, bool enableDhcp,
                                          const String_t &ipAddress, const String_t &subnetMask,
                                          const String_t &defaultGateway, const String_t &userDefinedName) = 0;

    /// Makes the device give up its address and obtain one anew as configured. Returns before the device has done so.
    /// \throws RuntimeException when the command cannot be sent.
    virtual void RestartIpConfiguration(const String_t &macAddress) = 0;

    /// Always false: announcing devices is not supported. \param pInfo ignored.
    virtual bool AnnounceRemoteDevice(const String_t &ipAddress, CDeviceInfo *pInfo = nullptr) = 0;
    /// \returns whether a device of that address had been announced.
    virtual bool RenounceRemoteDevice(const String_t &ipAddress) = 0;

    /// What this host lacked for the calling thread's last discovery or accessibility test, as in "Too many open
    /// files"; empty when nothing. A discovery then finds too little, and a test gives Accessibility_Unknown.
    virtual String_t GetLastHostProblem() const = 0;

protected:
    ~IGigETransportLayer() = default;
};

} // namespace Corvo
