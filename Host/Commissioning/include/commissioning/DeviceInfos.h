#pragma once

#include "MinimalCorvo/Container.h"
#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Inventory.h"

#include <optional>
#include <string>

namespace commissioning {

// Keys of device infos.
constexpr char PropertyMac[] = "MacAddress";
constexpr char PropertyInterface[] = "Interface";        ///< several host addresses are joined by ";"
constexpr char PropertyInterfaceName[] = "IF_~_Name";    ///< names of those adapters, joined by ";"
constexpr char PropertyVerdict[] = "DEV_~_Accessible";   ///< EDeviceAccessiblityInfo as a decimal number
constexpr char PropertyVerdictReason[] = "DEV_~_Reason"; ///< what the host lacked, when that made it unknown
constexpr char PropertyHolder[] = "DEV_~_Holder";        ///< "ADDRESS:PORT" of who controls it, where it tells
constexpr char PropertyStoredAddress[] = "GevPersistentIPAddress";
constexpr char PropertyStoredMask[] = "GevPersistentSubnetMask";
constexpr char PropertyStoredGateway[] = "GevPersistentDefaultGateway";

/// Empty when there is none.
Corvo::String_t propertyOf(const Corvo::IProperties &properties, const char *name);

/// Whether a value is one of the parts of a multi-part value.
bool isPartOf(const Corvo::String_t &multipartValue, const Corvo::String_t &value, const Corvo::String_t &separator);
/// Appends the values of \p from to the multi-part values of \p to, for the keys that both have.
/// \param allowDuplicates appends values that are parts already. \returns number of values appended.
std::size_t mergeProperties(Corvo::IProperties &to, const Corvo::IProperties &from, const char *separator,
                            const Corvo::StringList_t &names, bool allowDuplicates);

/// The verdict stored in a device info; anything that is no number from 0 to 4 counts as unknown.
Corvo::EDeviceAccessiblityInfo verdictOf(const Corvo::CDeviceInfo &device);
/// The mode that a word of enabled modes stands for: static before DHCP before link-local.
std::optional<Mode> modeOf(std::uint32_t word);
std::optional<Mode> modeOf(const Corvo::CQuorelGigEDeviceInfo &device);
/// The word of a mode (GEV_IP_CONFIG), which always has link-local: it is every camera's last resort.
std::uint32_t wordOf(Mode mode);
Address currentAddressOf(const Corvo::CQuorelGigEDeviceInfo &device);
std::optional<StoredAddresses> storedAddressesOf(const Corvo::CDeviceInfo &device);
void setStoredAddresses(Corvo::CDeviceInfo &device, const StoredAddresses &stored);
bool operator==(const StoredAddresses &a, const StoredAddresses &b);

/// The first with that MAC, compared without regard to case; null when there is none.
Corvo::CDeviceInfo *findByMac(Corvo::DeviceInfoList &devices, const std::string &mac);

Camera cameraOf(const Corvo::CQuorelGigEDeviceInfo &device);
/// What a search would have told of a camera that only lanvane-listen has heard; without a verdict.
Corvo::CQuorelGigEDeviceInfo infoOf(const Camera &camera);

} // namespace commissioning
