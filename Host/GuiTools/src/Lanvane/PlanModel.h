#pragma once

#include "Lanvane/PlanTable.h"

#include <QAbstractTableModel>
#include <QStyledItemDelegate>

#include <set>

/// Shows a PlanTable in a view and lets the user edit it there.
class PlanModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { ColCamera, ColMac, ColNow, ColMode, ColAddress, ColMask, ColGateway, ColName, ColDeed, ColOutcome };

    PlanModel(PlanTable table, QObject *parent);

    const PlanTable &table() const { return m_Table; }
    /// Changes the table, but not its number of rows, and shows it anew.
    template <class Work> void change(Work work) {
        work(m_Table);
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
        emit headerDataChanged(Qt::Vertical, 0, rowCount() - 1);
        emit changed();
    }
    void leaveOut(const std::set<int> &rows);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    void changed();

private:
    QString shownText(int row, int column) const;
    QString hint(int row, int column) const;
    QVariant icon(int row, int column) const;

    PlanTable m_Table;
};

/// Edits a cell: a mode is chosen, anything else typed. The table is told with each key.
class PlanDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
};
