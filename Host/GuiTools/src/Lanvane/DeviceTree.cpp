#include "Lanvane/DeviceTree.h"

#include "CorvoQtBase/DeviceText.h"
#include "Lanvane/DeviceLister.h"
#include "Lanvane/FindingText.h"
#include "commissioning/DeviceInfos.h"

#include <QEvent>
#include <QHeaderView>
#include <QHostAddress>
#include <QLineEdit>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTreeWidgetItemIterator>

#include <algorithm>
#include <memory>

using namespace Corvo;

namespace {

constexpr int IndexRole = Qt::UserRole;
constexpr int KeyRole = Qt::UserRole + 1;   // an adapter's name or a device's MAC address
constexpr int OrderRole = Qt::UserRole + 2; // of a device's row: what the prescribed order compares

/// Compares addresses as numbers, and shows signs and tool tips without keeping them.
class Row : public QTreeWidgetItem {
public:
    using QTreeWidgetItem::QTreeWidgetItem;
    QVariant data(int column, int role) const override {
        const auto *tree = static_cast<const DeviceTree *>(treeWidget());
        if (tree && role == Qt::ToolTipRole)
            return tree->tipOf(DeviceTree::keyOf(this));
        QVariant own = QTreeWidgetItem::data(column, role);
        if (tree && role == Qt::DecorationRole && column == DeviceTree::ColName && tree->needsAttention(this))
            return tree->withSign(own.value<QIcon>());
        return own;
    }
    bool operator<(const QTreeWidgetItem &other) const override {
        const int column = treeWidget()->header()->sortIndicatorSection();
        if (!treeWidget()->header()->isSortIndicatorShown())
            return data(DeviceTree::ColName, OrderRole).toByteArray() <
                   other.data(DeviceTree::ColName, OrderRole).toByteArray();
        if (column == DeviceTree::ColIpAddress || column == DeviceTree::ColSubnetMask)
            return QHostAddress(text(column)).toIPv4Address() < QHostAddress(other.text(column)).toIPv4Address();
        return text(column).localeAwareCompare(other.text(column)) < 0;
    }
};

/// Lets the user edit names and nothing else.
class NameDelegate : public QStyledItemDelegate {
public:
    explicit NameDelegate(DeviceTree &tree) : QStyledItemDelegate(&tree), m_Tree(tree) {}

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override {
        return index.column() == DeviceTree::ColUserName ? QStyledItemDelegate::createEditor(parent, option, index)
                                                         : nullptr;
    }
    void setModelData(QWidget *editor, QAbstractItemModel * /*model*/, const QModelIndex &index) const override {
        const QString name = static_cast<QLineEdit *>(editor)->text();
        if (name != index.data().toString())
            emit m_Tree.nameEntered(index.sibling(index.row(), DeviceTree::ColName).data(KeyRole).toString(), name);
    }

private:
    DeviceTree &m_Tree;
};

QString keyTextOf(const QTreeWidgetItem &item) { return item.data(DeviceTree::ColName, KeyRole).toString(); }

/// Whether a device was found through the adapter of a row.
bool isIn(const QTreeWidgetItem *adapter, const CQuorelGigEDeviceInfo &device) {
    return adapter != nullptr && displayText(device, PropIfName).split(QLatin1Char(';')).contains(keyTextOf(*adapter));
}

} // namespace

DeviceTree::DeviceTree(QWidget *parent) : QTreeWidget(parent) {
    setHeaderLabels({QString(), QStringLiteral("Serial Number"), QStringLiteral("MAC Address"),
                     QStringLiteral("Status"), QStringLiteral("IP Configuration"), QStringLiteral("IP Address"),
                     QStringLiteral("Subnet Mask"), QStringLiteral("Name")});
    setItemDelegate(new NameDelegate(*this));
    setEditTriggers(DoubleClicked | EditKeyPressed);
    setSelectionMode(ExtendedSelection);
    setUpHeader();
    header()->setResizeContentsPrecision(100); // rows, as thousands would take their time
    setUsualColumnWidths();
    connect(&m_Disposal, &QTimer::timeout, this, &DeviceTree::freeDiscarded);
    connect(this, &QTreeWidget::itemCollapsed, this, &DeviceTree::leaveCollapsed);
}

DeviceTree::~DeviceTree() { qDeleteAll(m_Discarded); }

// Rows

QTreeWidgetItem *DeviceTree::addAdapterRow(const CNetworkAdapter &adapter, int index) {
    auto *item = new Row(this, AdapterRow);
    item->setData(ColName, KeyRole, adapter.name());
    item->setData(ColName, IndexRole, index);
    return item;
}

