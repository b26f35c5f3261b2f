#pragma once

#include "MinimalCorvo/Info.h"
#include "gxapi/GvcpMessages.h"

#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <string>

namespace Corvo {

class CQuorelGigEDeviceInfo;

// Conversions between the texts of device infos and the addresses and byte fields of the protocol library.

/// "192.168.1.20:3956". \throws RuntimeException "Protocoll not supported!" unless the address is IPv4.
String_t atos(const sockaddr &address);
/// Reads "ADDRESS" or "ADDRESS:PORT". The address is what inet_addr makes of at most 63 characters before the first
/// colon, 255.255.255.255 for anything that is none (a null text, too); the port is 0 when absent. Never fails.
void stoa(const char *text, sockaddr &address);
/// Dotted quad of the IPv4 part, which is in host order.
String_t ntoa(const GEV_IP_ADDRESS &address);
/// Dotted quad. \p address must be IPv4.
String_t ntoa(const sockaddr &address);

/// The characters of a fixed-width field up to its first zero, at most \p maxLength; empty for a null field.
std::string copyWithMaxLen(const char *field, std::size_t maxLength);
/// Converts 32-bit words from network to host order. \param size in bytes, a multiple of 4.
void NtohlBlockInPlace(void *block, std::size_t size);

/// An IPv4 address seen as the general type, which has the same size, and back.
sockaddr AsSockaddr(const sockaddr_in &address);
sockaddr_in AsSockaddrIn(const sockaddr &address);

/// The device's address: "Address", else "IpAddress" and "PortNr", both of which must be there then.
sockaddr Address(const CQuorelGigEDeviceInfo &info);
sockaddr_in Address_in(const CQuorelGigEDeviceInfo &info);
/// The address of the host adapter that the device was found on.
sockaddr Interface(const CQuorelGigEDeviceInfo &info);
sockaddr_in Interface_in(const CQuorelGigEDeviceInfo &info);

/// Whether a URL of a device register begins with "local", in upper or lower case.
bool IsLocalUrl(const String_t &url);
/// Splits at the first ":". \returns false, and leaves the outputs alone, when there is none.
bool SplitUrl(const String_t &url, String_t &scheme, String_t &rest);
/// Splits "local:NAME.EXT;ADDRESS;LENGTH", or the same without the scheme.
/// \param fileName receives NAME. \param extension receives ".EXT", from the last dot before the first ";".
/// \param address, length are hexadecimal numbers in the text. \returns false, and leaves the outputs alone, when the
/// text has another form or a number does not fit 32 bits.
bool SplitLocalUrl(const String_t &url, String_t &fileName, String_t &extension, unsigned int &address,
                   std::size_t &length);

/// Heartbeat timeout of a control channel in ms: the environment variable CORVO_GIGE_HEARTBEAT, read as a decimal
/// number, if that is greater than 0, else 300000. Of larger numbers the low 32 bits count, so the result may be 0.
std::uint32_t GetDefaultHeartbeatTimeout();

/// Describes the GigE transport layer; made on the first call, for the life of the process.
const CTlInfo &GetTLInfoImplGigE();

} // namespace Corvo
