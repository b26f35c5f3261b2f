#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"

#include "Base/GCException.h"
#include "MinimalCorvoGigETL/GigEPropertyValueComparer.h"
#include "MinimalCorvoGigETL/tools.h"

#include <arpa/inet.h>
#include <cstdlib>

namespace Corvo {

namespace {

constexpr char ADDRESS[] = "Address";
constexpr char IP_ADDRESS[] = "IpAddress";
constexpr char SUBNET_MASK[] = "SubnetMask";
constexpr char DEFAULT_GATEWAY[] = "DefaultGateway";
constexpr char SUBNET_ADDRESS[] = "SubnetAddress";
constexpr char PORT_NR[] = "PortNr";
constexpr char MAC_ADDRESS[] = "MacAddress";
constexpr char INTERFACE[] = "Interface";
constexpr char IP_CONFIG_OPTIONS[] = "IpConfigOptions";
constexpr char IP_CONFIG_CURRENT[] = "IpConfigCurrent";
// The three flags at places that do not depend on how the protocol library packs its bit fields.
constexpr char PORTABLE_IP_CONFIG_OPTIONS[] = "_PortableIpConfigOptions";
constexpr char PORTABLE_IP_CONFIG_CURRENT[] = "_PortableIpConfigCurrent";

enum EPortableIpConfig : unsigned long {
    PortableIpConfig_PersistentIp = 1u << 8,
    PortableIpConfig_Dhcp = 1u << 9,
    PortableIpConfig_AutoIp = 1u << 10
};

bool TestIpConfiguration(const CQuorelGigEDeviceInfo &info, const char *key, EPortableIpConfig bit) {
    String_t value;
    if (!info.GetPropertyValue(key, value))
        throw INVALID_ARGUMENT_EXCEPTION("Device info object doesn't contain information about the IP configuration");
    return (static_cast<unsigned long>(std::strtol(value, nullptr, 10)) & bit) != 0;
}

/// The raw word of the discovery record, whose low bits are the flags.
std::uint32_t RawWord(GEV_IP_CONFIG config) {
    const std::uint32_t reserved = config.Reserved;
    return (config.PersistentIP != 0 ? GEV_IP_CONFIG_PERSISTENT_IP : 0u) |
           (config.DHCP != 0 ? GEV_IP_CONFIG_DHCP : 0u) | (config.LLA != 0 ? GEV_IP_CONFIG_LLA : 0u) | reserved << 3;
}

std::uint32_t PortableWord(GEV_IP_CONFIG config) { return (RawWord(config) & 7) << 8; }

/// A fixed-width text field of the device, which a long text fills without terminator.
template <std::size_t Width> std::string Text(const char (&field)[Width]) { return copyWithMaxLen(field, Width); }

String_t MakerAndModel(const GV_DEVICE_DESCRIPTION &description) {
    return Text(description.ManufacturerName) + " " + Text(description.ModelName);
}

} // namespace

CQuorelGigEDeviceInfo::CQuorelGigEDeviceInfo() {
    SetPortNr(std::to_string(GVCP_PORT));
    SetDeviceClass(GIGE_DEVICE_CLASS);
}

CQuorelGigEDeviceInfo::CQuorelGigEDeviceInfo(const CDeviceInfo &info) : CDeviceInfo(info) {}

bool CQuorelGigEDeviceInfo::IsSubset(const IProperties &subset) const {
    const GigEPropertyValueComparer comparer;
    return Impl().IsSubset(subset, &comparer);
}

String_t CQuorelGigEDeviceInfo::GetAddress() const { return GetStandardProperty(ADDRESS); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetAddress(const String_t &value) {
    SetPropertyValue(ADDRESS, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsAddressAvailable() const { return GetPropertyAvailable(ADDRESS); }

String_t CQuorelGigEDeviceInfo::GetIpAddress() const { return GetStandardProperty(IP_ADDRESS); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetIpAddress(const String_t &value) {
    SetPropertyValue(IP_ADDRESS, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsIpAddressAvailable() const { return GetPropertyAvailable(IP_ADDRESS); }

String_t CQuorelGigEDeviceInfo::GetSubnetMask() const { return GetStandardProperty(SUBNET_MASK); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetSubnetMask(const String_t &value) {
    SetPropertyValue(SUBNET_MASK, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsSubnetMaskAvailable() const { return GetPropertyAvailable(SUBNET_MASK); }

String_t CQuorelGigEDeviceInfo::GetDefaultGateway() const { return GetStandardProperty(DEFAULT_GATEWAY); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetDefaultGateway(const String_t &value) {
    SetPropertyValue(DEFAULT_GATEWAY, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsDefaultGatewayAvailable() const { return GetPropertyAvailable(DEFAULT_GATEWAY); }

String_t CQuorelGigEDeviceInfo::GetSubnetAddress() const { return GetStandardProperty(SUBNET_ADDRESS); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetSubnetAddress(const String_t &value) {
    SetPropertyValue(SUBNET_ADDRESS, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsSubnetAddressAvailable() const { return GetPropertyAvailable(SUBNET_ADDRESS); }

String_t CQuorelGigEDeviceInfo::GetPortNr() const { return GetStandardProperty(PORT_NR); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetPortNr(const String_t &value) {
    SetPropertyValue(PORT_NR, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsPortNrAvailable() const { return GetPropertyAvailable(PORT_NR); }

String_t CQuorelGigEDeviceInfo::GetMacAddress() const { return GetStandardProperty(MAC_ADDRESS); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetMacAddress(const String_t &value) {
    SetPropertyValue(MAC_ADDRESS, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsMacAddressAvailable() const { return GetPropertyAvailable(MAC_ADDRESS); }

String_t CQuorelGigEDeviceInfo::GetInterface() const { return GetStandardProperty(INTERFACE); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetInterface(const String_t &value) {
    SetPropertyValue(INTERFACE, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsInterfaceAvailable() const { return GetPropertyAvailable(INTERFACE); }

String_t CQuorelGigEDeviceInfo::GetIpConfigOptions() const { return GetStandardProperty(IP_CONFIG_OPTIONS); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetIpConfigOptions(const String_t &value) {
    SetPropertyValue(IP_CONFIG_OPTIONS, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsIpConfigOptionsAvailable() const { return GetPropertyAvailable(IP_CONFIG_OPTIONS); }

String_t CQuorelGigEDeviceInfo::GetIpConfigCurrent() const { return GetStandardProperty(IP_CONFIG_CURRENT); }

CQuorelGigEDeviceInfo &CQuorelGigEDeviceInfo::SetIpConfigCurrent(const String_t &value) {
    SetPropertyValue(IP_CONFIG_CURRENT, value);
    return *this;
}

bool CQuorelGigEDeviceInfo::IsIpConfigCurrentAvailable() const { return GetPropertyAvailable(IP_CONFIG_CURRENT); }

bool CQuorelGigEDeviceInfo::IsPersistentIpActive() const {
    return TestIpConfiguration(*this, PORTABLE_IP_CONFIG_CURRENT, PortableIpConfig_PersistentIp);
}

bool CQuorelGigEDeviceInfo::IsDhcpActive() const {
    return TestIpConfiguration(*this, PORTABLE_IP_CONFIG_CURRENT, PortableIpConfig_Dhcp);
}

bool CQuorelGigEDeviceInfo::IsAutoIpActive() const {
    return TestIpConfiguration(*this, PORTABLE_IP_CONFIG_CURRENT, PortableIpConfig_AutoIp);
}

bool CQuorelGigEDeviceInfo::IsPersistentIpSupported() const {
    return TestIpConfiguration(*this, PORTABLE_IP_CONFIG_OPTIONS, PortableIpConfig_PersistentIp);
}

bool CQuorelGigEDeviceInfo::IsDhcpSupported() const {
    return TestIpConfiguration(*this, PORTABLE_IP_CONFIG_OPTIONS, PortableIpConfig_Dhcp);
}

bool CQuorelGigEDeviceInfo::IsAutoIpSupported() const {
    return TestIpConfiguration(*this, PORTABLE_IP_CONFIG_OPTIONS, PortableIpConfig_AutoIp);
}

CQuorelGigEDeviceInfoImpl::CQuorelGigEDeviceInfoImpl(const sockaddr &deviceAddress, const GEV_DISCOVERY_INFO *pInfo,
                                                     const sockaddr &interfaceAddress) {
    Impl().ClearUserProvidedFlag();
    SetFriendlyName(FriendlyName(*pInfo));
    SetFullName(FullName(deviceAddress, *pInfo));
    SetDescription(pInfo->Description);
    SetAddresses(deviceAddress, *pInfo);
    SetInterface(ntoa(interfaceAddress));
    SetDeviceFactory(GetTLInfoImplGigE().GetFullName());
    SetDeviceClass(GetTLInfoImplGigE().GetDeviceClass());
    SetIpConfiguration(*pInfo);
    Impl().ClearAccessFlags();
}

void CQuorelGigEDeviceInfoImpl::SetDescription(const GV_DEVICE_DESCRIPTION &description) {
    SetModelName(Text(description.ModelName));
    SetVendorName(Text(description.ManufacturerName));
    SetSerialNumber(Text(description.SerialNumber));
    SetUserDefinedName(Text(description.UserDefinedName));
    SetDeviceVersion(Text(description.DeviceVersion));
}

void CQuorelGigEDeviceInfoImpl::SetAddresses(const sockaddr &deviceAddress, const GEV_DISCOVERY_INFO &info) {
    const std::uint32_t ip = info.CurrentIP.IPv4.Address;
    const std::uint32_t mask = info.CurrentSubnetMask.IPv4.Address;
    GEV_IP_ADDRESS directedBroadcast{};
    directedBroadcast.IPv4.Address = ~mask | (ip & mask);

    SetAddress(atos(deviceAddress));
    SetIpAddress(ntoa(info.CurrentIP));
    SetPortNr(PortNr(deviceAddress));
    SetMacAddress(MacAddress(info));
    SetSubnetAddress(ntoa(directedBroadcast)); // not the subnet's own address; readers rely on that
    SetDefaultGateway(ntoa(info.DefaultGateway));
    SetSubnetMask(ntoa(info.CurrentSubnetMask));
}

void CQuorelGigEDeviceInfoImpl::SetIpConfiguration(const GEV_DISCOVERY_INFO &info) {
    SetIpConfigCurrent(std::to_string(RawWord(info.IPConfigCurrent)));
    SetPropertyValue(PORTABLE_IP_CONFIG_CURRENT, std::to_string(PortableWord(info.IPConfigCurrent)));
    SetIpConfigOptions(std::to_string(RawWord(info.IPConfigOptions)));
    SetPropertyValue(PORTABLE_IP_CONFIG_OPTIONS, std::to_string(PortableWord(info.IPConfigOptions)));
}

String_t CQuorelGigEDeviceInfoImpl::Identifier(const GEV_DISCOVERY_INFO &info) { return MacAddress(info); }

String_t CQuorelGigEDeviceInfoImpl::MacAddress(const GEV_DISCOVERY_INFO &info) {
    char text[30];
    const int length =
        std::snprintf(text, sizeof text, "%04X%08X", info.DeviceMacAddress.High & 0xFFFF, info.DeviceMacAddress.Low);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof text)
        throw LOGICAL_ERROR_EXCEPTION("Buffer to small");
    return text;
}

String_t CQuorelGigEDeviceInfoImpl::FullName(const sockaddr &deviceAddress, const GEV_DISCOVERY_INFO &info) {
    return MakerAndModel(info.Description) + "#" + MacAddress(info) + "#" + atos(deviceAddress);
}

String_t CQuorelGigEDeviceInfoImpl::FriendlyName(const GEV_DISCOVERY_INFO &info) {
    const String_t userDefinedName = Text(info.Description.UserDefinedName);
    const bool blank = userDefinedName.find_first_not_of(" \t") == String_t::npos;
    return (blank ? MakerAndModel(info.Description) : userDefinedName) + " (" + Text(info.Description.SerialNumber) +
           ")";
}

String_t CQuorelGigEDeviceInfoImpl::PortNr(const sockaddr &deviceAddress) {
    if (deviceAddress.sa_family != AF_INET)
        throw RUNTIME_EXCEPTION("Protocoll not supported!");
    return std::to_string(ntohs(AsSockaddrIn(deviceAddress).sin_port));
}

} // namespace Corvo
