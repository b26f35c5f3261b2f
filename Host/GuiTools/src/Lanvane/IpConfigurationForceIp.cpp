// IpConfigurationWidget: temporary addresses, and opening a device that may need one.

#include "Base/GCException.h"
#include "Lanvane/IpConfigurationParts.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/ForceAddress.h"
#include "commissioning/Rediscovery.h"

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
    const commissioning::Context context = operationContext();
    bool isForced = false;
    m_Notice = {};
    if (!m_Interaction.run([&] { isForced = forceAddress(context, request, &forced); }))
        followCancelledForce();
    if (newIpAddress && forced != 0)
        *newIpAddress = QHostAddress(forced).toString();
    return isForced;
}

void IpConfigurationWidget::followCancelledForce() {
    const auto sent = m_Interaction.sent();
    if (!sent)
        return;
    const commissioning::Context context = operationContext();
    std::optional<CQuorelGigEDeviceInfo> now;
    m_Interaction.run([&] {
        now = lookFor(context, sent->mac, sent->address);
        if (now)
            follow(context, *now, true);
    });
    const bool isTaken = now && commissioning::currentAddressOf(*now) == sent->address;
    const QString rest = isTaken ? QStringLiteral("and the camera has it.")
                         : now   ? QStringLiteral("but the camera still has %1.").arg(displayText(now->GetIpAddress()))
                                 : QStringLiteral("but the camera does not answer the search.");
    const QString mac = QString::fromStdString(sent->mac);
    const bool isListed = m_pDeviceLister->find(mac) != nullptr; // else no row is its own
    m_Notice = {isListed ? mac : QString(),
                QStringLiteral("The address %1 was sent, %2").arg(QHostAddress(sent->address).toString(), rest)};
    onUpdated(mac, isTaken ? std::optional(sent->address) : std::nullopt);
}

bool IpConfigurationWidget::openDevice(const QString &ipAddress) {
    const commissioning::Context context = operationContext();
    bool isOpen = false;
    m_Interaction.run([&] { isOpen = m_Connection.open(context, m_Change.device, m_Change.adapter, gc(ipAddress)); });
    return isOpen;
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
