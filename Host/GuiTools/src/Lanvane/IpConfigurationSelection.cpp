// IpConfigurationWidget: several rows at a time, and what the context menu does with them.

#include "Lanvane/ipconfigurationwidget.h"
#include "ui_ipconfigurationwidget.h"

#include <QMenu>
#include <QTimer>

void IpConfigurationWidget::onSelectionChanged() {
    if (m_BusyDepth > 0)
        return;
    DeviceTree &tree = *ui->deviceTree;
    tree.settleSelection();
    const bool wasShowingSeveral = m_isShowingSeveral;
    m_isShowingSeveral = tree.hasSeveralSelected();
    if (!m_isShowingSeveral && !wasShowingSeveral) // the current row is all there is to show
        return;
    bool saved = false;
    guarded("onSelectionChanged", [&] {
        saved = saveBeforeLeaving(); // as when another row becomes the current one
        updateUiFromTreeItem(tree.currentItem());
    });
    if (saved)
        QTimer::singleShot(0, this, &IpConfigurationWidget::refresh);
}

bool IpConfigurationWidget::isCameraSelected() const { return !ui->deviceTree->selectedMacs().isEmpty(); }

void IpConfigurationWidget::onShowContextMenu(const QPoint &position) {
    const QTreeWidgetItem *item = ui->deviceTree->itemAt(position);
    if (!item || item->type() == DeviceTree::AdapterRow)
        return;
    Q_ASSERT_X(item->type() == DeviceTree::DeviceRow, "onShowContextMenu", "Unknown treeitem type");
    QMenu menu(this);
    const bool isSeveral = ui->deviceTree->hasSeveralSelected();
    if (isSeveral) {
        connect(menu.addAction(QStringLiteral("&Configure Selected...")), &QAction::triggered, this,
                &IpConfigurationWidget::configureSelected);
    } else {
        QAction *assign = menu.addAction(QStringLiteral("&Assign Temporary IP Address..."));
        connect(assign, SIGNAL(triggered()), this, SLOT(onAssignTemporaryIPAddress()));
        assign->setEnabled(deviceOf(item).has_value()); // not for one whose answers do not get through
        addMakeUsable(menu);
    }
    menu.addSeparator();
    const auto addCopy = [&](const char *one, const char *several, int column) {
        connect(menu.addAction(QLatin1String(isSeveral ? several : one)), &QAction::triggered, this,
                [this, column] { copySelected(column); });
    };
    addCopy("&Copy Row", "Copy &Rows", -1);
    addCopy("Copy &IP Address", "Copy &IP Addresses", DeviceTree::ColIpAddress);
    addCopy("Copy &MAC Address", "Copy &MAC Addresses", DeviceTree::ColMac);
    menu.exec(ui->deviceTree->viewport()->mapToGlobal(position));
}
