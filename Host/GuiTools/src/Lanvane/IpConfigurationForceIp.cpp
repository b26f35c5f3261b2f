// IpConfigurationWidget: temporary addresses, and opening a device that may need one.

#include "Base/GCException.h"
#include "Lanvane/IpConfigurationParts.h"
#include "commissioning/ForceAddress.h"

#include <QDebug>
#include <QHostAddress>

using namespace Corvo;

QString IpConfigurationWidget::validAddressesText() const {
    return QStringLiteral("Valid addresses are:<br>") +
           FormatSubnetAddresses(adapterOf(QString::fromStdString(m_Change.adapter)));
}

bool IpConfigurationWidget::forceIp(const QString &headerText, bool showMacAddress, QString *newIpAddress) {
    commissioning::ForceRequest request;
    if (m_Change.device.IsMacAddressAvailable())
        request.device = m_Change.device;
    request.adapter = m_Change.adapter;
    request.text = headerText.toStdString();
    request.asksForMac = showMacAddress;
    commissioning::Address forced = 0;
    const bool isForced = forceAddress(operationContext(), request, &forced);
    if (newIpAddress && forced != 0)
        *newIpAddress = QHostAddress(forced).toString();
    return isForced;
}

bool IpConfigurationWidget::openDevice(const QString &ipAddress) {
    return m_Connection.open(operationContext(), m_Change.device, m_Change.adapter, gc(ipAddress));
}

void IpConfigurationWidget::onAssignTemporaryIPAddress() {
    const OptionalDevice device = GetSelectedDeviceInfo();
    if (!device || m_BusyDepth > 0)
        return;
    const Busy busy(m_BusyDepth);
    aimAtSelection();
    try {
        forceIp(QStringLiteral("Please specify a temporary IP address.<br>This address will be valid until the device "
                               "resets.<br>") +
                    validAddressesText(),
                false, nullptr);
        updateEditor();
    } catch (const std::exception &error) {
        qDebug("onAssignTemporaryIPAddress: error forcing IP (err='%s')", error.what());
    } catch (...) {
        qDebug("onAssignTemporaryIPAddress: error forcing IP (err='%s')", "Unknown exception occurred");
    }
}

void IpConfigurationWidget::forceIpByMac_triggered() {
    if (m_BusyDepth > 0)
        return;
    const Busy busy(m_BusyDepth);
    aimAtSelection();
    guarded("forceIpByMac_triggered", [this] {
        forceIp(QStringLiteral("Please specify the MAC address for the device to force the IP address.\n\nThere won't "
                               "be any error message in case you specify the wrong MAC address."),
                true, nullptr);
        updateEditor();
    });
}
