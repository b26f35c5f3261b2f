#include "Lanvane/DeviceTree.h"

#include "CorvoQtBase/DeviceText.h"
#include "Lanvane/DeviceLister.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QSettings>

#include <algorithm>
#include <memory>

using namespace Corvo;

namespace {

constexpr int IndexRole = Qt::UserRole;
constexpr int KeyRole = Qt::UserRole + 1; // an adapter's name or a device's MAC address
constexpr int HeaderVersion = 2;

QString keyTextOf(const QTreeWidgetItem &item) { return item.data(DeviceTree::ColName, KeyRole).toString(); }

} // namespace

DeviceTree::DeviceTree(QWidget *parent) : QTreeWidget(parent) {
    setHeaderLabels({QString(), QStringLiteral("Serial Number"), QStringLiteral("MAC Address"),
                     QStringLiteral("Status"), QStringLiteral("IP Configuration"), QStringLiteral("IP Address"),
                     QStringLiteral("Subnet Mask")});
    header()->setResizeContentsPrecision(100); // rows, as thousands would take their time
    setUsualColumnWidths();
    connect(&m_Disposal, &QTimer::timeout, this, &DeviceTree::freeDiscarded);
}

DeviceTree::~DeviceTree() { qDeleteAll(m_Discarded); }

// Rows

QTreeWidgetItem *DeviceTree::addAdapterRow(const CNetworkAdapter &adapter, int index) {
    auto *item = new QTreeWidgetItem(this, AdapterRow);
    item->setData(ColName, KeyRole, adapter.name());
    item->setData(ColName, IndexRole, index);
    return item;
}

void DeviceTree::addDeviceRow(const CQuorelGigEDeviceInfo &device) {
    auto item = std::make_unique<QTreeWidgetItem>(DeviceRow); // the view follows each change of a row that it has
    item->setData(ColName, KeyRole, macOf(device));
    m_DeviceRows.insert(macOf(device), item.get());
    showDevice(*item, device);
    if (!device.GetPropertyAvailable(PropAccessible)) {
        item->setText(ColStatus, QStringLiteral("Not checked yet"));
        item->setIcon(ColStatus, QIcon());
    }
    if (QTreeWidgetItem *adapter = findAdapter(displayText(device, PropIfName)))
        adapter->addChild(item.release());
    else
        addTopLevelItem(item.release());
}

void DeviceTree::clearRows() {
    m_DeviceRows.clear();
    for (int i = 0; i < topLevelItemCount(); ++i)
        m_Discarded += topLevelItem(i)->takeChildren();
    clear();
    m_Disposal.start();
}

void DeviceTree::freeDiscarded() {
    constexpr int AtOnce = 500;
    for (int i = 0; i < AtOnce && !m_Discarded.isEmpty(); ++i)
        delete m_Discarded.takeLast();
    if (m_Discarded.isEmpty())
        m_Disposal.stop();
}

void DeviceTree::showAdapter(QTreeWidgetItem &item, const CNetworkAdapter &adapter) {
    item.setText(ColName, adapter.displayName());
    item.setIcon(ColName, m_Icons.adapter());
    item.setFirstColumnSpanned(true);
    item.setExpanded(true);
    item.setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
}

void DeviceTree::showDevice(QTreeWidgetItem &item, const CQuorelGigEDeviceInfo &device) {
    const EDeviceAccessiblityInfo verdict = GetAccessibility(device);
    const QString model = displayText(device.GetModelName());
    item.setText(ColName, plainDeviceText(model));
    item.setIcon(ColName, m_Icons.model(model));
    item.setText(ColSerialNumber, plainDeviceText(displayText(device.GetSerialNumber())));
    item.setText(ColMac, macOf(device));
    item.setText(ColStatus, FormatAccessibility(verdict));
    item.setIcon(ColStatus, m_Icons.accessibility(verdict));
    item.setText(ColIpConfiguration, formatIPConfigurationOf(device));
    item.setText(ColIpAddress, displayText(device.GetIpAddress()));
    item.setText(ColSubnetMask, displayText(device.GetSubnetMask()));
}

