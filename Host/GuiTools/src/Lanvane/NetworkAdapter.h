#pragma once

#include "commissioning/Inventory.h"

#include <QHostAddress>
#include <QList>
#include <QNetworkAddressEntry>
#include <QNetworkInterface>
#include <QString>

#include <vector>

class CNetworkAdapter;
using CNetworkAdapterList = QList<CNetworkAdapter>;

/// A network adapter of the host with its display texts as they were when it was listed. A value.
class CNetworkAdapter : public QNetworkInterface {
public:
    CNetworkAdapter() = default;
    explicit CNetworkAdapter(const QNetworkInterface &networkInterface);
    CNetworkAdapter &operator=(const QNetworkInterface &networkInterface);

    /// Human-readable name.
    QString displayName() const { return m_strDisplayName; }
    /// MAC address as text; empty when the adapter has none.
    QString hardwareName() const { return m_strHardwareName; }

    /// The adapters of the host at this moment, in the system's order, that have every required and no excluded flag.
    /// Adapters without any address, IPv4 or IPv6, are left out.
    static CNetworkAdapterList allNetworkAdapters(QNetworkInterface::InterfaceFlags requiredFlags,
                                                  QNetworkInterface::InterfaceFlags excludedFlags);

    /// The first adapter that owns the address, or null. The result points into \p adapters.
    static const CNetworkAdapter *findByIpAddress(const CNetworkAdapterList &adapters, const QHostAddress &address);

private:
    QString m_strDisplayName;
    QString m_strHardwareName;
};

/// The adapters that cameras can be found through; those that have IPv6 addresses only follow them. Empty when there
/// is none to be used.
CNetworkAdapterList usableAdapters();
/// The adapters that a cable may be in, but that no search can leave through, without those in \p listed. They are the
/// physical ones; where there is none, as in a container, those that stand for them.
CNetworkAdapterList idleAdapters(const std::vector<commissioning::Adapter> &all, const CNetworkAdapterList &listed);
/// Why no search leaves through an adapter, in two or three words; empty when it does, and for null.
QString idleReason(const commissioning::Adapter *adapter);

/// The first IPv4 entry of an adapter; one without addresses when there is none, as for null.
QNetworkAddressEntry firstIPv4Entry(const CNetworkAdapter *adapter);
/// Of all adapters.
QList<QNetworkAddressEntry> addressEntriesOf(const CNetworkAdapterList &adapters);

/// The range of addresses a device may have under each IPv4 entry, in the entries' order, as rich text with one line
/// "first - last<br>" per entry. IPv6 entries give nothing.
QString FormatSubnetAddresses(const QList<QNetworkAddressEntry> &entries);
/// The same for the entries of one adapter; empty for null.
QString FormatSubnetAddresses(const CNetworkAdapter *adapter);
