// IpConfigurationWidget: the list that is kept up to date. Rows change in place; nothing typed, selected or scrolled is
// disturbed.

#include "Lanvane/ipconfigurationwidget.h"
#include "ui_ipconfigurationwidget.h"

#include <QApplication>
#include <QSet>
#include <QSignalBlocker>

#include <utility>

using namespace Corvo;

void IpConfigurationWidget::setKeptUpToDate(bool isKept) { m_Background.setEnabled(isKept); }

void IpConfigurationWidget::takeUpdate(commissioning::Diagnosis found) {
    DeviceTree &tree = *ui->deviceTree;
    // A name is edited, or a menu or dialog is about a row: there will be another update.
    if (tree.isEditing() || QApplication::activePopupWidget() || QApplication::activeModalWidget())
        return;
    const QSignalBlocker blocker(tree);
    const DeviceTree::View view = tree.view();
    const Situation before = std::exchange(m_Situation, {});
    updateAdapters(found.observation.adapters);
    updateDevices(std::exchange(found.devices, {}));
    tree.removeAdapterRowsBut(m_NetworkAdapters);
    takeSituation(Situation(std::move(found), true));
    showHiddenDevices();
    forgetHidden(before);
    tree.keep(view);
    updateSelectionInfo(tree.currentItem());
    updateEditor();
}

void IpConfigurationWidget::forgetHidden(const Situation &before) {
    for (const commissioning::Camera &camera : before.inventory().cameras) {
        const QString mac = QString::fromStdString(camera.mac);
        const QTreeWidgetItem *const row = ui->deviceTree->findDevice(mac);
        const bool isKnown = m_pDeviceLister->find(mac) != nullptr || m_Situation.hiddenCamera(mac) != nullptr;
        if (row && !isKnown && !row->isSelected() && row != ui->deviceTree->currentItem())
            ui->deviceTree->removeDeviceRow(mac);
    }
}

void IpConfigurationWidget::updateAdapters(const std::vector<commissioning::Adapter> &adapters) {
    commissioning::Diagnosis known; // what their rows say
    known.observation.adapters = adapters;
    m_Situation = Situation(std::move(known), false);
    m_NetworkAdapters = usableAdapters();
    m_NetworkAdapters += idleAdapters(adapters, m_NetworkAdapters);
    for (int i = 0; i < m_NetworkAdapters.size(); ++i)
        UpdateTreeItemFromNetworkAdapter(ui->deviceTree->placeAdapterRow(m_NetworkAdapters[i], i),
                                         &m_NetworkAdapters[i]);
}

void IpConfigurationWidget::updateDevices(DeviceLister::DeviceInfoList_t devices) {
    constexpr int Patience = 2;  // searches without it, until it is said to be gone
    constexpr int Farewell = 10; // and until its row goes
    DeviceTree &tree = *ui->deviceTree;
    QSet<QString> found;
    for (const CDeviceInfo &device : devices) {
        found.insert(macOf(device));
        tree.placeDeviceRow(device);
    }
    for (const CDeviceInfo &device : m_pDeviceLister->devices()) {
        const QString mac = macOf(device);
        QTreeWidgetItem *const row = tree.findDevice(mac);
        if (found.contains(mac) || !row)
            continue;
        const int missed = ++m_Missed[mac];
        const bool isKept = missed < Farewell || row->isSelected() || row == tree.currentItem();
        if (isKept)
            devices.push_back(device);
        else
            tree.removeDeviceRow(mac);
        if (isKept && missed >= Patience)
            tree.showGone(*row);
    }
    for (const QString &mac : found)
        m_Missed.remove(mac);
    DeviceLister::Content content(std::move(devices));
    m_pDeviceLister->swap(content);
}
