#pragma once

#include "Lanvane/NetworkAdapter.h"
#include "MinimalCorvoGigETL/IDeviceFactory.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"

#include <QHash>
#include <QIcon>
#include <QString>

#include <vector>

/// A device info and its index in the lister's list.
struct DIPtrAndIndexPair {
    const Corvo::CDeviceInfo *m_pDI;
    int m_DIIndex;
};

/// Orders devices by two properties, compared as texts.
struct CompareDIByProps {
    const char *m_strPropKey1;
    const char *m_strPropKey2;

    bool operator()(const DIPtrAndIndexPair &a, const DIPtrAndIndexPair &b) const;
};

/// The verdict stored in a device info; anything that is no number from 0 to 4 counts as unknown.
Corvo::EDeviceAccessiblityInfo GetAccessibility(const Corvo::CDeviceInfo &device);
/// Its word in the status column.
QString FormatAccessibility(Corvo::EDeviceAccessiblityInfo verdict);

/// Icons of the rows, each made once: Qt keeps the pixmaps of every icon that was ever painted for a while.
class RowIcons {
public:
    QIcon adapter() { return ofFile(QStringLiteral("network_adapter")); }
    /// The icon of a model's family, or the generic camera.
    QIcon model(const QString &modelName);
    /// The icon with a warning sign on it.
    QIcon inNeed(const QIcon &icon);
    /// The icon in the status column; null for a device in order.
    QIcon accessibility(Corvo::EDeviceAccessiblityInfo verdict);

private:
    QIcon ofFile(const QString &name);

    QHash<QString, QIcon> m_OfFiles;
    QHash<int, QIcon> m_Accessibility;
    QHash<qint64, QIcon> m_InNeed; ///< by cache key
};

/// A property as the device has it, "N/A" when it has none. What a device may choose itself must pass through
/// plainDeviceText or richDeviceText before it is shown.
QString displayText(const Corvo::CDeviceInfo &device, const char *property);
/// The same of what a getter returned.
QString displayText(const Corvo::String_t &value);
/// 12 upper-case hexadecimal digits; "N/A" without any.
QString macOf(const Corvo::CQuorelGigEDeviceInfo &device);
/// As the device has it; empty for none.
QString userDefinedName(const Corvo::CDeviceInfo &device);
/// "Name: ..." below the device's data, as rich text; empty for none.
QString userDefinedNameText(const Corvo::CDeviceInfo &device);
QString formatIPConfigurationOf(const Corvo::CQuorelGigEDeviceInfo &device);
/// Model, serial number and MAC address on one line, as rich text.
QString deviceNameText(const Corvo::CQuorelGigEDeviceInfo &device);

// Rich texts of the selection info. Texts that come from devices are escaped.

QString noDevicesText();
QString noAdaptersText();
/// \param reason plain text
QString searchFailedText(const QString &reason);
QString adapterText(const CNetworkAdapter &adapter);
/// The device's data.
QString deviceText(const Corvo::CQuorelGigEDeviceInfo &device);
/// That several are selected, and what can be done with them.
QString severalDevicesText(int count);
/// What is wrong with the device, empty when nothing is. \param adapter where it is listed; may be null.
QString diagnosisText(const Corvo::CQuorelGigEDeviceInfo &device, const CNetworkAdapter *adapter);
/// That the device will lose its current address, with the link KeepAddressLink unless somebody else uses the device.
QString temporaryAddressText(const Corvo::CQuorelGigEDeviceInfo &device);
extern const char *const KeepAddressLink;

/// Whether another application holds the device.
bool isInUse(const Corvo::CDeviceInfo &device);
