#pragma once

#include "MinimalCorvo/DeviceInfo.h"

#include <sys/socket.h>

struct GEV_DISCOVERY_INFO;
struct GV_DEVICE_DESCRIPTION;

namespace Corvo {

/// Device class of GigE Vision cameras and of their transport layer.
constexpr char GIGE_DEVICE_CLASS[] = "QuorelGigE";

/// Describes a GigE Vision camera; a value like every info, and all of it lives in the properties. Copied into a
/// CDeviceInfo, as a DeviceInfoList does, nothing is lost but the comparison of IsSubset.
///
/// Getters return "N/A" for a missing property, setters store the text as it stands and return the object itself.
class CQuorelGigEDeviceInfo : public CDeviceInfo {
public:
    /// A user-provided info of device class "QuorelGigE" and port "3956".
    CQuorelGigEDeviceInfo();
    /// A view, by copy, of any device info.
    CQuorelGigEDeviceInfo(const CDeviceInfo &info);

    /// Compares addresses by value, see GigEPropertyValueComparer.
    bool IsSubset(const IProperties &subset) const override;

    /// Address and UDP port that the device answered from: "192.168.1.20:3956".
    String_t GetAddress() const;
    CQuorelGigEDeviceInfo &SetAddress(const String_t &value);
    bool IsAddressAvailable() const;

    String_t GetIpAddress() const;
    CQuorelGigEDeviceInfo &SetIpAddress(const String_t &value);
    bool IsIpAddressAvailable() const;

    String_t GetSubnetMask() const;
    CQuorelGigEDeviceInfo &SetSubnetMask(const String_t &value);
    bool IsSubnetMaskAvailable() const;

    String_t GetDefaultGateway() const;
    CQuorelGigEDeviceInfo &SetDefaultGateway(const String_t &value);
    bool IsDefaultGatewayAvailable() const;

    /// The directed broadcast address of the device's subnet, in spite of the name.
    String_t GetSubnetAddress() const;
    CQuorelGigEDeviceInfo &SetSubnetAddress(const String_t &value);
    bool IsSubnetAddressAvailable() const;

    /// UDP port in decimal.
    String_t GetPortNr() const;
    CQuorelGigEDeviceInfo &SetPortNr(const String_t &value);
    bool IsPortNrAvailable() const;

    /// 12 upper-case hexadecimal digits without separators.
    String_t GetMacAddress() const;
    CQuorelGigEDeviceInfo &SetMacAddress(const String_t &value);
    bool IsMacAddressAvailable() const;

    /// Address of the host adapter on which the device answered; readers accept a port behind a colon.
    String_t GetInterface() const;
    CQuorelGigEDeviceInfo &SetInterface(const String_t &value);
    bool IsInterfaceAvailable() const;

    /// Supported IP configuration modes: the raw word in decimal.
    String_t GetIpConfigOptions() const;
    CQuorelGigEDeviceInfo &SetIpConfigOptions(const String_t &value);
    bool IsIpConfigOptionsAvailable() const;

    /// Enabled IP configuration modes: the raw word in decimal.
    String_t GetIpConfigCurrent() const;
    CQuorelGigEDeviceInfo &SetIpConfigCurrent(const String_t &value);
    bool IsIpConfigCurrentAvailable() const;

    // Of an info that an enumeration made. \throws InvalidArgumentException for one without IP configuration.
    bool IsPersistentIpActive() const;
    bool IsDhcpActive() const;
    bool IsAutoIpActive() const;
    bool IsPersistentIpSupported() const;
    bool IsDhcpSupported() const;
    bool IsAutoIpSupported() const;
};

/// The info made of one discovery acknowledge; not user provided.
class CQuorelGigEDeviceInfoImpl : public CQuorelGigEDeviceInfo {
public:
    /// \param deviceAddress sender of the acknowledge. \param pInfo as Gx::Enumerator delivers it.
    /// \param interfaceAddress of the host adapter that received it.
    /// \throws RuntimeException "Protocoll not supported!" unless the device's address is IPv4.
    CQuorelGigEDeviceInfoImpl(const sockaddr &deviceAddress, const GEV_DISCOVERY_INFO *pInfo,
                              const sockaddr &interfaceAddress);
    CQuorelGigEDeviceInfoImpl(const CQuorelGigEDeviceInfoImpl &) = delete;
    CQuorelGigEDeviceInfoImpl &operator=(const CQuorelGigEDeviceInfoImpl &) = delete;

    /// What tells devices apart: the MAC address.
    static String_t Identifier(const GEV_DISCOVERY_INFO &info);
    static String_t MacAddress(const GEV_DISCOVERY_INFO &info);
    /// "MANUFACTURER MODEL#MAC#ADDRESS:PORT"
    static String_t FullName(const sockaddr &deviceAddress, const GEV_DISCOVERY_INFO &info);
    /// "NAME (SERIAL)" with the user-defined name, or "MANUFACTURER MODEL (SERIAL)" when that is blank.
    static String_t FriendlyName(const GEV_DISCOVERY_INFO &info);
    /// \throws RuntimeException "Protocoll not supported!" unless the address is IPv4.
    static String_t PortNr(const sockaddr &deviceAddress);

private:
    void SetDescription(const GV_DEVICE_DESCRIPTION &description);
    void SetAddresses(const sockaddr &deviceAddress, const GEV_DISCOVERY_INFO &info);
    void SetIpConfiguration(const GEV_DISCOVERY_INFO &info);
};

} // namespace Corvo
