// IpConfigurationWidget: saving, and guarding unsaved changes. What is written is taken when the key is pressed.

#include "Lanvane/IpConfigurationParts.h"
#include "Lanvane/WaitIndication.h"
#include "ui_ipconfigurationwidget.h"

#include <QLabel>

using namespace Corvo;

void IpConfigurationWidget::on_btnWriteConfiguration_clicked() {
    if (!m_Editor.device() || m_BusyDepth > 0)
        return;
    const Busy busy(m_BusyDepth);
    const bool hadFocus = ui->btnWriteConfiguration->hasFocus();
    guarded("on_btnWriteConfiguration_clicked", [this] {
        if (saveEdited())
            doRefresh();
        else
            showFailure(QStringLiteral("The configuration could not be saved."), QMessageBox::Close);
    });
    if (hadFocus && !ui->btnWriteConfiguration->isEnabled())
        ui->deviceTree->setFocus();
}

bool IpConfigurationWidget::saveEdited() { return m_Editor.device() && save(m_Editor.change()); }

bool IpConfigurationWidget::save(const commissioning::Change &change) {
    m_Change = change;
    m_LastSave = {}; // what is said of this save shall not be another's
    m_Notice = {};
    const bool saved = writeConfiguration(change.device);
    const QString mac = macOf(change.device);
    if (saved) {
        m_ForcedAddresses.remove(mac);
        clearEditFlags();
    } else if (m_Editor.mac() == mac) {
        updateEditor();
    }
    if (!saved && m_Interaction.isCancelled())
        m_Notice = {mac, saveReport()};
    showPatchedInfo(mac);
    showRemark();
    return saved;
}

void IpConfigurationWidget::showFailure(const QString &text, QMessageBox::StandardButton button) const {
    if (!m_Interaction.isCancelled())
        showBox(QMessageBox::Critical, text, saveReport(), button);
}

QString IpConfigurationWidget::saveReport() const { return QString::fromStdString(m_LastSave.text); }

void IpConfigurationWidget::showRemark() {
    if (m_LastSave.success && !m_LastSave.text.empty())
        showBox(QMessageBox::Information, saveReport(), QString(), QMessageBox::Ok);
}

QMessageBox::StandardButton IpConfigurationWidget::showBox(QMessageBox::Icon icon, const QString &text,
                                                           const QString &informativeText,
                                                           QMessageBox::StandardButtons buttons) const {
    discardUserInput(); // typed before there was a question
    QMessageBox box(icon, windowTitle(), text, buttons, const_cast<IpConfigurationWidget *>(this));
    box.setInformativeText(informativeText);
    if (buttons.testFlag(QMessageBox::No))
        box.setDefaultButton(QMessageBox::No);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

// Unsaved changes

bool IpConfigurationWidget::checkSaveChanges() const {
    return m_Editor.isSavePending() &&
           showBox(QMessageBox::Question, QStringLiteral("Do you want to save the changes to the configuration?"),
                   deviceNameText(*m_Editor.device()), QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

bool IpConfigurationWidget::saveBeforeLeaving() {
    if (!m_Editor.isSavePending()) // else the keys typed after that of the new row would be dropped
        return false;
    const Busy busy(m_BusyDepth);
    if (!checkSaveChanges())
        return false;
    bool saved = false;
    guarded("onCurrentItemChanged", [&] { saved = saveEdited(); });
    if (!saved)
        showFailure(QStringLiteral("The configuration could not be saved."), QMessageBox::Ok);
    return saved;
}

bool IpConfigurationWidget::saveBeforeClosing() {
    if (!checkSaveChanges())
        return true;
    bool saved = false;
    guarded("closeEvent", [&] { saved = saveEdited(); });
    if (saved) {
        updateUiFromTreeItem(ui->deviceTree->currentItem());
        return true;
    }
    if (m_Interaction.isCancelled())
        return false;
    return showBox(QMessageBox::Critical,
                   QStringLiteral("The configuration could not be saved.\nWould you like to continue closing the "
                                  "application?\n\nIf you click 'Yes', your configuration will not be changed and the "
                                  "application will close.\nIf you click 'No', you will return to the application."),
                   saveReport(), QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}
