#include "Lanvane/DeviceDisplay.h"

#include "CorvoQtBase/DeviceText.h"
#include "CorvoQtBase/GevGuiHelper.h"
#include "Lanvane/AddressRules.h"
#include "Lanvane/DeviceLister.h"
#include "commissioning/DeviceInfos.h"

#include <QApplication>
#include <QHostAddress>
#include <QPainter>
#include <QRegularExpression>
#include <QStyle>

using namespace Corvo;

bool CompareDIByProps::operator()(const DIPtrAndIndexPair &a, const DIPtrAndIndexPair &b) const {
    for (const char *key : {m_strPropKey1, m_strPropKey2}) {
        String_t textA;
        String_t textB;
        a.m_pDI->GetPropertyValue(key, textA);
        b.m_pDI->GetPropertyValue(key, textB);
        if (textA != textB)
            return textA < textB;
    }
    return false;
}

EDeviceAccessiblityInfo GetAccessibility(const CDeviceInfo &device) { return commissioning::verdictOf(device); }

QString FormatAccessibility(EDeviceAccessiblityInfo verdict) {
    switch (verdict) {
    case Accessibility_Ok:
        return QStringLiteral("OK");
    case Accessibility_Opened:
    case Accessibility_OpenedExclusively:
        return QStringLiteral("In use");
    case Accessibility_NotReachable:
        return QStringLiteral("Not Reachable");
    case Accessibility_Unknown:
        break;
    }
    return QStringLiteral("Unknown");
}

QIcon RowIcons::ofFile(const QString &name) {
    QIcon &icon = m_OfFiles[name];
    if (icon.isNull())
        icon = QIcon(QStringLiteral(":/Lanvane/Resources/%1.png").arg(name));
    return icon;
}

QIcon RowIcons::accessibility(EDeviceAccessiblityInfo verdict) {
    if (verdict == Accessibility_Ok)
        return {};
    QIcon &icon = m_Accessibility[verdict];
    if (icon.isNull())
        icon = QApplication::style()->standardIcon(verdict == Accessibility_Unknown ? QStyle::SP_MessageBoxCritical
                                                                                    : QStyle::SP_MessageBoxWarning);
    return icon;
}

QIcon RowIcons::inNeed(const QIcon &icon) {
    QIcon &signedIcon = m_InNeed[icon.cacheKey()];
    if (!signedIcon.isNull())
        return signedIcon;
    const QIcon sign = accessibility(Accessibility_NotReachable);
    for (const int size : {16, 20, 24, 32, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        icon.paint(&painter, 0, 0, size, size);
        const int part = size * 5 / 8;
        sign.paint(&painter, size - part, size - part, part, part);
        signedIcon.addPixmap(pixmap);
    }
    return signedIcon;
}

QString displayText(const CDeviceInfo &device, const char *property) { return GetUtf8Property(&device, property); }

QString displayText(const String_t &value) { return QString::fromUtf8(value.c_str()); }

QString macOf(const CQuorelGigEDeviceInfo &device) { return displayText(device.GetMacAddress()); }

QString userDefinedName(const CDeviceInfo &device) {
    return device.IsUserDefinedNameAvailable() ? displayText(device.GetUserDefinedName()) : QString();
}

QString userDefinedNameText(const CDeviceInfo &device) {
    const QString name = richDeviceText(userDefinedName(device));
    return name.isEmpty() ? QString() : QStringLiteral("<p>&nbsp; Name: %1</p>").arg(name);
}

QString formatIPConfigurationOf(const CQuorelGigEDeviceInfo &device) {
    return formatIPConfiguration(device.GetIpConfigCurrent().c_str(), 0);
}

QString deviceNameText(const CQuorelGigEDeviceInfo &device) {
    return QStringLiteral("<p>%1, %2, %3</p>")
        .arg(richDeviceText(displayText(device.GetModelName())), richDeviceText(displayText(device.GetSerialNumber())),
             macOf(device));
}

bool isInUse(const CDeviceInfo &device) {
    const EDeviceAccessiblityInfo verdict = GetAccessibility(device);
    return verdict == Accessibility_Opened || verdict == Accessibility_OpenedExclusively;
}

QIcon RowIcons::model(const QString &modelName) {
    // Families by what their model names carry; the first that fits counts.
    static const struct {
        QRegularExpression pattern;
        const char *file;
    } families[] = {
        {QRegularExpression(QStringLiteral("line|\\b(rl|l)-?\\d"), QRegularExpression::CaseInsensitiveOption),
         "camera_line"},
        {QRegularExpression(QStringLiteral("board|\\bb-?\\d"), QRegularExpression::CaseInsensitiveOption),
         "camera_board"},
        {QRegularExpression(QStringLiteral("large|\\bx-?\\d"), QRegularExpression::CaseInsensitiveOption),
         "camera_large"},
        {QRegularExpression(QStringLiteral("area|\\b(ol|a)-?\\d"), QRegularExpression::CaseInsensitiveOption),
         "camera_area"},
    };
    for (const auto &family : families) {
        if (family.pattern.match(modelName).hasMatch())
            return ofFile(QLatin1String(family.file));
    }
    return ofFile(QStringLiteral("camera"));
}

QString noDevicesText() {
    return QStringLiteral("<p>No devices found!</p>Click <b>Refresh</b> or press <b>F5</b> to search for devices.");
}

QString severalDevicesText(int count) {
    return QStringLiteral(
               "<p><b>%1 cameras are selected.</b></p><p><b>Configure Selected...</b> in the context menu and "
               "in the menu <b>Cameras</b> changes all of them in one go.</p><p><b>Ctrl+C</b> copies their "
               "rows. <b>Save List As...</b> in the menu <b>File</b> saves them as a file.</p><p>Select one "
               "camera to change it alone.</p>")
        .arg(count);
}

QString noAdaptersText() {
    return QStringLiteral("<p>No active network networkAdapter found!</p><p>Please make sure your network adapters are "
                          "enabled and working correctly.</p>Click <b>Refresh</b> or press <b>F5</b> to refresh the "
                          "list of adapters.");
}

QString adapterText(const CNetworkAdapter &adapter) {
    QString text = QStringLiteral("<table align='left' border='0' cellpadding='1' cellspacing='1'>");
    for (const QNetworkAddressEntry &entry : adapter.addressEntries()) {
        if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol)
            continue;
        text += QStringLiteral("<tr><td width='8'></td></tr><tr><td width='8'></td><td>IP Address:</td><td width='100' "
                               "align='right'>%1</td></tr><tr><td></td><td>Subnet Mask:</td><td "
                               "align='right'>%2</td></tr>")
                    .arg(entry.ip().toString(), entry.netmask().toString());
    }
    return text + QStringLiteral("</table>");
}

