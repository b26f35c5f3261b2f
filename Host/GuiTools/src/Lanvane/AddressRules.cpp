#include "Lanvane/AddressRules.h"

#include <QHostAddress>
#include <QStringList>

namespace {

bool isIPv4(const QHostAddress &address) { return address.protocol() == QAbstractSocket::IPv4Protocol; }

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
    constexpr quint32 FirstMulticast = 0xE0000000;
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
