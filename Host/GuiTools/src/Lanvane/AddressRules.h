#pragma once

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