// Look-up

QTreeWidgetItem *DeviceTree::findAdapter(const QString &names) const {
    for (const QString &name : names.split(QLatin1Char(';'))) {
        for (int i = 0; i < topLevelItemCount(); ++i) {
            QTreeWidgetItem *item = topLevelItem(i);
            if (item->type() == AdapterRow && keyTextOf(*item) == name)
                return item;
        }
    }
    return nullptr;
}

QTreeWidgetItem *DeviceTree::findDevice(const QString &mac) const { return m_DeviceRows.value(mac); }

DeviceTree::RowKey DeviceTree::keyOf(const QTreeWidgetItem *item) {
    if (!item)
        return {};
    if (item->type() == AdapterRow)
        return {QString(), keyTextOf(*item)};
    return {keyTextOf(*item), item->parent() ? keyTextOf(*item->parent()) : QString()};
}

int DeviceTree::adapterIndexOf(const QTreeWidgetItem *item) {
    return item && item->type() == AdapterRow ? item->data(ColName, IndexRole).toInt() : -1;
}

QTreeWidgetItem *DeviceTree::find(const RowKey &key) const {
    QTreeWidgetItem *item = key.mac.isEmpty() ? nullptr : findDevice(key.mac);
    return item || key.adapterName.isEmpty() ? item : findAdapter(key.adapterName);
}

// What the user sees

DeviceTree::View DeviceTree::view() const {
    return {keyOf(currentItem()), keyOf(itemAt(0, 0)), horizontalScrollBar()->value()};
}

void DeviceTree::restore(const View &view) {
    QTreeWidgetItem *current = find(view.current);
    setCurrentItem(current ? current : topLevelItem(0)); // which scrolls to it
    if (QTreeWidgetItem *top = find(view.top))
        scrollToItem(top, PositionAtTop);
    horizontalScrollBar()->setValue(view.horizontal);
}

// Header

bool DeviceTree::areColumnWidthsUsual() const {
    const int last = header()->logicalIndex(columnCount() - 1); // fills the rest
    for (int column = 0; column < columnCount(); ++column) {
        if (column != last && columnWidth(column) != m_UsualWidths[static_cast<std::size_t>(column)])
            return false;
    }
    return true;
}

void DeviceTree::setUsualColumnWidths() {
    // Until there are devices to go by.
    const char *const usual[] = {"Model Name",         "00000000",        "025AE3000000", "Not Reachable",
                                 "Static IP, Auto IP", "192.168.100.100", "255.255.255.0"};
    for (int column = ColName; column <= ColSubnetMask; ++column) {
        const int textWidth = fontMetrics().horizontalAdvance(QLatin1String(usual[column]));
        const int iconWidth = 2 * iconSize().width();
        m_UsualWidths.push_back(std::max(textWidth + iconWidth, header()->sectionSizeHint(column)));
        setColumnWidth(column, m_UsualWidths.back());
    }
}

void DeviceTree::restoreHeader(const QSettings &settings) {
    if (settings.value("headerver").toInt() == HeaderVersion)
        m_areColumnsSized = header()->restoreState(settings.value("header").toByteArray()) &&
                            settings.value("headersized", true).toBool();
}

void DeviceTree::saveHeader(QSettings &settings) const {
    settings.setValue("headerver", HeaderVersion);
    settings.setValue("header", header()->saveState());
    settings.setValue("headersized", m_areColumnsSized || !areColumnWidthsUsual());
}

void DeviceTree::sizeColumnsOnce() {
    if (m_areColumnsSized || !areColumnWidthsUsual())
        return;
    constexpr int Gap = 8; // between the texts of neighbouring columns
    for (int column = 0; column < columnCount(); ++column) {
        resizeColumnToContents(column);
        setColumnWidth(column, columnWidth(column) + Gap);
    }
    m_areColumnsSized = true;
}
