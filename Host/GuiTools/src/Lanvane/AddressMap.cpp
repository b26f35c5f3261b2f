#include "Lanvane/AddressMap.h"

#include "commissioning/AddressText.h"
#include "commissioning/Survey.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QThread>
#include <QVBoxLayout>

#include <exception>
#include <utility>

using commissioning::Address;
using commissioning::Neighbourhood;
using Kind = AddressMapModel::Kind;

namespace {

const QLatin1String NoLink("The adapter has no link now, so nobody can be asked.");

QLabel *addLabel(QLayout &layout, const QString &text) {
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    layout.addWidget(label);
    return label;
}

QPushButton *addButton(QLayout &layout, const QString &text) {
    auto *button = new QPushButton(text);
    button->setAutoDefault(false); // Enter picks an address
    layout.addWidget(button);
    return button;
}

} // namespace

AddressMap::AddressMap(const commissioning::Adapter &adapter, const commissioning::AdapterAddress &subnet,
                       std::unique_ptr<AddressMapModel> model, QWidget *parent)
    : QDialog(parent), m_Adapter(adapter), m_Subnet(subnet), m_Model(std::move(model)), m_Table(new QTableView) {
    setObjectName(QStringLiteral("AddressMap"));
    setWindowTitle(QStringLiteral("Address Map"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    auto *layout = new QVBoxLayout(this);
    addLabel(*layout,
             QStringLiteral("Click a free address of %1 (%2), or go there with the arrow keys and press Enter.")
                 .arg(QString::fromStdString(adapter.name), QString::fromStdString(commissioning::toText(subnet))));
    setUpTable();
    layout->addWidget(m_Table, 1);
    layout->addWidget(makeLegend());
    m_Current = addLabel(*layout, QString());
    m_State = addLabel(*layout, QString());
    m_State->setObjectName(QStringLiteral("lblState"));
    for (QLabel *label : {m_Current, m_State})
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // long names do not widen the map
    layout->addWidget(makePageRow());
    m_Table->setFocus();
}

AddressMap::~AddressMap() { stopAsking(); }

void AddressMap::setUpTable() {
    m_Table->setObjectName(QStringLiteral("addresses"));
    m_Table->setAccessibleName(QStringLiteral("Addresses"));
    m_Table->setModel(m_Model.get());
    m_Table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_Table->setTabKeyNavigation(false);
    m_Table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_Table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    constexpr int Padding = 8;
    const QFontMetrics metrics = m_Table->fontMetrics();
    const QSize cell(metrics.horizontalAdvance(AddressMapModel::legend()[0].sign + QStringLiteral("255")) + Padding,
                     metrics.lineSpacing() + Padding / 2);
    m_Table->setMinimumSize(cell * int{AddressMapModel::Side} + QSize(1, 1) * 2 * m_Table->frameWidth());
    for (QHeaderView *header : {m_Table->horizontalHeader(), m_Table->verticalHeader()}) {
        header->hide();
        header->setMinimumSectionSize(1);
        header->setSectionResizeMode(QHeaderView::Stretch);
    }
    connect(m_Table, &QTableView::clicked, this, &AddressMap::pick);
    connect(m_Table, &QTableView::activated, this, &AddressMap::pick);
    connect(m_Table->selectionModel(), &QItemSelectionModel::currentChanged, this, &AddressMap::showCurrent);
}

QWidget *AddressMap::makeLegend() {
    auto *legend = new QWidget;
    auto *layout = new QHBoxLayout(legend);
    layout->setContentsMargins(0, 0, 0, 0);
    for (std::size_t i = 0; i < m_Signs.size(); ++i) {
        const AddressMapModel::LegendEntry &entry = AddressMapModel::legend()[i];
        m_Signs[i] = addLabel(*layout, entry.sign);
        m_Signs[i]->setAlignment(Qt::AlignCenter);
        m_Signs[i]->setFixedWidth(fontMetrics().lineSpacing() + 4);
        m_Signs[i]->setFrameShape(QFrame::StyledPanel);
        m_Signs[i]->setAutoFillBackground(true);
        addLabel(*layout, QLatin1String(entry.text));
        layout->addSpacing(fontMetrics().averageCharWidth());
    }
    layout->addStretch();
    colourLegend();
    return legend;
}

void AddressMap::colourLegend() {
    for (std::size_t i = 0; i < m_Signs.size() && m_Signs[i]; ++i) {
        QPalette colours = palette();
        colours.setColor(QPalette::Window, AddressMapModel::colourOf(AddressMapModel::legend()[i].kind));
        m_Signs[i]->setPalette(colours);
    }
}

QWidget *AddressMap::makePageRow() {
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    m_Previous = addButton(*layout, QStringLiteral("&Previous"));
    m_Range = addLabel(*layout, QString());
    m_Next = addButton(*layout, QStringLiteral("&Next"));
    layout->addStretch();
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    QPushButton *again = buttons->addButton(QStringLiteral("Ask &Again"), QDialogButtonBox::ActionRole);
    again->setObjectName(QStringLiteral("btnAgain"));
    again->setAutoDefault(false);
    buttons->button(QDialogButtonBox::Cancel)->setAutoDefault(false);
    layout->addWidget(buttons);
    connect(m_Previous, &QPushButton::clicked, this, [this] { turn(-1); });
    connect(m_Next, &QPushButton::clicked, this, [this] { turn(1); });
    connect(again, &QPushButton::clicked, this, [this] {
        m_Model->forgetPage();
        ask();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &AddressMap::reject);
    const bool hasPages = m_Model->hasPrevious() || m_Model->hasNext();
    m_Previous->setVisible(hasPages);
    m_Next->setVisible(hasPages);
    return row;
}

void AddressMap::show(Address address) {
    m_Model->turnTo(address);
    m_Table->setCurrentIndex(m_Model->indexOf(address));
    m_Previous->setEnabled(m_Model->hasPrevious());
    m_Next->setEnabled(m_Model->hasNext());
    const auto text = [](Address each) { return QString::fromStdString(commissioning::toText(each)); };
    m_Range->setText(QStringLiteral("%1 to %2").arg(text(m_Model->first()), text(m_Model->first() | 0xFF)));
    showCurrent();
    ask();
}

void AddressMap::turn(int pages) { show(m_Model->first() + static_cast<Address>(pages * 256)); }

void AddressMap::ask() {
    stopAsking();
    const std::vector<Address> addresses = m_Model->addressesOf(Kind::Unknown);
    if (addresses.empty())
        return take({}, QString());
    if (!isUsable(m_Adapter))
        return take({}, NoLink);
    m_State->setText(QStringLiteral("Asking who has these addresses. This takes some seconds..."));
    m_IsCancelled = false;
    m_Asking.reset(QThread::create([this, addresses, round = ++m_Round] { askNeighbours(addresses, round); }));
    m_Asking->start();
}

void AddressMap::askNeighbours(const std::vector<Address> &addresses, int round) {
    const auto tell = [this, round](const Neighbourhood &found, const QString &problem) {
        QMetaObject::invokeMethod(
            this,
            [=] {
                if (round == m_Round)
                    take(found, problem);
            },
            Qt::QueuedConnection);
    };
    const auto isCancelled = [this] { return m_IsCancelled.load(); };
    try {
        const Neighbourhood found = neighbourhoodOf(m_Adapter, m_Subnet, addresses, isCancelled);
        const QString problem = isStillUsable(m_Adapter) ? QString() : NoLink;
        tell(found, problem);
        if (problem.isEmpty() && !found.taken.empty())
            tell(stillThere(m_Adapter, m_Subnet, found, isCancelled), {});
    } catch (const std::exception &error) {
        tell({}, QString::fromLocal8Bit(error.what()));
    }
}

void AddressMap::stopAsking() {
    m_IsCancelled = true;
    ++m_Round;
    if (m_Asking)
        m_Asking->wait();
    m_Asking.reset();
}

void AddressMap::take(const Neighbourhood &found, const QString &problem) {
    m_Model->add(found);
    const auto count = [this](Kind kind) { return QString::number(m_Model->addressesOf(kind).size()); };
    m_State->setText(problem.isEmpty()
                         ? QStringLiteral("%1 free, %2 taken by others.").arg(count(Kind::Free), count(Kind::Taken))
                         : problem);
    showCurrent();
}

void AddressMap::pick(const QModelIndex &index) {
    const Address address = m_Model->addressAt(index);
    if (m_Model->cell(address).kind != Kind::Free)
        return;
    m_Picked = address;
    accept();
}

void AddressMap::showCurrent() {
    const QModelIndex index = m_Table->currentIndex();
    m_Current->setText(index.isValid() ? m_Model->describe(m_Model->addressAt(index)) : QString());
}

void AddressMap::changeEvent(QEvent *event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        colourLegend();
}

std::optional<Address> pickAddress(QWidget *parent, const commissioning::Inventory &inventory,
                                   const commissioning::Adapter &adapter, const commissioning::AdapterAddress &subnet,
                                   Address current, const std::set<Address> &spokenFor, Neighbourhood *pKnown) {
    AddressMap map(adapter, subnet, std::make_unique<AddressMapModel>(inventory, subnet, spokenFor, *pKnown), parent);
    map.show(commissioning::isInSubnet(current, subnet) ? current : subnet.address);
    map.exec();
    *pKnown = map.model().known();
    return map.picked();
}