void DeviceTree::addDeviceRow(const CQuorelGigEDeviceInfo &device) {
    auto item = std::make_unique<Row>(DeviceRow); // the view follows each change of a row that it has
    item->setData(ColName, KeyRole, macOf(device));
    item->setData(ColName, OrderRole, displayText(device.GetModelName()).toUtf8() + '\0' + macOf(device).toUtf8());
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    m_DeviceRows.insert(macOf(device), item.get());
    showDevice(*item, device);
    if (!device.GetPropertyAvailable(PropAccessible)) {
        item->setText(ColStatus, QStringLiteral("Not checked yet"));
        item->setIcon(ColStatus, QIcon());
    }
    QTreeWidgetItem *const row = item.release();
    if (QTreeWidgetItem *adapter = findAdapter(displayText(device, PropIfName)))
        adapter->addChild(row);
    else
        addTopLevelItem(row);
    if (!m_Filter.isEmpty())
        applyFilter(*row);
}

void DeviceTree::showHidden(const commissioning::Camera &camera) {
    const CQuorelGigEDeviceInfo info = commissioning::infoOf(camera);
    if (findDevice(macOf(info)) == nullptr)
        addDeviceRow(info);
    mark(*findDevice(macOf(info)), QStringLiteral("Hidden"));
}

void DeviceTree::showGone(QTreeWidgetItem &item) { mark(item, QStringLiteral("Gone")); }

void DeviceTree::mark(QTreeWidgetItem &item, const QString &status) {
    item.setFlags(item.flags() & ~Qt::ItemIsEditable);
    item.setText(ColStatus, status);
    QFont font;
    font.setItalic(true);
    for (int column = ColName; column <= ColUserName; ++column)
        item.setFont(column, font);
}

void DeviceTree::unmark(QTreeWidgetItem &item) {
    if ((item.flags() & Qt::ItemIsEditable) != 0)
        return;
    item.setFlags(item.flags() | Qt::ItemIsEditable);
    for (int column = ColName; column <= ColUserName; ++column)
        item.setData(column, Qt::FontRole, QVariant());
}

QTreeWidgetItem *DeviceTree::placeAdapterRow(const CNetworkAdapter &adapter, int index) {
    QTreeWidgetItem *const row = findAdapter(adapter.name());
    if (!row)
        return addAdapterRow(adapter, index);
    row->setData(ColName, IndexRole, index);
    return row;
}

void DeviceTree::placeDeviceRow(const CQuorelGigEDeviceInfo &device) {
    QTreeWidgetItem *const parent = findAdapter(displayText(device, PropIfName));
    QTreeWidgetItem *row = findDevice(macOf(device));
    if (row && row->parent() != parent && !isIn(row->parent(), device))
        removeDeviceRow(macOf(device));
    else if (row)
        return showDevice(*row, device);
    addDeviceRow(device);
    row = findDevice(macOf(device));
    if (!parent)
        return;
    int place = parent->childCount() - 1; // where it is now
    const bool isDescending = m_SortColumn >= 0 && m_SortOrder == Qt::DescendingOrder;
    while (place > 0 && (isDescending ? *parent->child(place - 1) < *row : *row < *parent->child(place - 1)))
        --place;
    parent->insertChild(place, parent->takeChild(parent->childCount() - 1));
}

void DeviceTree::removeDeviceRow(const QString &mac) { delete m_DeviceRows.take(mac); }

void DeviceTree::removeAdapterRowsBut(const CNetworkAdapterList &listed) {
    for (int i = topLevelItemCount() - 1; i >= 0; --i) {
        QTreeWidgetItem &item = *topLevelItem(i);
        const bool isListed = std::any_of(listed.begin(), listed.end(), [&](const CNetworkAdapter &adapter) {
            return adapter.name() == keyTextOf(item);
        });
        if (item.type() != AdapterRow || isListed)
            continue;
        item.setData(ColName, IndexRole, -1); // of none
        if (item.childCount() == 0 && !item.isSelected() && &item != currentItem())
            delete &item;
    }
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
    const QString reason = idleReason(m_Situation ? m_Situation->adapter(adapter.name()) : nullptr);
    if (item.text(ColName).isEmpty()) // later it is the user's
        item.setExpanded(true);
    item.setText(ColName, reason.isEmpty() ? adapter.displayName()
                                           : QStringLiteral("%1 (%2)").arg(adapter.displayName(), reason));
    item.setForeground(ColName, reason.isEmpty() ? QBrush() : palette().brush(QPalette::Disabled, QPalette::Text));
    item.setIcon(ColName, m_Icons.adapter());
    item.setFirstColumnSpanned(true);
    item.setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
}

