#include "Lanvane/AddressRules.h"

#include "Lanvane/AddressText.h"
#include "Lanvane/QIpAddressValidator.h"
#include "Lanvane/QIpNetmaskValidator.h"

#include <QHostAddress>
#include <QStringList>

namespace {

constexpr quint32 FirstMulticast = 0xE0000000;
constexpr quint32 LoopbackNetwork = 127;

bool isIPv4(const QHostAddress &address) { return address.protocol() == QAbstractSocket::IPv4Protocol; }

bool isOneOfADevice(quint32 address) { return address < FirstMulticast && address >> 24 != LoopbackNetwork; }

bool isComplete(QString address) {
    int pos = 0;
    return QIpAddressValidator().validate(address, pos) == QValidator::Acceptable;
}

/// Empty for the host part of a device.
QString problemOf(HostPart part) {
    switch (part) {
    case HostPart::Network:
        return QStringLiteral("The IP address is that of the network itself.");
    case HostPart::Broadcast:
        return QStringLiteral("The IP address is the broadcast address of the network.");
    case HostPart::Device:
        break;
    }
    return {};
}

QString problemWith(const QNetworkAddressEntry &entry, quint32 address) {
    if (!isIPv4(entry.ip()))
        return {};
    if (entry.ip().toIPv4Address() == address)
        return QStringLiteral("The IP address is that of this host.");
    return problemOf(hostPartOf(address, entry.netmask().toIPv4Address()));
}

} // namespace

QString SuggestIPAddress(const QNetworkAddressEntry &entry) {
    if (!isIPv4(entry.ip()))
        return {};
    const quint32 mask = entry.netmask().toIPv4Address();
    const QStringList octets = QHostAddress(entry.ip().toIPv4Address() & mask).toString().split(QLatin1Char('.'));
    QString prefix;
    // The last octet is always the user's.
    for (int i = 0; i < 3 && (mask >> (24 - 8 * i) & 0xFF) == 0xFF; ++i)
        prefix += octets[i] + QLatin1Char('.');
    return prefix;
}

bool isIPAddressValidForDevice(const QString &text) {
    const QHostAddress address(text);
    if (address.isNull() || !isIPv4(address))
        return false;
    const quint32 value = address.toIPv4Address();
    return address != QHostAddress(QHostAddress::LocalHost) && value < FirstMulticast;
}

bool hasDeviceValidnetworkPrefixForAdapter(quint32 ip, quint32 mask, const QNetworkInterface *interface) {
    if (ip == 0 || mask == 0 || !interface)
        return true;
    for (const QNetworkAddressEntry &entry : interface->addressEntries()) {
        const bool fits = isIPv4(entry.ip()) && entry.netmask().toIPv4Address() == mask &&
                          (entry.ip().toIPv4Address() & mask) == (ip & mask);
        if (fits)
            return true;
    }
    return false;
}

HostPart hostPartOf(quint32 address, quint32 mask) {
    constexpr quint32 FewestHostBits = 3; // the networks of two addresses and of one have no other addresses
    if (mask == 0 || ~mask < FewestHostBits)
        return HostPart::Device;
    if ((address & ~mask) == 0)
        return HostPart::Network;
    return (address | mask) == 0xFFFFFFFF ? HostPart::Broadcast : HostPart::Device;
}

QString subnetProblem(const QString &address, const QString &netmask, const QList<QNetworkAddressEntry> &hostEntries) {
    const quint32 value = ipv4AddressFromText(address).toIPv4Address();
    if (!isComplete(address) || !isOneOfADevice(value))
        return {};
    QString problem = problemOf(hostPartOf(value, usableNetmask(netmask)));
    for (const QNetworkAddressEntry &entry : hostEntries) {
        if (problem.isEmpty())
            problem = problemWith(entry, value);
    }
    return problem;
}

QString addressProblem(const QString &address, const QString &netmask, const QList<QNetworkAddressEntry> &hostEntries) {
    if (!isComplete(address))
        return QStringLiteral("The IP address is not complete.");
    if (!isOneOfADevice(ipv4AddressFromText(address).toIPv4Address()))
        return QStringLiteral("The IP address is none that a device can have.");
    return subnetProblem(address, netmask, hostEntries);
}

bool isGatewayValid(const QString &gateway, const QString &netmask) {
    return ipv4AddressFromText(gateway) == QHostAddress(QHostAddress::AnyIPv4) ||
           addressProblem(gateway, netmask, {}).isEmpty();
}
