// IpConfigurationWidget: temporary addresses, and opening a device that may need one.

#include "Base/GCException.h"
#include "CorvoQtBase/errorhandling.h"
#include "Lanvane/AddressRules.h"
#include "Lanvane/AddressText.h"
#include "Lanvane/IpConfigurationParts.h"
#include "Lanvane/WaitIndication.h"
#include "Lanvane/ipaddresswidget.h"
#include "MinimalCorvoGigETL/ICorvoGigEDevice.h"

#include <QDebug>
#include <QMessageBox>
#include <QScopedValueRollback>

using namespace Corvo;

namespace {

/// First half of the MAC addresses of the maker's devices, for the user to complete.
constexpr const char *MacPrefix = "02-5A-E3-";

void prepareDialog(IpAddressWidget &dialog, const QString &mac, const QNetworkAddressEntry &host) {
    dialog.setWindowTitle(QStringLiteral("Assign Temporary IP Address (Force IP)"));
    // What may not be used at all is refused later, with an explanation.
    dialog.setAllowMulticastAddress(true);
    dialog.setAllowExperiemntalPurposeAddress(true);
    dialog.setIpAddress(SuggestIPAddress(host));
    if (!host.netmask().isNull())
        dialog.setSubnetMask(host.netmask().toString());
    dialog.setDefaultGateway(QStringLiteral("0.0.0.0"));
    dialog.setMacAddress(mac.isEmpty() ? QString::fromLatin1(MacPrefix) : mac);
}

QString macEnteredIn(const IpAddressWidget &dialog) {
    QString mac = dialog.macAddress();
    fixupMacAddress(mac);
    return mac.toUpper();
}

} // namespace

QString IpConfigurationWidget::validAddressesText() const {
    return QStringLiteral("Valid addresses are:<br>") +
           FormatSubnetAddresses(adapterOf(QString::fromStdString(m_Change.adapter)));
}

bool IpConfigurationWidget::forceIp(const QString &headerText, bool showMacAddress, QString *newIpAddress) {
    const QString deviceMac = m_Change.device.IsMacAddressAvailable() ? macOf(m_Change.device) : QString();
    TRACE(Progress, "Forcing IP of device with MAC=%s.", bytes(deviceMac).constData());

    IpAddressWidget dialog(this);
    prepareDialog(dialog, deviceMac, firstIPv4Entry(adapterOf(QString::fromStdString(m_Change.adapter))));
    dialog.setHeaderText(headerText);
    dialog.setShowMacAddress(showMacAddress);
    dialog.setHostEntries(addressEntriesOf(m_NetworkAdapters));
    if (isInUse(m_Change.device))
        dialog.setNoticeText(QStringLiteral("The device is in use by another application. It may refuse another "
                                            "address, or the application may lose it."));

    for (;;) {
        if (dialog.exec() != QDialog::Accepted) {
            TRACE(Progress, "Forcing IP of device with MAC=%s has been canceled by user.",
                  bytes(deviceMac).constData());
            return false;
        }
        const AddressTexts entered{canonicalIpAddress(dialog.ipAddress()), canonicalIpAddress(dialog.subnetMask()),
                                   canonicalIpAddress(dialog.defaultGateway())};
        const QString mac = macEnteredIn(dialog);
        TRACE(Progress, "User entered IP=%s; Netmask=%s; Gateway=%s; MAC=%s", bytes(entered.ipAddress).constData(),
              bytes(entered.netmask).constData(), bytes(entered.defaultGateway).constData(), bytes(mac).constData());
        if (!isIPAddressValidForDevice(entered.ipAddress)) {
            TRACE(Warning, "Invalid IP address entered for MAC=%s. Asking again.", bytes(mac).constData());
            QMessageBox::critical(
                this, QStringLiteral("Error"),
                QStringLiteral("IP Addresses 127.0.0.1 and 224.0.0.0 to 255.255.255.255 cannot be used."),
                QMessageBox::Ok);
            continue;
        }
        bool rediscovered = false;
        if (sendForceIp(mac, entered, newIpAddress, &rediscovered))
            return rediscovered;
        dialog.setNoticeText(forceFailureText(mac, entered.ipAddress));
    }
}

QString IpConfigurationWidget::forceFailureText(const QString &mac, const QString &address) {
    const WaitCursor cursor;
    const QString failure = QStringLiteral("The device did not take the address %1: %2").arg(address);
    if (const OptionalDevice device = deviceOf(mac))
        retest(*device);
    const OptionalDevice device = deviceOf(mac);
    if (device && isInUse(*device))
        return failure.arg(QStringLiteral("it is in use by another application."));
    return failure.arg(m_ForceFailure);
}