namespace {

constexpr const char *ErrorImage = "<p><img src=':/Lanvane/Resources/error.png'><br>";

bool fitsAdapter(const CQuorelGigEDeviceInfo &device, const CNetworkAdapter *adapter) {
    const quint32 ip = QHostAddress(displayText(device.GetIpAddress())).toIPv4Address();
    const quint32 mask = QHostAddress(displayText(device.GetSubnetMask())).toIPv4Address();
    return hasDeviceValidnetworkPrefixForAdapter(ip, mask, adapter);
}

/// What this computer lacked when it asked the device; empty when nothing.
QString hostProblemText(const CQuorelGigEDeviceInfo &device) {
    const String_t problem = commissioning::propertyOf(device, commissioning::PropertyVerdictReason);
    return problem.empty() ? QString()
                           : QStringLiteral("<p>It is this computer that could not ask the device: %1.</p>")
                                 .arg(richDeviceText(displayText(problem)));
}

} // namespace

QString searchFailedText(const QString &reason) {
    return QStringLiteral("<p>The search for devices failed!</p><p>%1</p>Click <b>Refresh</b> or press <b>F5</b> to "
                          "search again.")
        .arg(richDeviceText(reason));
}

QString diagnosisText(const CQuorelGigEDeviceInfo &device, const CNetworkAdapter *adapter) {
    if (!device.GetPropertyAvailable(PropAccessible))
        return QStringLiteral("<p>The device has not been checked yet: the search ended before it was its turn.</p>"
                              "Click <b>Refresh</b> to check it.");
    switch (GetAccessibility(device)) {
    case Accessibility_Unknown:
        return QLatin1String(ErrorImage) +
               QStringLiteral("There was an error while trying to determine the accessibility status of the "
                              "device.</p>Try refreshing the list by clicking <b>Refresh</b>.") +
               hostProblemText(device);
    case Accessibility_Opened:
    case Accessibility_OpenedExclusively:
        return QLatin1String(ErrorImage) +
               QStringLiteral("The device is currently in use by another application!</p><p>Please close any "
                              "applications currently using the device and click <b>Refresh</b> to check the status "
                              "again.");
    case Accessibility_NotReachable:
        return QLatin1String(ErrorImage) +
               QStringLiteral("The device is unreachable!</p><p>Currently you will not be able to use the "
                              "device.</p>Please make sure the IP address is in the same subnet as the adapter the "
                              "device is connected to.<br>Possible addresses are:<br>") +
               FormatSubnetAddresses(adapter);
    case Accessibility_Ok:
        break;
    }
    if (fitsAdapter(device, adapter))
        return {};
    return QLatin1String(ErrorImage) +
           QStringLiteral("<p>The network adapter and the device are currently not in the same subnet. Therefore, the "
                          "device will currently not be visible to applications.</p><p>Make sure the device and the "
                          "network adapter share the same network prefix and subnet mask.</p>");
}

QString deviceText(const CQuorelGigEDeviceInfo &device) {
    const auto row = [](const char *label, const QString &value) {
        return QStringLiteral("<tr><td width='8'></td><td>%1</td><td>%2</td></tr>")
            .arg(QLatin1String(label), richDeviceText(value));
    };
    return QStringLiteral("<p><table align='left' border='0' cellpadding='1' cellspacing='1'>") +
           row("Vendor:", displayText(device.GetVendorName())) +
           row("Model Name:", displayText(device.GetModelName())) +
           row("Serial Number:", displayText(device.GetSerialNumber())) + row("MAC Address:", macOf(device)) +
           row("IP Configuration:", formatIPConfigurationOf(device)) +
           row("IP Address:", displayText(device.GetIpAddress())) +
           row("Subnet Mask:", displayText(device.GetSubnetMask())) +
           row("Gateway:", displayText(device.GetDefaultGateway())) + QStringLiteral("</table></p>");
}

const char *const KeepAddressLink = "#keep-address";

QString temporaryAddressText(const CQuorelGigEDeviceInfo &device) {
    const QString text = QStringLiteral("<p>Currently at the temporary address %1, which it loses when it restarts.")
                             .arg(displayText(device.GetIpAddress()));
    if (isInUse(device))
        return text + QStringLiteral("</p>");
    return text +
           QStringLiteral("<br><a href='%1'>Use this address permanently</a></p>").arg(QLatin1String(KeepAddressLink));
}
