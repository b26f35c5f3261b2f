#pragma once

#include "Lanvane/DeviceDisplay.h"
#include "Lanvane/Situation.h"

#include <QHash>
#include <QTimer>
#include <QTreeWidget>

#include <functional>
#include <vector>

class QSettings;

/// The tree of network adapters and, below each, of the devices found through it: its rows, the look-up of rows, its
/// header and its scroll position.
///
/// Rows go when the list is filled anew. What has to survive that, or an event loop, is held by MAC address or adapter
/// name (RowKey), never by a pointer to an item.
class DeviceTree : public QTreeWidget {
    Q_OBJECT

public:
    enum Column {
        ColName,
        ColSerialNumber,
        ColMac,
        ColStatus,
        ColIpConfiguration,
        ColIpAddress,
        ColSubnetMask,
        ColUserName
    };
    enum RowType { AdapterRow = QTreeWidgetItem::UserType + 1, DeviceRow };

    /// Names a row: the MAC address of a device's, else the adapter's. Both empty for none.
    struct RowKey {
        QString mac;
        QString adapterName; ///< of the adapter itself, or of the one that the device stands under
    };
    /// What the user has before his eyes.
    struct View {
        RowKey current;
        RowKey top;
        int horizontal = 0;   ///< scroll position in pixels
        QStringList selected; ///< MAC addresses, when there are several
    };

    explicit DeviceTree(QWidget *parent = nullptr);
    ~DeviceTree() override;

    /// What it shows of what is wrong: signs and tool tips. \param situation not owned; refreshSigns after it changed.
    void setSituation(const Situation *situation) { m_Situation = situation; }
    void refreshSigns() { viewport()->update(); }
    bool needsAttention(const QTreeWidgetItem *item) const;
    QIcon withSign(const QIcon &icon) const { return m_Icons.inNeed(icon); }
    QString tipOf(const RowKey &key) const;

    /// \param index of the adapter in its list.
    QTreeWidgetItem *addAdapterRow(const CNetworkAdapter &adapter, int index);
    /// Under the first adapter of those it was found through that has a row, else a row of its own.
    void addDeviceRow(const Corvo::CQuorelGigEDeviceInfo &device);
    /// Adds the row, or makes the one that is there that of the index.
    QTreeWidgetItem *placeAdapterRow(const CNetworkAdapter &adapter, int index);
    /// Adds the row at its place in the order, or changes the one that is there.
    void placeDeviceRow(const Corvo::CQuorelGigEDeviceInfo &device);
    /// The row of one that only the listener heard, added or changed.
    void showHidden(const commissioning::Camera &camera);
    /// That a device no longer answers.
    void showGone(QTreeWidgetItem &item);
    void removeDeviceRow(const QString &mac);
    /// Those that are not in the list, unless there is something below them or they are selected.
    void removeAdapterRowsBut(const CNetworkAdapterList &listed);
    void clearRows();
    void showAdapter(QTreeWidgetItem &item, const CNetworkAdapter &adapter);
    void showDevice(QTreeWidgetItem &item, const Corvo::CQuorelGigEDeviceInfo &device);

    /// Hides the devices that have this text in none of their columns, but never the current row, which is what the
    /// user changes. Empty: shows all.
    void setFilter(const QString &text);
    /// Sorts within the adapters; the same column again: the other way round, then as at first, by model and MAC.
    void sortBy(int column);
    /// After rows were added.
    void sortRows();
    /// Of the selected devices that are shown, in their order.
    QStringList selectedMacs() const;
    /// The same rows, a line each, with tabs between the columns as they are shown.
    QString selectedText() const { return textOf(visualColumns()); }
    /// The same of one column.
    QString selectedText(int column) const { return textOf({column}); }
    bool hasSeveralSelected() const { return selectedItems().size() > 1; }
    /// After the user has changed the selection: adapters are none of several, some row is always selected, and one
    /// that is selected alone is the current one.
    void settleSelection();

    /// \param names several joined by ";", of which the first that has a row counts.
    QTreeWidgetItem *findAdapter(const QString &names) const;
    QTreeWidgetItem *findDevice(const QString &mac) const;

    static RowKey keyOf(const QTreeWidgetItem *item);
    /// Of an adapter's row; -1 for any other.
    static int adapterIndexOf(const QTreeWidgetItem *item);

    /// The next row after the current one that needs attention, hidden by the filter or not; null when none does.
    QTreeWidgetItem *nextNeedingAttention() const;

    View view() const;
    /// Selects and scrolls as it was. Where the row is gone its adapter's is selected, else the first.
    void restore(const View &view);
    /// Undoes what rows that came and went have moved.
    void keep(const View &view);
    /// Whether the user is entering a name.
    bool isEditing() const { return state() == EditingState; }
    /// Takes the name that is being entered, if one is, as when the user goes on to something else.
    void finishEditing();

    void restoreHeader(const QSettings &settings);
    void saveHeader(QSettings &settings) const;
    /// To the first devices; from then on, and when the user has chosen them, the widths are the user's.
    /// \returns whether it was done.
    bool sizeColumnsOnce();
    /// What it is too narrow for all of its columns.
    int missingWidth() const;
    /// Moves address and mask next to the models, which get what room is left, so that they are seen without scrolling.
    void bringAddressesForward();

protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index, const QEvent *event) const override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;

signals:
    /// The user has entered a name for a device.
    void nameEntered(const QString &mac, const QString &name);

private:
    static void mark(QTreeWidgetItem &item, const QString &status);
    static void unmark(QTreeWidgetItem &item);
    void freeDiscarded();
    QTreeWidgetItem *find(const RowKey &key) const;
    void setUpHeader();
    void setUsualColumnWidths();
    void applyFilter(QTreeWidgetItem &item) const;
    void leaveOut(const QList<QTreeWidgetItem *> &selected,
                  const std::function<bool(const QTreeWidgetItem &row)> &isUnseen);
    void leaveCollapsed(QTreeWidgetItem *adapter);
    std::vector<const QTreeWidgetItem *> selectedDevices() const;
    std::vector<int> visualColumns() const;
    QString textOf(const std::vector<int> &columns) const;
    bool areColumnWidthsUsual() const;
    /// Of the column with the models, for so many characters.
    int nameWidth(int characters) const;

    mutable RowIcons m_Icons;
    const Situation *m_Situation = nullptr;
    QHash<QString, QTreeWidgetItem *> m_DeviceRows; ///< by MAC address
    QList<QTreeWidgetItem *> m_Discarded;           ///< of the list before, to be freed a few at a time
    QTimer m_Disposal;
    std::vector<int> m_UsualWidths; ///< by column
    QString m_Filter;
    int m_SortColumn = -1; ///< -1: prescribed order
    Qt::SortOrder m_SortOrder = Qt::AscendingOrder;
    bool m_wasSorted = false; ///< by a column
    bool m_areColumnsSized = false;
};
