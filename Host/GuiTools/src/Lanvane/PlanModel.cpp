#include "Lanvane/PlanModel.h"

#include "CorvoQtBase/DeviceText.h"
#include "commissioning/Words.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPalette>
#include <QStyle>

#include <optional>

using commissioning::Mode;
using commissioning::PlanColumn;

namespace {

/// None for what the user does not edit.
std::optional<PlanColumn> planColumn(int column) {
    switch (column) {
    case PlanModel::ColCamera:
        return PlanColumn::Camera;
    case PlanModel::ColMode:
        return PlanColumn::Mode;
    case PlanModel::ColAddress:
        return PlanColumn::IpAddress;
    case PlanModel::ColMask:
        return PlanColumn::Mask;
    case PlanModel::ColGateway:
        return PlanColumn::Gateway;
    case PlanModel::ColName:
        return PlanColumn::Name;
    default:
        return std::nullopt;
    }
}

/// A mode as the list names it; any other word as it is.
QString modeText(const QString &word) {
    for (const Mode mode : {Mode::Static, Mode::Dhcp, Mode::Auto}) {
        if (word == QLatin1String(toText(mode)))
            return modeName(mode);
    }
    return word;
}

} // namespace

PlanModel::PlanModel(PlanTable table, QObject *parent) : QAbstractTableModel(parent), m_Table(std::move(table)) {}

void PlanModel::leaveOut(const std::set<int> &rows) {
    beginResetModel(); // what was wrong with others because of them no longer is
    m_Table.removeRows(rows);
    endResetModel();
    emit changed();
}

int PlanModel::rowCount(const QModelIndex &parent) const { return parent.isValid() ? 0 : m_Table.rowCount(); }

int PlanModel::columnCount(const QModelIndex &parent) const { return parent.isValid() ? 0 : ColOutcome + 1; }

QString PlanModel::shownText(int row, int column) const {
    switch (column) {
    case ColCamera:
        return m_Table.cameraText(row);
    case ColMac:
        return m_Table.macText(row);
    case ColNow:
        return m_Table.nowText(row);
    case ColDeed:
        return m_Table.deed(row);
    case ColOutcome:
        return m_Table.outcome(row);
    default:
        break;
    }
    const PlanColumn cell = *planColumn(column);
    const QString typed = m_Table.text(row, cell);
    const QString text = typed.isEmpty() ? m_Table.usualText(row, cell) : typed;
    return plainDeviceText(cell == PlanColumn::Mode ? modeText(text) : text);
}

QString PlanModel::hint(int row, int column) const {
    const auto cell = planColumn(column);
    const QString problem = cell ? m_Table.problem(row, *cell) : QString();
    return problem.isEmpty() ? shownText(row, column) : problem;
}

QVariant PlanModel::icon(int row, int column) const {
    const auto cell = planColumn(column);
    const bool isWrong = cell ? !m_Table.problem(row, *cell).isEmpty() : column == ColDeed && m_Table.hasProblem(row);
    const bool isOutcome = column == ColOutcome && !m_Table.outcome(row).isEmpty();
    const QStyle &style = *QApplication::style();
    if (isWrong || (isOutcome && m_Table.hasFailed(row)))
        return style.standardIcon(QStyle::SP_MessageBoxWarning);
    return isOutcome ? style.standardIcon(QStyle::SP_DialogApplyButton) : QVariant();
}

QVariant PlanModel::data(const QModelIndex &index, int role) const {
    const auto cell = planColumn(index.column());
    switch (role) {
    case Qt::DisplayRole:
        return shownText(index.row(), index.column());
    case Qt::EditRole:
        return cell ? m_Table.text(index.row(), *cell) : QVariant();
    case Qt::ToolTipRole:
        return deviceTip(hint(index.row(), index.column()));
    case Qt::DecorationRole:
        return icon(index.row(), index.column());
    case Qt::ForegroundRole: // what the camera keeps or what is decided for it
        return cell && *cell != PlanColumn::Camera && m_Table.text(index.row(), *cell).isEmpty()
                   ? QVariant(QApplication::palette().placeholderText())
                   : QVariant();
    default:
        return {};
    }
}

bool PlanModel::setData(const QModelIndex &index, const QVariant &value, int role) {
    const auto cell = planColumn(index.column());
    if (role != Qt::EditRole || !cell)
        return false;
    if (value.toString() != m_Table.text(index.row(), *cell))
        change([&](PlanTable &table) { table.setText(index.row(), *cell, value.toString()); });
    return true;
}

QVariant PlanModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static const char *const titles[] = {
        "Camera", "MAC Address",       "Now",   "Mode", "IP Address", "Subnet Mask", "Gateway",
        "Name",   "What Will Be Done", "Result"};
    if (role != Qt::DisplayRole)
        return {};
    return orientation == Qt::Horizontal ? QVariant(QLatin1String(titles[section])) : QVariant(m_Table.number(section));
}

Qt::ItemFlags PlanModel::flags(const QModelIndex &index) const {
    const bool isEditable = m_Table.isEditable() && index.column() >= ColMode && planColumn(index.column());
    return QAbstractTableModel::flags(index) | (isEditable ? Qt::ItemIsEditable : Qt::NoItemFlags);
}

// Delegate

QWidget *PlanDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                    const QModelIndex &index) const {
    auto *self = const_cast<PlanDelegate *>(this);
    if (index.column() == PlanModel::ColMode) {
        auto *modes = new QComboBox(parent);
        for (const Mode mode : {Mode::Static, Mode::Dhcp, Mode::Auto})
            modes->addItem(modeName(mode), QLatin1String(toText(mode)));
        connect(modes, QOverload<int>::of(&QComboBox::activated), self,
                [self, modes] { emit self->commitData(modes); });
        return modes;
    }
    QWidget *editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto *edit = qobject_cast<QLineEdit *>(editor)) {
        edit->setMaxLength(64);
        connect(edit, &QLineEdit::textEdited, self, [self, edit] { emit self->commitData(edit); });
    }
    return editor;
}

void PlanDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const {
    const QString text = index.data(Qt::EditRole).toString();
    if (auto *modes = qobject_cast<QComboBox *>(editor))
        modes->setCurrentIndex(modes->findData(text));
    else if (auto *edit = qobject_cast<QLineEdit *>(editor); edit != nullptr && edit->text() != text)
        edit->setText(text); // else the text cursor would move
}

void PlanDelegate::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const {
    const auto *modes = qobject_cast<QComboBox *>(editor);
    if (!modes)
        QStyledItemDelegate::setModelData(editor, model, index);
    else if (modes->currentIndex() >= 0)
        model->setData(index, modes->currentData());
}
