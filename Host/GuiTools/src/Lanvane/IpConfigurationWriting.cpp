// IpConfigurationWidget: writing the configuration, and guarding unsaved changes.

#include "Base/GCException.h"
#include "CorvoQtBase/GevGuiHelper.h"
#include "CorvoQtBase/errorhandling.h"
#include "Lanvane/AddressRules.h"
#include "Lanvane/IpConfigurationParts.h"
#include "Lanvane/WaitIndication.h"
#include "MinimalCorvoGigETL/ICorvoGigEDevice.h"
#include "ui_ipconfigurationwidget.h"

#include <QDebug>
#include <QMessageBox>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QTimer>

using namespace Corvo;

void IpConfigurationWidget::on_btnWriteConfiguration_clicked() {
    guarded("on_btnWriteConfiguration_clicked", [this] {
        const OptionalDevice device = GetSelectedDeviceInfo();
        if (!device || m_BusyDepth > 0)
            return;
        const bool saved = writeConfiguration(*device);
        if (saved)
            clearEditFlags();
        showPatchedInfo(displayText(*device, PropMacAddress));
        if (saved) {
            doRefresh();
        } else {
            QMessageBox::critical(this, windowTitle(), QStringLiteral("The configuration could not be saved."),
                                  QMessageBox::Close);
        }
    });
}

bool IpConfigurationWidget::writeConfiguration(const CQuorelGigEDeviceInfo &device) {
    if (broadcastConfiguration(displayText(device, PropMacAddress)))
        return true;
    qDebug() << "Broadcast Configuration failed! Trying unicast configuration.";
    return unicastConfiguration(displayText(device, "IpAddress"));
}

namespace {

using AddressMode = IpConfigurationWidget::AddressMode;

bool isPersistent(AddressMode mode) { return mode == AddressMode::Static; }
bool isDhcp(AddressMode mode) { return mode == AddressMode::Dhcp; }

/// The number a device stores. Link-local stays enabled always: it is every device's last resort.
QByteArray numberOf(AddressMode mode) {
    return QByteArray::number(4u | (isPersistent(mode) ? 1u : 0u) | (isDhcp(mode) ? 2u : 0u));
}

} // namespace

bool IpConfigurationWidget::hasAddressChanges() const {
    return m_isIpAddressDirty || m_isNetmaskDirty || m_isDefaultGatewayDirty;
}

void IpConfigurationWidget::storeMode(const QString &mac, AddressMode mode) {
    m_pDeviceLister->updateDeviceInfo(bytes(mac), numberOf(mode), nullptr, nullptr, nullptr, false);
}

void IpConfigurationWidget::storeAddresses(const QString &mac, const EditorContent &content) {
    m_pDeviceLister->updateDeviceInfo(bytes(mac), nullptr, bytes(content.ipAddress), bytes(content.netmask),
                                      bytes(content.defaultGateway), false);
}

bool IpConfigurationWidget::restartAndAwait(const QString &mac) {
    m_pDeviceLister->Tl().RestartIpConfiguration(gc(mac));
    return waitForDevice(mac);
}

bool IpConfigurationWidget::broadcastConfiguration(const QString &mac) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    const WaitCursor cursor;
    bool saved = false;
    guarded("broadcastConfiguration", [&] { saved = sendBroadcastConfiguration(mac); });
    return saved;
}

