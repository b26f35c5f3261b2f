#include "MinimalCorvoGigETL/QuorelGigETl.h"

#include "Base/GCException.h"
#include "MinimalCorvoGigETL/ControlChannelPtr.h"
#include "MinimalCorvoGigETL/EnumCallee.h"
#include "MinimalCorvoGigETL/GigEDevice.h"
#include "MinimalCorvoGigETL/GigETlTrace.h"
#include "MinimalCorvoGigETL/GxStatus2Msg.h"
#include "MinimalCorvoGigETL/GxStatusException.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "MinimalCorvoGigETL/tools.h"
#include "gxapi/ForceIp.h"
#include "gxapi/SetIpConfiguration.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sstream>

namespace Corvo {

namespace {

constexpr std::uint32_t BroadcastTimeout_ms = 250;
constexpr std::uint32_t UnicastTimeout_ms = 1250;
constexpr std::uint32_t ConfigurationTimeout_ms = 3000;
constexpr std::uint32_t ProbeLifetime_ms = 2000;

using MacBytes = std::array<std::uint8_t, 6>;

/// The text as one hexadecimal number up to the first character that is none: separators are not understood, and a
/// malformed text is no error.
MacBytes MacFromString(const String_t &text) {
    std::istringstream stream(text.c_str());
    stream.imbue(std::locale::classic());
    std::uint64_t number = 0;
    stream >> std::hex >> number;
    MacBytes mac;
    for (auto byte = mac.rbegin(); byte != mac.rend(); ++byte, number >>= 8)
        *byte = static_cast<std::uint8_t>(number);
    return mac;
}

sockaddr AddressFromString(const String_t &text) {
    sockaddr address{};
    stoa(text, address);
    return address;
}

thread_local String_t lastHostProblem;

/// Reads who holds a device, over a control channel without privilege.
GXSTATUS ReadPrivilege(const CQuorelGigEDeviceInfo &info, std::uint32_t &privilege) {
    constexpr std::uint32_t address = GEV_REG_CONTROL_CHANNEL_PRIVILEGE;
    ControlChannelPtr channel;
    const GXSTATUS status = OpenControlChannel(info, 0, &channel, ProbeLifetime_ms);
    return status == GX_SUCCESS ? channel->ReadReg(&address, &privilege, 1) : status;
}

EDeviceAccessiblityInfo AccessibilityOf(GXSTATUS status, std::uint32_t privilege) {
    if (status == GX_E_GEV_ACCESS_DENIED)
        return Accessibility_OpenedExclusively;
    if (IsHostProblem(status) || status == GX_E_ABORTED) // which says nothing about the device
        return Accessibility_Unknown;
    if (status != GX_SUCCESS)
        return Accessibility_NotReachable;
    switch (privilege & 3) {
    case 0:
        return Accessibility_Ok;
    case GEV_CONTROL_ACCESS:
        return Accessibility_Opened;
    default: // exclusive: such a device denies the probe, so this says nothing definite
        return Accessibility_Unknown;
    }
}

} // namespace

CQuorelGigETl::~CQuorelGigETl() { DestroyAllDevices(); }

String_t CQuorelGigETl::GetLastHostProblem() const { return lastHostProblem; }

CTlInfo CQuorelGigETl::GetTlInfo() const { return GetTLInfoImplGigE(); }

String_t CQuorelGigETl::InternalGetDeviceClass() const { return GIGE_DEVICE_CLASS; }

int CQuorelGigETl::EnumerateAllDevices(DeviceInfoList &list, bool addToList) {
    if (!addToList)
        list.clear();
    if (!IsTLEnabled())
        return 0;
    const std::size_t initialSize = list.size();
    DoDeviceEnumeration(list, true, nullptr);
    DeviceInfoList announced;
    EnumerateAnnouncedDevices(announced);
    MergeDeviceInfoList(list, announced);
    return static_cast<int>(list.size() - initialSize);
}

int CQuorelGigETl::InternalEnumerateDevices(DeviceInfoList &list) {
    DoDeviceEnumeration(list, false, nullptr);
    DeviceInfoList announced;
    EnumerateAnnouncedDevices(announced);
    return MergeDeviceInfoList(list, announced);
}

int CQuorelGigETl::DoDeviceEnumeration(DeviceInfoList &list, bool broadcastAcknowledge, const sockaddr *target) {
    const std::size_t initialSize = list.size();
    EnumCallee callee(list);
    const GXSTATUS status = Gx::Enumerator::Discover(
        &callee, target != nullptr ? UnicastTimeout_ms : BroadcastTimeout_ms,
        broadcastAcknowledge ? Gx::Enumerator::FlagBroadcastAcknowledge : Gx::Enumerator::FlagDefault, target);
    const bool hasFailed =
        GxFailed(status) && status != GxStatusFromErrno(ENODEV); // a host without adapters finds none
    lastHostProblem = hasFailed ? HostProblemText(status) : String_t();
    if (GxFailed(status) && target == nullptr) {
        tracelog::LogTrace(GigETlTraceCategory(), tracelog::lvError, "Failed to enumerate GigE devices: %s",
                           GxStatusText(status).c_str());
        return 0;
    }
    return static_cast<int>(list.size() - initialSize);
}

int CQuorelGigETl::EnumerateAnnouncedDevices(DeviceInfoList &list) {
    const GenApi::AutoLock lock(m_announcedLock);
    const std::size_t initialSize = list.size();
    list.reserve(initialSize + m_announcedDevices.size());
    for (const CDeviceInfo &announced : m_announcedDevices) {
        const sockaddr address = AddressFromString(CQuorelGigEDeviceInfo(announced).GetAddress());
        if (DoDeviceEnumeration(list, false, &address) > 0)
            tracelog::LogTrace(GigETlTraceCategory(), tracelog::lvInfo, "Adding user provided device: '%s'",
                               list.back().GetFullName().c_str());
    }
    return static_cast<int>(list.size() - initialSize);
}

int CQuorelGigETl::MergeDeviceInfoList(DeviceInfoList &target, const DeviceInfoList &source) {
    for (const CDeviceInfo &info : source) {
        if (std::find(target.begin(), target.end(), info) == target.end())
            target.push_back(info);
    }
    return static_cast<int>(target.size());
}

bool CQuorelGigETl::AnnounceRemoteDevice(const String_t & /*ipAddress*/, CDeviceInfo * /*pInfo*/) {
    const GenApi::AutoLock lock(m_announcedLock);
    return false;
}

bool CQuorelGigETl::RenounceRemoteDevice(const String_t &ipAddress) {
    const GenApi::AutoLock lock(m_announcedLock);
    const auto found =
        std::find_if(m_announcedDevices.begin(), m_announcedDevices.end(), [&](const CDeviceInfo &announced) {
            return CQuorelGigEDeviceInfo(announced).GetIpAddress() == ipAddress;
        });
    if (found == m_announcedDevices.end())
        return false;
    m_announcedDevices.erase(found);
    return true;
}

bool CQuorelGigETl::InternalIsDeviceAccessible(const CDeviceInfo &info, const AccessModeSet &modes,
                                               EDeviceAccessiblityInfo *pAccessibilityInfo) {
    std::uint32_t privilege = 0;
    const GXSTATUS status = ReadPrivilege(info, privilege);
    const EDeviceAccessiblityInfo accessibility = AccessibilityOf(status, privilege);
    lastHostProblem = IsHostProblem(status) ? HostProblemText(status) : String_t();
    if (pAccessibilityInfo != nullptr)
        *pAccessibilityInfo = accessibility;
    if (accessibility == Accessibility_Opened)
        return !modes.test(Control) && !modes.test(Exclusive);
    return accessibility == Accessibility_Ok;
}

ICorvoDevice *CQuorelGigETl::CreateDeviceImpl(const CDeviceInfo &info, const StringList_t & /*options*/) {
    return CreateGigEDevice(info).release();
}

void CQuorelGigETl::DestroyDeviceImpl(ICorvoDevice *pDevice) { static_cast<CGigEDevice *>(pDevice)->Delete(); }

bool CQuorelGigETl::InternalIsSubset(const CDeviceInfo &device, const CDeviceInfo &entry) const {
    return CQuorelGigEDeviceInfo(device).IsSubset(entry);
}

bool CQuorelGigETl::InternalNeedsTlSpecificDeviceDiscovery(const CDeviceInfo &info) const {
    return info.IsUserProvided() && CQuorelGigEDeviceInfo(info).IsIpAddressAvailable();
}

CDeviceInfo CQuorelGigETl::InternalDoTlSpecificDeviceDiscovery(const CDeviceInfo &info) {
    CQuorelGigEDeviceInfo wanted(info);
    if (!wanted.IsIpAddressAvailable())
        throw RUNTIME_EXCEPTION("Internal error. Unicast discovery failed. No IP address supplied by user.");
    if (!wanted.IsPortNrAvailable())
        wanted.SetPortNr(CQuorelGigEDeviceInfo().GetPortNr());
    const sockaddr address = Address(wanted);
    DeviceInfoList found;
    found.reserve(1);
    if (DoDeviceEnumeration(found, false, &address) == 0)
        throw RUNTIME_EXCEPTION("Failed to discover GigE device '%s:%s'", wanted.GetIpAddress().c_str(),
                                wanted.GetPortNr().c_str());
    return found.front();
}

void CQuorelGigETl::ForceIp(const String_t &macAddress, const String_t &ipAddress, const String_t &subnetMask,
                            const String_t &defaultGateway) {
    const MacBytes mac = MacFromString(macAddress);
    const sockaddr ip = AddressFromString(ipAddress);
    const sockaddr mask = AddressFromString(subnetMask);
    const sockaddr gateway = AddressFromString(defaultGateway);
    THROW_IF_GX_FAILED(Gx::ForceIp(mac.data(), &ip, &mask, &gateway, 0),
                       "Failed to issue the ForceIp command. Some possible reasons are: Invalid IP address; device is "
                       "controlled by another application.: ");
}

void CQuorelGigETl::RestartIpConfiguration(const String_t &macAddress) {
    ForceIp(macAddress, "0.0.0.0", "0.0.0.0", "0.0.0.0");
}

bool CQuorelGigETl::BroadcastIpConfiguration(const String_t &macAddress, bool enablePersistentIp, bool enableDhcp,
                                             const String_t &ipAddress, const String_t &subnetMask,
                                             const String_t &defaultGateway, const String_t &userDefinedName) {
    const MacBytes mac = MacFromString(macAddress);
    constexpr std::size_t NAME_BYTES = sizeof(GV_DEVICE_DESCRIPTION::UserDefinedName);
    char name[NAME_BYTES + 1] = {};
    std::copy_n(userDefinedName.c_str(), std::min(userDefinedName.size(), NAME_BYTES), name);
    GEV_IP_CONFIG modes{};
    modes.PersistentIP = enablePersistentIp ? 1 : 0;
    modes.DHCP = enableDhcp ? 1 : 0;
    modes.LLA = 1; // cannot be switched off
    const sockaddr ip = AddressFromString(ipAddress);
    const sockaddr mask = AddressFromString(subnetMask);
    const sockaddr gateway = AddressFromString(defaultGateway);
    const auto sent = [&](const sockaddr &address) { return enablePersistentIp ? &address : nullptr; };
    return Gx::SetIpConfiguration(mac.data(), modes, sent(ip), sent(mask), sent(gateway), name, true,
                                  ConfigurationTimeout_ms) == GX_SUCCESS;
}

} // namespace Corvo
