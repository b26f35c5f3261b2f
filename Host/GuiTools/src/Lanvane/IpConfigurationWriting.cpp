// IpConfigurationWidget: writing the configuration, and guarding unsaved changes.

#include "Base/GCException.h"
#include "Lanvane/AddressRules.h"
#include "Lanvane/IpConfigurationParts.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Rediscovery.h"
#include "commissioning/Saving.h"
#include "ui_ipconfigurationwidget.h"

#include <QHostAddress>
#include <QMessageBox>
#include <QScopedValueRollback>
#include <QTimer>

using namespace Corvo;
using commissioning::Change;

namespace {

commissioning::Address addressOf(const QString &text) { return QHostAddress(text).toIPv4Address(); }

std::optional<commissioning::Mode> wantedMode(IpConfigurationWidget::AddressMode mode) {
    switch (mode) {
    case IpConfigurationWidget::AddressMode::Static:
        return commissioning::Mode::Static;
    case IpConfigurationWidget::AddressMode::Dhcp:
        return commissioning::Mode::Dhcp;
    case IpConfigurationWidget::AddressMode::AutoIp:
        return commissioning::Mode::Auto;
    case IpConfigurationWidget::AddressMode::None:
        break;
    }
    return std::nullopt;
}

} // namespace

commissioning::Context IpConfigurationWidget::operationContext() {
    return {m_pDeviceLister->Tl(),
            m_pDeviceLister->devices(),
            m_Connection,
            m_Interaction,
            commissioning::Tracer(GetIPConfigBaseCatID()),
            m_Patience};
}

Change IpConfigurationWidget::changeFor(const CQuorelGigEDeviceInfo &device) const {
    const CNetworkAdapter *adapter =
        GetNetworkAdapaterFromDeviceItem(findDeviceTreeItem(displayText(device, PropMacAddress)));
    const EditorContent content = editorContent();
    Change change;
    change.device = device;
    change.adapter = adapter ? adapter->name().toStdString() : std::string();
    change.mode = wantedMode(content.mode);
    change.address = addressOf(content.ipAddress);
    change.mask = addressOf(content.netmask);
    change.gateway = addressOf(content.defaultGateway);
    change.modeDiffers = m_isIpProtocolConfigDirty;
    change.addressDiffers = m_isIpAddressDirty;
    change.maskDiffers = m_isNetmaskDirty;
    change.gatewayDiffers = m_isDefaultGatewayDirty;
    return change;
}

void IpConfigurationWidget::on_btnWriteConfiguration_clicked() {
    guarded("on_btnWriteConfiguration_clicked", [this] {
        const OptionalDevice device = GetSelectedDeviceInfo();
        if (!device || m_BusyDepth > 0)
            return;
        const bool saved = writeConfiguration(*device);
        if (saved)
            clearEditFlags();
        showPatchedInfo(displayText(*device, PropMacAddress));
        if (saved)
            doRefresh();
        else
            showFailedSave(QStringLiteral("The configuration could not be saved."), QMessageBox::Close);
        showRemark();
    });
}

bool IpConfigurationWidget::writeConfiguration(const CQuorelGigEDeviceInfo &device) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    m_Change = changeFor(device);
    m_LastSave = configure(operationContext(), m_Change);
    return m_LastSave.success;
}

bool IpConfigurationWidget::broadcastConfiguration(const QString &mac) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    m_Change.device.SetMacAddress(gc(mac));
    const commissioning::Context context = operationContext();
    return commissioning::Saving(context, m_Change).broadcast();
}

bool IpConfigurationWidget::unicastConfiguration(const QString &oldIpAddress) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    m_Change.device.SetIpAddress(gc(oldIpAddress));
    const commissioning::Context context = operationContext();
    return commissioning::Saving(context, m_Change).unicast();
}

bool IpConfigurationWidget::waitForDevice(const QString &mac) {
    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    return commissioning::waitForDevice(operationContext(), mac.toStdString()).has_value();
}

int IpConfigurationWidget::showFailedSave(const QString &text, QMessageBox::StandardButtons buttons) {
    QMessageBox box(QMessageBox::Critical, windowTitle(), text, buttons, this);
    box.setInformativeText(QString::fromStdString(m_LastSave.text));
    if (buttons.testFlag(QMessageBox::No))
        box.setDefaultButton(QMessageBox::No);
    return box.exec();
}

void IpConfigurationWidget::showRemark() {
    if (m_LastSave.success && !m_LastSave.text.empty())
        QMessageBox::information(this, windowTitle(), QString::fromStdString(m_LastSave.text));
}

void IpConfigurationWidget::closeDevice() { m_Connection.close(); }

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
    const bool saved = writeConfiguration(*device);
    showPatchedInfo(displayText(*device, PropMacAddress));
    if (saved)
        QTimer::singleShot(0, this, &IpConfigurationWidget::refresh); // not while the selection changes
    else
        showFailedSave(QStringLiteral("The configuration could not be saved."), QMessageBox::Ok);
    showRemark();
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
    return showFailedSave(
               QStringLiteral("The configuration could not be saved.\nWould you like to continue closing the "
                              "application?\n\nIf you click 'Yes', your configuration will not be changed and the "
                              "application will close.\nIf you click 'No', you will return to the application."),
               QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}
