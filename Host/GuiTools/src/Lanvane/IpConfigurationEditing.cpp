// IpConfigurationWidget: the editor's widgets, which show an EditorState and tell it what the user does.

#include "Lanvane/ipconfigurationwidget.h"
#include "ui_ipconfigurationwidget.h"

#include <utility>

using namespace Corvo;
using commissioning::Mode;

void IpConfigurationWidget::fillEditor(const QTreeWidgetItem *item) {
    const OptionalDevice device = ui->deviceTree->hasSeveralSelected() ? std::nullopt : deviceOf(item);
    if (device)
        m_Editor.load(*device, surroundingsOf(item));
    else
        m_Editor.clear();
    showEditorState();
}

void IpConfigurationWidget::updateEditor() {
    // While the selection changes the current row is already another device's.
    const QTreeWidgetItem *item = ui->deviceTree->findDevice(m_Editor.mac());
    if (const OptionalDevice device = deviceOf(item))
        m_Editor.follow(*device, surroundingsOf(item));
    showEditorState();
}

void IpConfigurationWidget::showEditorState() {
    checkModeButton();
    const std::pair<QLineEdit *, EditorState::Field> edits[] = {{ui->editIpAddress, EditorState::IpAddress},
                                                                {ui->editNetmask, EditorState::Netmask},
                                                                {ui->editDefaultGateway, EditorState::DefaultGateway}};
    for (const auto &[edit, field] : edits) {
        if (edit->text() != m_Editor.text(field)) // else the text cursor would move
            edit->setText(m_Editor.text(field));
    }
    updateUiState(ui->deviceTree->currentItem());
}

void IpConfigurationWidget::checkModeButton() {
    const auto mode = m_Editor.chosenMode();
    const std::pair<QRadioButton *, Mode> buttons[] = {
        {ui->btnUsePersistentIp, Mode::Static}, {ui->btnUseDhcp, Mode::Dhcp}, {ui->btnUseAutoIp, Mode::Auto}};
    for (const auto &[button, own] : buttons)
        button->setAutoExclusive(false); // else one could not be unchecked
    for (const auto &[button, own] : buttons)
        button->setChecked(mode == own);
    for (const auto &[button, own] : buttons)
        button->setAutoExclusive(true);
}

void IpConfigurationWidget::updateUiState(QTreeWidgetItem *item) {
    const OptionalDevice device = ui->deviceTree->hasSeveralSelected() ? std::nullopt : deviceOf(item);
    enableWidgets(device && !isInUse(*device));
    if (device && isInUse(*device))
        setHintText(QStringLiteral("The device is in use. Its configuration cannot be changed."));
}

void IpConfigurationWidget::enableWidgets(bool enable) {
    ui->editor->setEnabled(enable);
    ui->btnUsePersistentIp->setEnabled(enable && m_Editor.isSupported(Mode::Static));
    ui->btnUseDhcp->setEnabled(enable && m_Editor.isSupported(Mode::Dhcp));
    ui->btnUseAutoIp->setEnabled(enable && m_Editor.isSupported(Mode::Auto));
    for (QLineEdit *edit : {ui->editIpAddress, ui->editNetmask, ui->editDefaultGateway})
        edit->setEnabled(enable && m_Editor.mode() == Mode::Static);
    setHintText(enable ? m_Editor.hint() : QString());
    const bool isSavable = enable && m_Editor.hasChanges() && isValidConfigInUI();
    ui->btnWriteConfiguration->setEnabled(isSavable);
    ui->btnWriteConfiguration->setDefault(m_Editor.isEditModeActive() && isSavable);
}

void IpConfigurationWidget::ipConfigurationEdited() {
    if (ui->btnUsePersistentIp->isChecked())
        m_Editor.chooseMode(Mode::Static);
    else
        m_Editor.chooseMode(ui->btnUseDhcp->isChecked() ? Mode::Dhcp : Mode::Auto);
    showEditorState();
}

void IpConfigurationWidget::typed(EditorState::Field field, const QString &text) {
    m_Editor.type(field, text);
    showEditorState();
}

void IpConfigurationWidget::on_editIpAddress_textEdited(const QString &text) { typed(EditorState::IpAddress, text); }

void IpConfigurationWidget::on_editNetmask_textEdited(const QString &text) { typed(EditorState::Netmask, text); }

void IpConfigurationWidget::on_editNetmask_editingFinished() {
    if (m_BusyDepth > 0) // a box has taken the focus; what is saved is settled, and the list is the operation's
        return;
    QString mask = ui->editNetmask->text();
    ui->editNetmask->validator()->fixup(mask);
    if (mask != ui->editNetmask->text())
        typed(EditorState::Netmask, mask); // else the next key would bring the prefix length back
}

void IpConfigurationWidget::on_editDefaultGateway_textEdited(const QString &text) {
    typed(EditorState::DefaultGateway, text);
}

void IpConfigurationWidget::onReturnPressed() { ui->btnWriteConfiguration->click(); }

void IpConfigurationWidget::revertEditor() { fillEditor(ui->deviceTree->currentItem()); }

void IpConfigurationWidget::clearEditFlags() {
    m_Editor.clearEditFlags();
    ui->btnWriteConfiguration->setDefault(false);
}
