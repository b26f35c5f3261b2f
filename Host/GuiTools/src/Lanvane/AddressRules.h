#pragma once

#include <QList>
#include <QNetworkInterface>
#include <QString>

/// The network prefix of an adapter as far as it consists of whole octets, with a dot at its end, so that the user
/// types the rest: "192.168.1." for 192.168.1.10/255.255.255.0. Empty for an entry without IPv4 address.
QString SuggestIPAddress(const QNetworkAddressEntry &entry);

/// Whether a text is an IPv4 address that a device may have at all: not 127.0.0.1, and below 224.0.0.0.
bool isIPAddressValidForDevice(const QString &text);

/// Whether a device's address fits an adapter: some IPv4 entry of it has exactly the same netmask and network. True as
/// well when the address, the mask (both host order) or the interface is missing: there is nothing to judge then.
bool hasDeviceValidnetworkPrefixForAdapter(quint32 ip, quint32 mask, const QNetworkInterface *interface);

/// What the host bits of an address make of it. \param mask in host order, like the address; 0 when none is known.
enum class HostPart { Device, Network, Broadcast };
HostPart hostPartOf(quint32 address, quint32 mask);

/// Why no device may have an address although it is one of a device: it is the network's, its broadcast address or, on
/// any adapter, this host's. Empty when it may, and for a text that is no address of a device.
///
/// \param netmask that goes with it, dotted or a prefix length; ignored while it is not usable.
/// \param hostEntries addresses of the host's adapters, whose networks and broadcast addresses are refused, too.
QString subnetProblem(const QString &address, const QString &netmask, const QList<QNetworkAddressEntry> &hostEntries);

/// The same, and for every other text that cannot be a device's address why not.
QString addressProblem(const QString &address, const QString &netmask, const QList<QNetworkAddressEntry> &hostEntries);

/// Whether a text can be a device's gateway: empty, 0.0.0.0, or the address of a host.
bool isGatewayValid(const QString &gateway, const QString &netmask);
