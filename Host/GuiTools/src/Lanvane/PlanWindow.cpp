#include "Lanvane/PlanWindow.h"

#include "Lanvane/AddressMap.h"
#include "Lanvane/PlanModel.h"
#include "commissioning/AddressRules.h"
#include "commissioning/AddressText.h"
#include "commissioning/FreeAddresses.h"
#include "commissioning/Interaction.h"
#include "commissioning/Search.h"
#include "commissioning/TakenAddresses.h"
#include "commissioning/WantedAddresses.h"
#include "commissioning/Words.h"

#include <QComboBox>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTableView>

#include <algorithm>
#include <set>

using namespace commissioning;

namespace {

constexpr int MessageLines = 4;

QLabel *plainLabel(const QString &text) {
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

/// The first lines, and how many more there are.
QString firstLines(const QString &text) {
    const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (lines.size() <= MessageLines)
        return lines.join(QLatin1Char('\n'));
    return lines.mid(0, MessageLines - 1).join(QLatin1Char('\n')) +
           QStringLiteral("\nAnd %1 more problems.").arg(lines.size() - MessageLines + 1);
}

QString cameras(int count) { return count == 1 ? QStringLiteral("1 camera") : QStringLiteral("%1 cameras").arg(count); }

} // namespace

PlanWindow::PlanWindow(const PlanTools &tools, PlanTable table, const PlanOrder &order, QWidget *parent)
    : QDialog(parent), m_Tools(tools), m_Order(order), m_pModel(new PlanModel(std::move(table), this)),
      m_pMessage(plainLabel(QString())), m_pBar(new QProgressBar) {
    setObjectName(QStringLiteral("PlanWindow"));
    setWindowTitle(order.title);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    auto *layout = new QVBoxLayout(this);
    if (!order.note.isEmpty())
        layout->addWidget(plainLabel(order.note));
    layout->addWidget(createFields());
    layout->addWidget(createTable(), 1);
    m_pMessage->setObjectName(QStringLiteral("planMessage"));
    m_pMessage->setMinimumHeight(MessageLines * fontMetrics().lineSpacing()); // so that the table stays where it is
    m_pMessage->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    layout->addWidget(m_pMessage);
    m_pBar->setObjectName(QStringLiteral("planProgress"));
    m_pBar->setAccessibleName(QStringLiteral("Progress"));
    m_pBar->setVisible(false);
    layout->addWidget(m_pBar);
    layout->addWidget(createButtons());
    for (QWidget *widget : {m_pFields, static_cast<QWidget *>(m_pRemove)})
        widget->setVisible(m_pModel->table().isEditable());
    connect(m_pModel, &PlanModel::changed, this, &PlanWindow::showState);
    connect(m_pView->selectionModel(), &QItemSelectionModel::currentChanged, this, &PlanWindow::showState);
    if (order.fills)
        showStart();
    showState();
    sizeToContent();
}

PlanWindow::~PlanWindow() = default;

// What is there

QLineEdit *PlanWindow::createField(const char *name, PlanColumn column) {
    auto *field = new QLineEdit;
    field->setObjectName(QLatin1String(name));
    field->setMaxLength(64);
    connect(field, &QLineEdit::textEdited, this, [this, column](const QString &text) {
        m_pModel->change([&](PlanTable &table) { table.setAll(column, text); });
    });
    return field;
}

QWidget *PlanWindow::createFields() {
    m_pFields = new QGroupBox(QStringLiteral("For All Cameras"));
    m_pMode = new QComboBox;
    m_pMode->setObjectName(QStringLiteral("planMode"));
    m_pMode->addItem(QStringLiteral("As listed"));
    for (const Mode mode : {Mode::Static, Mode::Dhcp, Mode::Auto})
        m_pMode->addItem(modeName(mode), QLatin1String(toText(mode)));
    connect(m_pMode, QOverload<int>::of(&QComboBox::activated), this, &PlanWindow::chooseMode);
    QWidget *start = createStart();
    QLineEdit *mask = createField("planMask", PlanColumn::Mask);
    QLineEdit *gateway = createField("planGateway", PlanColumn::Gateway);
    auto *grid = new QGridLayout(m_pFields);
    const std::pair<const char *, QWidget *> fields[] = {
        {"&Mode:", m_pMode}, {"Subnet Mas&k:", mask}, {"&Start Address:", start}, {"&Gateway:", gateway}};
    for (int i = 0; i < 4; ++i) {
        auto *label = new QLabel(QLatin1String(fields[i].first));
        label->setBuddy(fields[i].second == start ? m_pStart : fields[i].second);
        grid->addWidget(label, i / 2, i % 2 * 2);
        grid->addWidget(fields[i].second, i / 2, i % 2 * 2 + 1);
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    return m_pFields;
}

QWidget *PlanWindow::createStart() {
    m_pStart = new QLineEdit;
    m_pStart->setObjectName(QStringLiteral("planStart"));
    m_pStart->setMaxLength(64);
    m_pStart->setToolTip(
        QStringLiteral("All cameras get static addresses that count up from this one, past those that are taken."));
    connect(m_pStart, &QLineEdit::textEdited, this, &PlanWindow::fillAddresses);
    auto *map = new QPushButton(QStringLiteral("Ma&p..."));
    map->setObjectName(QStringLiteral("planMap"));
    map->setToolTip(QStringLiteral("Shows who has which address"));
    map->setAutoDefault(false);
    map->setEnabled(m_pModel->table().adapter() != nullptr);
    connect(map, &QPushButton::clicked, this, &PlanWindow::openMap);
    auto *area = new QWidget;
    auto *row = new QHBoxLayout(area);
    row->setContentsMargins({});
    row->addWidget(m_pStart, 1);
    row->addWidget(map);
    return area;
}

QWidget *PlanWindow::createTable() {
    m_pView = new QTableView;
    m_pView->setObjectName(QStringLiteral("planTable"));
    m_pView->setAccessibleName(QStringLiteral("Cameras"));
    m_pView->setModel(m_pModel);
    m_pView->setItemDelegate(new PlanDelegate(m_pView));
    m_pView->setAlternatingRowColors(true);
    m_pView->setWordWrap(false);
    m_pView->setTabKeyNavigation(false); // Tab goes on to the buttons
    m_pView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_pView->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::SelectedClicked |
                             QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    m_pView->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_pView->verticalHeader()->setDefaultSectionSize(fontMetrics().lineSpacing() + 10);
    m_pView->horizontalHeader()->setHighlightSections(false);
    m_pView->horizontalHeader()->setStretchLastSection(true);
    m_pView->setColumnHidden(PlanModel::ColOutcome, true); // until there is one
    for (int column = PlanModel::ColMode; column <= PlanModel::ColName; ++column)
        m_pView->setColumnHidden(column, !m_pModel->table().isEditable()); // what will be done says it all
    return m_pView;
}

QWidget *PlanWindow::createButtons() {
    auto *area = new QWidget;
    auto *row = new QHBoxLayout(area);
    row->setContentsMargins({});
    const auto add = [&](const char *name, const char *text, auto slot) {
        auto *button = new QPushButton(QLatin1String(text));
        button->setObjectName(QLatin1String(name));
        button->setAutoDefault(false); // Enter belongs to the fields
        connect(button, &QPushButton::clicked, this, slot);
        row->addWidget(button);
        return button;
    };
    m_pRemove = add("planRemove", "&Remove Row", &PlanWindow::removeSelectedRows);
    m_pRemove->setToolTip(QStringLiteral("Leaves the selected cameras as they are"));
    row->addStretch(1);
    m_pApply = add("planApply", "&Apply", &PlanWindow::apply);
    m_pClose = add("planClose", "Close", &PlanWindow::reject);
    return area;
}

/// As wide as what there is, as far as the screen goes.
void PlanWindow::sizeToContent() {
    constexpr int Gap = 10;
    const int most = 48 * fontMetrics().averageCharWidth();
    QHeaderView &header = *m_pView->horizontalHeader();
    m_pView->resizeColumnsToContents();
    int width = m_pView->verticalHeader()->sizeHint().width() + 8 * Gap;
    for (int column = 0; column < header.count(); ++column) {
        const int sign = column == PlanModel::ColAddress ? style()->pixelMetric(QStyle::PM_SmallIconSize) + Gap
                                                         : 0; // where most goes wrong
        header.resizeSection(column, std::min(header.sectionSize(column) + Gap + sign, most));
        width += m_pView->isColumnHidden(column) ? 0 : header.sectionSize(column);
    }
    constexpr int LeastRows = 6;
    constexpr int MostRows = 16;
    const int rows = std::clamp(m_pModel->rowCount(), LeastRows, MostRows);
    const QSize other(0, sizeHint().height() - m_pView->sizeHint().height() + header.sizeHint().height() + 2 * Gap);
    const QSize wanted = other + QSize(width, rows * m_pView->verticalHeader()->defaultSectionSize());
    resize(wanted.expandedTo(size()).boundedTo(QGuiApplication::primaryScreen()->availableSize() - QSize(20, 40)));
}

// What the user does

void PlanWindow::showStart() {
    const auto start = m_pModel->table().suggestedStart();
    m_pMode->setCurrentIndex(m_pMode->findData(QLatin1String(toText(Mode::Static))));
    if (start) {
        m_pStart->setText(QString::fromStdString(toText(*start)));
        m_pStart->selectAll();
        m_pStart->setFocus();
    }
    chooseMode();
}

void PlanWindow::chooseMode() {
    const QString mode = m_pMode->currentData().toString();
    if (!mode.isEmpty())
        m_pModel->change([&](PlanTable &table) { table.setAll(PlanColumn::Mode, mode); });
    if (mode == QLatin1String(toText(Mode::Static)))
        fillAddresses(m_pStart->text());
}

void PlanWindow::fillAddresses(const QString &start) {
    const auto address = addressFrom(start.trimmed().toStdString());
    if (!address)
        return showState(); // the rest is being typed
    m_pMode->setCurrentIndex(m_pMode->findData(QLatin1String(toText(Mode::Static))));
    m_pModel->change([&](PlanTable &table) { table.fill(*address); });
}

void PlanWindow::openMap() {
    const PlanTable &table = m_pModel->table();
    const Adapter &adapter = *table.adapter();
    const Address start = addressFrom(m_pStart->text().trimmed().toStdString()).value_or(0);
    const AdapterAddress *subnet = subnetOf(&adapter, start);
    const auto picked =
        pickAddress(this, table.inventory(), adapter, subnet ? *subnet : *homeSubnet(adapter), start, {}, &m_Known);
    m_pModel->change([&](PlanTable &own) { own.exclude(m_Known.taken); });
    if (!picked)
        return;
    m_pStart->setText(QString::fromStdString(toText(*picked)));
    fillAddresses(m_pStart->text());
}

void PlanWindow::removeSelectedRows() {
    std::set<int> rows;
    for (const QModelIndex &index : m_pView->selectionModel()->selectedRows())
        rows.insert(index.row());
    m_pModel->leaveOut(rows);
}

void PlanWindow::reject() {
    if (!m_isRunning)
        return QDialog::reject();
    m_Tools.operation.cancel();
    m_pClose->setEnabled(false);
    showState();
}

// What is shown

int PlanWindow::shownRow() const {
    const PlanTable &table = m_pModel->table();
    const int current = m_pView->currentIndex().row();
    const int chosen = current < table.rowCount() ? current : -1;
    const int wrong = table.firstProblem();
    return wrong < 0 || (chosen >= 0 && table.hasProblem(chosen)) ? chosen : wrong;
}

QString PlanWindow::rowText() const {
    const PlanTable &table = m_pModel->table();
    const int row = shownRow();
    if (row < 0)
        return {};
    const QString text = table.hasProblem(row) || !table.hasFailed(row) ? table.deed(row) : table.outcome(row);
    return QStringLiteral("\nRow %1, %2: %3").arg(QString::number(table.number(row)), table.cameraText(row), text);
}

QString PlanWindow::stateText() const {
    const PlanTable &table = m_pModel->table();
    if (m_isRunning && m_Tools.operation.isCancelled())
        return QStringLiteral("Cancelling: cameras in hand are finished, no other is begun...");
    if (m_isLooking)
        return QStringLiteral("Looking whether the new addresses are free...");
    if (m_isRunning)
        return m_Progress.text();
    if (!m_pStart->text().isEmpty() && !addressFrom(m_pStart->text().trimmed().toStdString()))
        return QStringLiteral("The start address is not an IPv4 address.");
    if (!table.problems().isEmpty())
        return QStringLiteral("This plan cannot be applied:\n") + firstLines(table.problems());
    if (table.firstProblem() >= 0)
        return m_Summary + (m_Summary.isEmpty() ? QStringLiteral("Nothing is") : QStringLiteral("\nNothing more is")) +
               QStringLiteral(" applied before the marked cells are right.") + rowText();
    const QString plan =
        table.changeCount() == 0
            ? QStringLiteral("There is nothing to change.")
            : QStringLiteral("%1 of %2 will be changed.").arg(table.changeCount()).arg(cameras(table.rowCount()));
    if (m_Summary.isEmpty())
        return plan + rowText();
    const bool isUnfinished = m_wasApplied && table.changeCount() > 0;
    return m_Summary + (isUnfinished ? QStringLiteral(" Apply does what is not done yet.") : QString()) + rowText();
}

void PlanWindow::showState() {
    m_pMessage->setText(stateText());
    const bool isStartValid = m_pStart->text().isEmpty() || addressFrom(m_pStart->text().trimmed().toStdString());
    m_pApply->setEnabled(!m_isRunning && isStartValid && m_pModel->table().canBeApplied());
    m_pRemove->setEnabled(!m_isRunning && m_pView->selectionModel()->hasSelection());
}

void PlanWindow::setRunning(bool isRunning) {
    m_isRunning = isRunning;
    m_pBar->setVisible(isRunning);
    m_pBar->setValue(0);
    m_pClose->setText(isRunning ? QStringLiteral("Cancel") : QStringLiteral("Close"));
    m_pClose->setEnabled(true);
    for (QWidget *widget : {m_pFields, static_cast<QWidget *>(m_pView)})
        widget->setEnabled(!isRunning);
    showState();
}

void PlanWindow::showProgress(PlanPhase phase, std::size_t done, std::size_t all) {
    m_Progress.take(phase, done, all);
    m_pBar->setValue(m_Progress.percent());
    m_pMessage->setText(stateText());
}

// Application

void PlanWindow::carryOut() {
    PlanOutcome outcome;
    Inventory now = m_pModel->table().inventory();
    m_Tools.operation.onGui([this] {
        m_wasApplied = true; // however it ends
        m_isLooking = false;
        showState();
    });
    PlanOptions options;
    options.what = m_Order.what;
    options.undoes = m_Order.undoes;
    options.patience = m_Tools.patience;
    options.progress = [this](PlanPhase phase, std::size_t done, std::size_t all) {
        m_Tools.operation.post([=] { showProgress(phase, done, all); });
    };
    options.isStopRequested = [this] { return m_Tools.operation.isCancelled(); };
    outcome = commissioning::apply(m_Tools.layer, m_pModel->table().review(), now, &m_Tools.journal, options);
    try {
        now.cameras = inventoryOf(search(m_Tools.layer)).cameras;
    } catch (...) {
        outcome.remark += " What is listed here is not up to date: " + failureText(std::current_exception());
    }
    m_Tools.operation.onGui([&] { takeOutcome(outcome, std::move(now)); });
}

void PlanWindow::apply() {
    if (m_isRunning || !m_pApply->isEnabled())
        return;
    m_Progress = PlanProgress(static_cast<std::size_t>(m_pModel->table().changeCount()));
    m_isLooking = true;
    setRunning(true);
    std::map<Address, std::string> taken;
    try {
        m_Tools.operation.run([&] {
            m_Tools.prepare();
            const PlanTable &table = m_pModel->table();
            taken = findTaken(table.review(), table.inventory(), &m_Known.free,
                              [this] { return m_Tools.operation.isCancelled(); });
            m_Tools.operation.throwIfCancelled();
            if (taken.empty())
                carryOut();
        });
        if (!taken.empty())
            showTaken(taken);
    } catch (const OperationCancelled &) { // while it looked
        m_Summary = QStringLiteral("Cancelled. Nothing was sent.");
    } catch (...) {
        m_Summary = QString::fromStdString(failureText(std::current_exception()));
    }
    m_isLooking = false;
    setRunning(false);
    m_pClose->setFocus();
}

void PlanWindow::showTaken(const std::map<Address, std::string> &taken) {
    m_Known.taken.insert(taken.begin(), taken.end());
    QStringList addresses;
    for (const auto &[address, mac] : taken)
        addresses << QString::fromStdString(toText(address));
    m_Summary = QStringLiteral("Nothing was sent: another device has %1.").arg(addresses.join(QStringLiteral(", ")));
    m_pModel->change([&](PlanTable &table) { table.exclude(taken); });
    if (m_pModel->table().canBeApplied())
        m_Summary += QStringLiteral(" The addresses now count past it. Apply sends them.");
}

void PlanWindow::takeOutcome(const PlanOutcome &outcome, Inventory now) {
    m_pModel->change([&](PlanTable &table) { table.take(outcome, std::move(now)); });
    showOutcome(outcome);
}

void PlanWindow::showOutcome(const PlanOutcome &outcome) {
    int changed = 0;
    int failed = 0;
    int untouched = 0;
    for (const PlanRecord &record : outcome.records) {
        changed += record.state == PlanState::Done ? 1 : 0;
        untouched += record.state == PlanState::NotBegun ? 1 : 0;
        failed += record.state == PlanState::Failed || record.state == PlanState::RolledBack ||
                          record.state == PlanState::Unconfirmed
                      ? 1
                      : 0;
        if (record.state == PlanState::Done)
            m_DoneCameras.push_back(record.change.camera.mac);
    }
    QStringList parts{m_Tools.operation.isCancelled() ? QStringLiteral("Cancelled.") : QString(),
                      QStringLiteral("%1 changed.").arg(cameras(changed))};
    if (failed > 0)
        parts << QStringLiteral("%1 failed.").arg(cameras(failed));
    if (untouched > 0)
        parts << QStringLiteral("%1 not begun.").arg(cameras(untouched));
    parts << QString::fromStdString(outcome.error) << QString::fromStdString(outcome.remark);
    parts.removeAll(QString());
    m_Summary = parts.join(QLatin1Char(' '));
    m_pView->setColumnHidden(PlanModel::ColOutcome, false);
    QHeaderView &header = *m_pView->horizontalHeader();
    header.moveSection(header.visualIndex(PlanModel::ColOutcome), 1); // beside the camera: nobody has to scroll to it
    m_pView->scrollTo(m_pModel->index(0, PlanModel::ColCamera));
    sizeToContent();
}