bool IpConfigurationWidget::sendBroadcastConfiguration(const QString &mac) {
    const EditorContent content = editorContent();
    const QByteArray macText = bytes(mac);
    switch (content.mode) {
    case AddressMode::Static:
        TRACE(Progress,
              "Trying broadcast ip config for MAC=%s setting static IP (NewIP=%s; NewNetmask=%s; NewGateway=%s;).",
              macText.constData(), bytes(content.ipAddress).constData(), bytes(content.netmask).constData(),
              bytes(content.defaultGateway).constData());
        break;
    case AddressMode::Dhcp:
        TRACE(Progress, "Trying broadcast ip config for MAC=%s setting DHCP.", macText.constData());
        break;
    case AddressMode::AutoIp:
        TRACE(Progress, "Trying broadcast ip config for MAC=%s setting AutoIP/LLA.", macText.constData());
        break;
    case AddressMode::None:
        TRACE(Error, "Invalid addresstype for MAC=%s! Don't know which addressing to use.", macText.constData());
        return false;
    }
    processEventsWithoutUser(); // what follows blocks for up to 3 seconds
    if (!m_pDeviceLister->Tl().BroadcastIpConfiguration(gc(mac), isPersistent(content.mode), isDhcp(content.mode),
                                                        gc(content.ipAddress), gc(content.netmask),
                                                        gc(content.defaultGateway), String_t())) {
        TRACE(Warning,
              "Failed to change IP configuration via broadcast for MAC=%s. This is not an error. The device may not "
              "support broadcast ip configuration.",
              macText.constData());
        return false;
    }
    TRACE(Progress, "Successfully changed IP configuration via broadcast for MAC=%s.", macText.constData());
    if (m_isIpProtocolConfigDirty)
        storeMode(mac, content.mode);
    if (hasAddressChanges())
        storeAddresses(mac, content);
    clearEditFlags();

    TRACE(Progress, "Restarting IP configuration and waiting for rediscovery for MAC=%s.", macText.constData());
    if (!restartAndAwait(mac)) {
        TRACE(Warning, "Failed to rediscover the device with MAC=%s.", macText.constData());
        throw RUNTIME_EXCEPTION("Failed to discover reconfigured device");
    }
    TRACE(Progress, "Successfully rediscovered MAC=%s.", macText.constData());
    return true;
}

bool IpConfigurationWidget::unicastConfiguration(const QString &oldIpAddress) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    bool saved = false;
    guarded("unicastConfiguration", [&] { saved = sendUnicastConfiguration(oldIpAddress); });
    closeDevice();
    return saved;
}

bool IpConfigurationWidget::sendUnicastConfiguration(const QString &oldIpAddress) {
    const QByteArray oldIp = bytes(oldIpAddress);
    TRACE(Progress, "Trying open device with old IP=%s to change IP configuration via unicast.", oldIp.constData());
    if (!openDevice(oldIpAddress)) {
        TRACE(Progress, "Could not open device with old IP=%s to change IP configuration via unicast.",
              oldIp.constData());
        return false;
    }
    const CQuorelGigEDeviceInfo opened(m_pDevice->GetDeviceInfo());
    const QString mac = displayText(opened, PropMacAddress);
    TRACE(Progress,
          "Successfully opened device with old IP=%s; Netmask=%s; Gateway=%s; IPConfig='%s' to change IP "
          "configuration via unicast.",
          oldIp.constData(), opened.GetSubnetMask().c_str(), opened.GetDefaultGateway().c_str(),
          bytes(formatIPConfigurationOf(opened)).constData());
    const WaitCursor cursor;
    writeToOpenDevice(oldIpAddress, mac);
    clearEditFlags();
    TRACE(Progress, "Closing device with old IP=%s.", oldIp.constData());
    closeDevice();
    TRACE(Progress, "Finished configuring device with old IP=%s.", oldIp.constData());
    if (!restartAndAwait(mac)) {
        TRACE(Warning, "Failed to rediscover the configured device with old IP=%s.", oldIp.constData());
        throw RUNTIME_EXCEPTION("Failed to discover reconfigured device");
    }
    return true;
}

void IpConfigurationWidget::writeToOpenDevice(const QString &oldIpAddress, const QString &mac) {
    const EditorContent content = editorContent();
    const QByteArray oldIp = bytes(oldIpAddress);
    if (m_isIpProtocolConfigDirty) {
        switch (content.mode) {
        case AddressMode::Static:
            TRACE(Progress, "Setting ip config for device with old IP=%s to static IP.", oldIp.constData());
            break;
        case AddressMode::Dhcp:
            TRACE(Progress, "Setting ip config for device with old IP=%s to DHCP.", oldIp.constData());
            break;
        case AddressMode::AutoIp:
            TRACE(Progress, "Setting ip config for device with old IP=%s to AutoIP/LLA", oldIp.constData());
            break;
        case AddressMode::None:
            TRACE(Error, "Invalid addresstype for old IP=%s! Don't know which addressing to use.", oldIp.constData());
            throw RUNTIME_EXCEPTION("No IP configuration is chosen.");
        }
        m_pDevice->ChangeIpConfiguration(isPersistent(content.mode), isDhcp(content.mode));
        storeMode(mac, content.mode);
    }
    if (!hasAddressChanges())
        return;
    if (!isIPAddressValidForDevice(content.ipAddress)) {
        TRACE(Error, "Invalid new IP address '%s' for device with old IP=%s!", bytes(content.ipAddress).constData(),
              oldIp.constData());
        throw RUNTIME_EXCEPTION(
            "Invalid IP address. IP addresses 224.0.0.0 to 255.255.255.255 and 127.0.0.1 are not allowed.");
    }
    TRACE(Progress, "Setting persitent IP address for device with old IP=%s (NewIP=%s; NewNetmask=%s; NewGateway=%s;).",
          oldIp.constData(), bytes(content.ipAddress).constData(), bytes(content.netmask).constData(),
          bytes(content.defaultGateway).constData());
    m_pDevice->SetPersistentIpAddress(gc(content.ipAddress), gc(content.netmask), gc(content.defaultGateway));
    storeAddresses(mac, content);
}

