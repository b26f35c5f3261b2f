#include "Lanvane/NetworkAdapter.h"

#include "commissioning/Survey.h"

#include <algorithm>

namespace {

constexpr quint32 LINK_LOCAL_NETWORK = 0xA9FE0000; // 169.254.0.0
constexpr quint32 LINK_LOCAL_FIRST = 0xA9FE0100;
constexpr quint32 LINK_LOCAL_LAST = 0xA9FEFEFF; // the first and last 256 addresses are reserved

QString formatRange(quint32 first, quint32 last) {
    return QHostAddress(first).toString() + QLatin1String(" - ") + QHostAddress(last).toString() +
           QLatin1String("<br>");
}

QString formatSubnetAddresses(const QNetworkAddressEntry &entry) {
    const quint32 address = entry.ip().toIPv4Address();
    const quint32 mask = entry.netmask().toIPv4Address();
    const quint32 network = address & mask;
    if (network == LINK_LOCAL_NETWORK)
        return formatRange(LINK_LOCAL_FIRST, LINK_LOCAL_LAST);
    return formatRange(network | 1U, network | (~mask & 0xFFFFFFFEU));
}

bool ownsAddress(const CNetworkAdapter &adapter, const QHostAddress &address) {
    const QList<QNetworkAddressEntry> entries = adapter.addressEntries();
    return std::any_of(entries.begin(), entries.end(),
                       [&address](const QNetworkAddressEntry &entry) { return entry.ip() == address; });
}

} // namespace

CNetworkAdapter::CNetworkAdapter(const QNetworkInterface &networkInterface)
    : QNetworkInterface(networkInterface), m_strDisplayName(networkInterface.humanReadableName()),
      m_strHardwareName(networkInterface.hardwareAddress()) {}

CNetworkAdapter &CNetworkAdapter::operator=(const QNetworkInterface &networkInterface) {
    return *this = CNetworkAdapter(networkInterface);
}

CNetworkAdapterList CNetworkAdapter::allNetworkAdapters(QNetworkInterface::InterfaceFlags requiredFlags,
                                                        QNetworkInterface::InterfaceFlags excludedFlags) {
    CNetworkAdapterList adapters;
    const QList<QNetworkInterface> interfaces = allInterfaces();
    for (const QNetworkInterface &networkInterface : interfaces) {
        const QNetworkInterface::InterfaceFlags flags = networkInterface.flags();
        if ((flags & requiredFlags) != requiredFlags || (flags & excludedFlags) != 0)
            continue;
        if (!networkInterface.addressEntries().isEmpty())
            adapters.append(CNetworkAdapter(networkInterface));
    }
    return adapters;
}

const CNetworkAdapter *CNetworkAdapter::findByIpAddress(const CNetworkAdapterList &adapters,
                                                        const QHostAddress &address) {
    for (const CNetworkAdapter &adapter : adapters)
        if (ownsAddress(adapter, address))
            return &adapter;
    return nullptr;
}

CNetworkAdapterList usableAdapters() {
    CNetworkAdapterList adapters = CNetworkAdapter::allNetworkAdapters(
        QNetworkInterface::IsUp | QNetworkInterface::IsRunning, QNetworkInterface::IsLoopBack);
    const auto end = std::stable_partition(adapters.begin(), adapters.end(), [](const CNetworkAdapter &adapter) {
        return !firstIPv4Entry(&adapter).ip().isNull();
    });
    return end == adapters.begin() ? CNetworkAdapterList() : adapters;
}

CNetworkAdapterList idleAdapters(const std::vector<commissioning::Adapter> &all, const CNetworkAdapterList &listed) {
    using commissioning::LinkKind;
    const bool hasPhysical =
        std::any_of(all.begin(), all.end(), [](const auto &adapter) { return adapter.kind == LinkKind::Physical; });
    CNetworkAdapterList idle;
    for (const commissioning::Adapter &adapter : all) {
        const bool isAwaited = adapter.kind == (hasPhysical ? LinkKind::Physical : LinkKind::Virtual);
        const QString name = QString::fromStdString(adapter.name);
        const bool isListed =
            std::any_of(listed.begin(), listed.end(), [&](const CNetworkAdapter &own) { return own.name() == name; });
        if (isAwaited && !isListed && !adapter.isPort && adapter.canBroadcast && !isUsable(adapter))
            idle.append(CNetworkAdapter(QNetworkInterface::interfaceFromName(name)));
    }
    return idle;
}

QString idleReason(const commissioning::Adapter *adapter) {
    if (!adapter)
        return {};
    if (!adapter->isUp)
        return QStringLiteral("switched off");
    if (!adapter->hasCarrier)
        return QStringLiteral("no link");
    return adapter->addresses.empty() ? QStringLiteral("no IPv4 address") : QString();
}

QString FormatSubnetAddresses(const QList<QNetworkAddressEntry> &entries) {
    QString text;
    for (const QNetworkAddressEntry &entry : entries)
        if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol)
            text += formatSubnetAddresses(entry);
    return text;
}

QString FormatSubnetAddresses(const CNetworkAdapter *adapter) {
    return adapter != nullptr ? FormatSubnetAddresses(adapter->addressEntries()) : QString();
}

QNetworkAddressEntry firstIPv4Entry(const CNetworkAdapter *adapter) {
    if (adapter) {
        for (const QNetworkAddressEntry &entry : adapter->addressEntries()) {
            if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol)
                return entry;
        }
    }
    return {};
}

QList<QNetworkAddressEntry> addressEntriesOf(const CNetworkAdapterList &adapters) {
    QList<QNetworkAddressEntry> entries;
    for (const CNetworkAdapter &adapter : adapters)
        entries += adapter.addressEntries();
    return entries;
}