/// False asks the user again.
bool IpConfigurationWidget::sendForceIp(const QString &mac, const AddressTexts &addresses, QString *newIpAddress,
                                        bool *pRediscovered) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    const WaitCursor cursor;
    const QByteArray macText = bytes(mac);
    qDebug("Forcing IP configuration for MAC: '%s' with IP: '%s'; Subnet: '%s'; Default Gateway: '%s'",
           macText.constData(), bytes(addresses.ipAddress).constData(), bytes(addresses.netmask).constData(),
           bytes(addresses.defaultGateway).constData());
    TRACE(Progress, "Now forcing IP for MAC=%s. Retries remaining=%i.", macText.constData(), 0);
    processEventsWithoutUser(); // what follows blocks for up to 3 seconds
    try {
        m_pDeviceLister->Tl().ForceIp(gc(mac), gc(addresses.ipAddress), gc(addresses.netmask),
                                      gc(addresses.defaultGateway));
        TRACE(Progress, "Successfully forced IP for MAC=%s.", macText.constData());
        m_ForcedAddresses[mac] = addresses.ipAddress;
        if (newIpAddress)
            *newIpAddress = addresses.ipAddress;
        *pRediscovered = waitForDevice(mac);
        m_pDeviceLister->updateDeviceInfo(macText, nullptr, bytes(addresses.ipAddress), bytes(addresses.netmask),
                                          bytes(addresses.defaultGateway), true);
        showPatchedInfo(mac);
    } catch (const GenICam::GenericException &error) {
        TRACE(Error, "Failed to force IP for MAC=%s. Err='%s'", macText.constData(), error.GetDescription());
        showException("forceIp", error, this);
        m_ForceFailure = QString::fromUtf8(error.GetDescription()).section(QStringLiteral(": "), -1); // the status
        return false;
    } catch (const std::exception &error) {
        TRACE(Error, "Failed to force IP for MAC=%s.", macText.constData());
        *pRediscovered = false;
        showException("forceIp", error, this);
    } catch (...) {
        TRACE(Error, "Failed to force IP for MAC=%s.", macText.constData());
        *pRediscovered = false;
        showUnexpectedException("forceIp", "Unknown exception occurred", this);
    }
    return true;
}

bool IpConfigurationWidget::openDevice(const QString &ipAddress) {
    QString address = ipAddress;
    for (;;) {
        OpenFailure failure;
        if (tryOpenDevice(address, &failure))
            return true;
        if (failure.isAccessDenied) {
            const QString title = QStringLiteral("Connection failed");
            const QString text =
                QStringLiteral("Access denied\nThe device is controlled by another application.\nClose "
                               "the connection before changing the IP configuration.");
            showWarningMessage(title, QStringLiteral("openDevice"), text, this);
            QMessageBox::warning(this, title, text);
            return false;
        }
        qDebug("Could not open the device. Will try forceIP ('%s')", bytes(failure.text).constData());
        const QString header =
            QStringLiteral("A connection to the device must be established in order to change the configuration.<br>To "
                           "do this, a temporary IP address needs to be assigned to the device.<br>This temporary "
                           "address will only be used to update the configuration and will not be stored on the "
                           "device.<br>") +
            validAddressesText();
        if (!forceIp(header, false, &address))
            return false;
    }
}

bool IpConfigurationWidget::tryOpenDevice(const QString &ipAddress, OpenFailure *pFailure) {
    const WaitBox box(QStringLiteral("Trying to establish a connection to the device..."), this);
    try {
        createAndOpenDevice(ipAddress);
        return true;
    } catch (const GenICam::AccessException &error) {
        *pFailure = {QString::fromUtf8(error.GetDescription()), true};
    } catch (const GenICam::GenericException &error) {
        *pFailure = {QString::fromUtf8(error.GetDescription()), isInUseByAnother(ipAddress)};
    }
    closeDevice();
    return false;
}

/// The device meant at an address: another one there is not it, as when two have the same address.
CQuorelGigEDeviceInfo IpConfigurationWidget::deviceToOpen(const QString &ipAddress) const {
    CQuorelGigEDeviceInfo info;
    info.SetIpAddress(gc(ipAddress));
    if (m_Change.device.IsMacAddressAvailable())
        info.SetMacAddress(m_Change.device.GetMacAddress());
    return info;
}

void IpConfigurationWidget::createAndOpenDevice(const QString &ipAddress) {
    IGigETransportLayer &tl = m_pDeviceLister->Tl();
    ICorvoDevice *created = tl.CreateDevice(deviceToOpen(ipAddress));
    m_pDevice = dynamic_cast<ICorvoGigEDevice *>(created);
    if (!m_pDevice) {
        tl.DestroyDevice(created);
        throw LOGICAL_ERROR_EXCEPTION("The device must be a GEV Camera.");
    }
    m_pDevice->Open(Control | Stream | Event);
}

/// A refused open looks like any other failure: the device itself tells whether somebody holds it.
bool IpConfigurationWidget::isInUseByAnother(const QString &ipAddress) {
    EDeviceAccessiblityInfo verdict = Accessibility_Unknown;
    try {
        m_pDeviceLister->Tl().IsDeviceAccessible(deviceToOpen(ipAddress), AccessModeSet(Control), &verdict);
    } catch (const GenICam::GenericException &) { // not found at that address, so nothing is known of its holder
    }
    return verdict == Accessibility_Opened || verdict == Accessibility_OpenedExclusively;
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