bool IpConfigurationWidget::waitForDevice(const QString &mac) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    const WaitBox box(QStringLiteral("Camera restarts its IP configuration cycle.\nWaiting until the device has been "
                                     "discovered again..."),
                      this);
    bool found = false;
    guarded("waitForDevice", [&] {
        DeviceLister lister;
        for (int round = 0; round < m_Patience.rounds && !found; ++round) {
            pauseWithoutUser(m_Patience.pause_ms);
            lister.discoverAllDevices();
            for (const CDeviceInfo &device : lister.devices())
                found = found || displayText(device, PropMacAddress).compare(mac, Qt::CaseInsensitive) == 0;
        }
    });
    return found;
}

void IpConfigurationWidget::closeDevice() {
    if (!m_pDevice)
        return;
    ICorvoGigEDevice *device = m_pDevice;
    m_pDevice = nullptr;
    const auto report = [this](const GenICam::GenericException &error, const char *what) {
        showException("closeDevice", error, QString::fromLatin1(what), this);
    };
    try {
        if (device->IsOpen())
            device->Close();
    } catch (const GenICam::GenericException &error) {
        report(error, "Failed to close device");
    }
    try {
        m_pDeviceLister->Tl().DestroyDevice(device);
    } catch (const GenICam::GenericException &error) {
        report(error, "Failed to destroy device");
    }
}

// Unsaved changes

bool IpConfigurationWidget::checkSaveChanges() const {
    // Typing in the address field alone does not count, only a text that differs does.
    const bool pending = m_isIpProtocolConfigDirty || m_isIpAddressDirty || m_isNetmaskDirty || m_isNetmaskEdited ||
                         m_isDefaultGatewayDirty || m_isDefaultGatewayEdited || m_isCustomNameDirty;
    if (!pending || !isValidConfigInUI())
        return false;
    return QMessageBox::question(const_cast<IpConfigurationWidget *>(this), windowTitle(),
                                 QStringLiteral("Do you want to save the changes to the configuration?"),
                                 QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

void IpConfigurationWidget::saveChangesOf(QTreeWidgetItem *item) {
    const OptionalDevice device = deviceOf(item);
    if (!device)
        return;
    // Writing may have to force an address, which goes to the device and adapter of the current row.
    QTreeWidgetItem *current = ui->deviceTree->currentItem();
    const QSignalBlocker blocker(ui->deviceTree);
    ui->deviceTree->setCurrentItem(item);
    const bool saved = writeConfiguration(*device);
    showPatchedInfo(displayText(*device, PropMacAddress));
    if (saved)
        QTimer::singleShot(0, this, &IpConfigurationWidget::refresh); // not while the selection changes
    else
        QMessageBox::critical(this, windowTitle(), QStringLiteral("The configuration could not be saved."));
    ui->deviceTree->setCurrentItem(current);
}

bool IpConfigurationWidget::saveBeforeClosing() {
    if (!checkSaveChanges())
        return true;
    const OptionalDevice device = GetSelectedDeviceInfo();
    bool saved = false;
    guarded("closeEvent", [&] { saved = device && writeConfiguration(*device); });
    if (saved) {
        updateTreeRowFromDeviceInfoByMac(displayText(*device, PropMacAddress));
        updateUiFromTreeItem(ui->deviceTree->currentItem());
        return true;
    }
    return QMessageBox::critical(
               this, windowTitle(),
               QStringLiteral("The configuration could not be saved.\nWould you like to continue closing the "
                              "application?\n\nIf you click 'Yes', your configuration will not be changed and the "
                              "application will close.\nIf you click 'No', you will return to the application."),
               QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}
