#pragma once

#include <QString>

namespace Corvo {
class CDeviceInfo;
}

/// Text of an IP-configuration word.
/// \param config bit 0 persistent (static) IP, bit 1 DHCP, bit 2 auto IP. A word without bit 2 gives the empty text:
///     every device keeps auto IP as its fallback, so such a word is no real configuration.
/// \param options bit 0: only the first entry.
QString formatIPConfiguration(unsigned int config, unsigned int options);

/// The same for a decimal text, as device infos hold it; null or empty gives the empty text.
QString formatIPConfiguration(const char *configText, unsigned int options);

/// Groups a MAC address in pairs of digits, letter case kept: "02a5c11a2b3c" becomes "02-a5-c1-1a-2b-3c".
/// \param mac any text with exactly twelve hexadecimal digits; all other characters are dropped. Everything else, null
///     included, gives the empty text.
/// \param separator stands between the pairs; null means "-".
QString formatMACAddress(const char *mac, const char *separator);

/// Whether the texts of this device are UTF-8, as those of every GigE device are. False for null.
bool IsUtf8Device(const Corvo::CDeviceInfo *deviceInfo);

/// A property of the info: UTF-8 for a device for which IsUtf8Device holds, else in the local encoding. "N/A" for a
/// missing property; the empty text when \p deviceInfo or \p name is null.
QString GetUtf8Property(const Corvo::CDeviceInfo *deviceInfo, const char *name);