void DeviceTree::showDevice(QTreeWidgetItem &item, const CQuorelGigEDeviceInfo &device) {
    const EDeviceAccessiblityInfo verdict = GetAccessibility(device);
    const QString model = displayText(device.GetModelName());
    unmark(item);
    item.setText(ColName, plainDeviceText(model));
    item.setIcon(ColName, m_Icons.model(model));
    item.setText(ColSerialNumber, plainDeviceText(displayText(device.GetSerialNumber())));
    item.setText(ColMac, macOf(device));
    item.setText(ColStatus, FormatAccessibility(verdict));
    item.setIcon(ColStatus, m_Icons.accessibility(verdict));
    item.setText(ColIpConfiguration, formatIPConfigurationOf(device));
    item.setText(ColIpAddress, displayText(device.GetIpAddress()));
    item.setText(ColSubnetMask, displayText(device.GetSubnetMask()));
    item.setText(ColUserName, plainDeviceText(userDefinedName(device)));
}

bool DeviceTree::needsAttention(const QTreeWidgetItem *item) const {
    const RowKey key = keyOf(item);
    return m_Situation != nullptr && m_Situation->needsAttention(key.mac, key.adapterName);
}

QString DeviceTree::tipOf(const RowKey &key) const {
    const QTreeWidgetItem *item = key.mac.isEmpty() ? nullptr : findDevice(key.mac);
    const QString name = item ? item->text(ColUserName) : QString();
    QString tip = name.isEmpty() ? QString() : deviceTip(QStringLiteral("Name: %1").arg(name));
    if (!m_Situation)
        return tip;
    return tip + findingsTip(item ? m_Situation->ofCamera(key.mac) : m_Situation->ofAdapter(key.adapterName));
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

QTreeWidgetItem *DeviceTree::nextNeedingAttention() const {
    QTreeWidgetItem *first = nullptr;
    QTreeWidgetItem *next = nullptr;
    bool isBehind = currentItem() == nullptr;
    for (QTreeWidgetItemIterator i(const_cast<DeviceTree *>(this)); *i && !next; ++i) {
        if (needsAttention(*i))
            (isBehind ? next : first) = isBehind || !first ? *i : first;
        isBehind = isBehind || *i == currentItem();
    }
    return next ? next : first;
}

// What the user sees

DeviceTree::View DeviceTree::view() const {
    return {keyOf(currentItem()), keyOf(itemAt(0, 0)), horizontalScrollBar()->value(),
            hasSeveralSelected() ? selectedMacs() : QStringList()};
}

void DeviceTree::restore(const View &view) {
    QTreeWidgetItem *current = find(view.current);
    setCurrentItem(current ? current : topLevelItem(0)); // which scrolls to it
    for (const QString &mac : view.selected) {
        if (QTreeWidgetItem *row = findDevice(mac))
            row->setSelected(true);
    }
    if (QTreeWidgetItem *top = find(view.top))
        scrollToItem(top, PositionAtTop);
    horizontalScrollBar()->setValue(view.horizontal);
}

void DeviceTree::keep(const View &view) {
    if (QTreeWidgetItem *current = find(view.current))
        setCurrentItem(current, std::max(currentColumn(), 0),
                       view.selected.isEmpty() ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows
                                               : QItemSelectionModel::NoUpdate);
    // A row that has gone to another adapter is a new one, and Qt has chosen another in its place.
    const QList<QTreeWidgetItem *> several = view.selected.isEmpty() ? QList<QTreeWidgetItem *>() : selectedItems();
    for (QTreeWidgetItem *item : several)
        item->setSelected(false);
    for (const QString &mac : view.selected) {
        if (QTreeWidgetItem *row = findDevice(mac))
            row->setSelected(true);
    }
    QTreeWidgetItem *const top = find(view.top);
    if (top && top != itemAt(0, 0))
        scrollToItem(top, PositionAtTop);
    horizontalScrollBar()->setValue(view.horizontal);
}

void DeviceTree::setFilter(const QString &text) {
    m_Filter = text.trimmed();
    const QList<QTreeWidgetItem *> selected = selectedItems(); // later without those that are hidden
    for (QTreeWidgetItem *item : qAsConst(m_DeviceRows))
        applyFilter(*item);
    if (selected.size() > 1)
        leaveOut(selected, [](const QTreeWidgetItem &row) { return row.isHidden(); });
    if (currentItem()) // what the editor and the menus are about is seen
        currentItem()->setHidden(false);
}

void DeviceTree::applyFilter(QTreeWidgetItem &item) const {
    bool isShown = false;
    for (int column = ColName; column <= ColUserName && !isShown; ++column)
        isShown = item.text(column).contains(m_Filter, Qt::CaseInsensitive);
    item.setHidden(!isShown);
}

void DeviceTree::currentChanged(const QModelIndex &current, const QModelIndex &previous) {
    if (QTreeWidgetItem *row = itemFromIndex(current))
        row->setHidden(false);
    QTreeWidget::currentChanged(current, previous);
}

/// Nobody sees that such a row is one of several.
void DeviceTree::leaveOut(const QList<QTreeWidgetItem *> &selected,
                          const std::function<bool(const QTreeWidgetItem &row)> &isUnseen) {
    for (QTreeWidgetItem *item : selected)
        item->setSelected(!isUnseen(*item));
    const QList<QTreeWidgetItem *> rest = selectedItems();
    if (currentItem() && isUnseen(*currentItem()) && !rest.isEmpty())
        setCurrentItem(rest.first(), std::max(currentColumn(), 0), QItemSelectionModel::NoUpdate);
}

void DeviceTree::leaveCollapsed(QTreeWidgetItem *adapter) {
    leaveOut(selectedItems(), [adapter](const QTreeWidgetItem &row) { return row.parent() == adapter; });
    if (currentItem() && currentItem()->parent() == adapter)
        setCurrentItem(adapter);
}

void DeviceTree::finishEditing() {
    QWidget *const editor = isEditing() ? viewport()->findChild<QLineEdit *>() : nullptr;
    if (!editor)
        return;
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
}

// Selection

std::vector<const QTreeWidgetItem *> DeviceTree::selectedDevices() const {
    std::vector<const QTreeWidgetItem *> rows;
    for (QTreeWidgetItemIterator i(const_cast<DeviceTree *>(this), QTreeWidgetItemIterator::Selected); *i; ++i) {
        if ((*i)->type() == DeviceRow && !(*i)->isHidden())
            rows.push_back(*i);
    }
    return rows;
}

QStringList DeviceTree::selectedMacs() const {
    QStringList macs;
    for (const QTreeWidgetItem *row : selectedDevices())
        macs << keyTextOf(*row);
    return macs;
}

std::vector<int> DeviceTree::visualColumns() const {
    std::vector<int> columns;
    for (int i = 0; i < columnCount(); ++i) {
        if (!isColumnHidden(header()->logicalIndex(i)))
            columns.push_back(header()->logicalIndex(i));
    }
    return columns;
}

QString DeviceTree::textOf(const std::vector<int> &columns) const {
    QStringList lines;
    for (const QTreeWidgetItem *row : selectedDevices()) {
        QStringList cells;
        for (const int column : columns)
            cells << row->text(column);
        lines << cells.join(QLatin1Char('\t'));
    }
    return lines.join(QLatin1Char('\n'));
}

void DeviceTree::settleSelection() {
    if (hasSeveralSelected()) {
        for (int i = 0; i < topLevelItemCount(); ++i)
            topLevelItem(i)->setSelected(topLevelItem(i)->type() != AdapterRow && topLevelItem(i)->isSelected());
    }
    const QList<QTreeWidgetItem *> selected = selectedItems();
    if (selected.isEmpty() && currentItem())
        currentItem()->setSelected(true);
    if (selected.size() == 1 && selected.first() != currentItem())
        setCurrentItem(selected.first(), std::max(currentColumn(), 0), QItemSelectionModel::NoUpdate);
}

/// What is current but not selected would be in the editor without being marked. So Ctrl and an arrow key go to a row
/// without selecting it only when several are selected.
QItemSelectionModel::SelectionFlags DeviceTree::selectionCommand(const QModelIndex &index, const QEvent *event) const {
    const auto command = QTreeWidget::selectionCommand(index, event);
    const bool isKey = event != nullptr && event->type() == QEvent::KeyPress;
    return isKey && command == QItemSelectionModel::NoUpdate && !hasSeveralSelected()
               ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows
               : command;
}

void DeviceTree::sortBy(int column) {
    if (column != m_SortColumn)
        m_SortOrder = Qt::AscendingOrder;
    else if (m_SortOrder == Qt::AscendingOrder)
        m_SortOrder = Qt::DescendingOrder;
    else
        column = -1;
    m_SortColumn = column;
    header()->setSortIndicatorShown(column >= 0);
    if (column >= 0)
        header()->setSortIndicator(column, m_SortOrder);
    sortRows();
}

void DeviceTree::sortRows() {
    const bool isSorted = m_SortColumn >= 0;
    if (!isSorted && !m_wasSorted) // they are in that order
        return;
    m_wasSorted = isSorted;
    for (int i = 0; i < topLevelItemCount(); ++i)
        topLevelItem(i)->sortChildren(std::max(m_SortColumn, 0), isSorted ? m_SortOrder : Qt::AscendingOrder);
}
