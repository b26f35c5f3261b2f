#include "Lanvane/MakeUsableDialog.h"

#include "Lanvane/AddressMap.h"
#include "Lanvane/AddressRules.h"
#include "Lanvane/AddressText.h"
#include "Lanvane/DeviceDisplay.h"
#include "Lanvane/QIpAddressValidator.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/FreeAddresses.h"
#include "commissioning/WantedAddresses.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

using commissioning::Mode;

namespace {

QString text(const std::string &utf8) { return QString::fromUtf8(utf8.c_str()); }

QLabel *makeLabel(const char *name) {
    auto *label = new QLabel;
    label->setObjectName(QLatin1String(name));
    label->setWordWrap(true);
    return label;
}

} // namespace

MakeUsableDialog::MakeUsableDialog(const commissioning::RescuePlan &proposal, const commissioning::Inventory &inventory,
                                   const commissioning::Adapter &adapter, commissioning::Neighbourhood *pKnown,
                                   QWidget *parent)
    : QDialog(parent), m_Proposal(proposal), m_Inventory(inventory), m_Adapter(adapter), m_pKnown(pKnown),
      m_Around(surroundingsOn(inventory.adapters, &adapter)), m_Mask(makeLabel("mask")), m_Hint(makeLabel("lblHint")) {
    setObjectName(QStringLiteral("MakeUsable"));
    setWindowTitle(QStringLiteral("Make Usable"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    m_Around.hidden = inventory.cameras;
    QLabel *header = makeLabel("lblHeader");
    header->setText(deviceNameText(proposal.device) +
                    QStringLiteral("<p>It has the address %1 and is behind %2 (%3).</p>")
                        .arg(displayText(proposal.device.GetIpAddress()), text(adapter.name), text(toText(subnet()))));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    m_Ok = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 12);
    layout->setSpacing(12);
    layout->addWidget(header);
    layout->addWidget(makeAddressRow());
    auto *modes = new QVBoxLayout;
    modes->setSpacing(4);
    setUpModes(*modes);
    layout->addLayout(modes);
    layout->addWidget(m_Hint);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    header->setMinimumWidth(60 * fontMetrics().averageCharWidth());
    m_Hint->setTextFormat(Qt::PlainText);
    m_Hint->setFixedHeight(2 * fontMetrics().lineSpacing()); // so that a hint moves nothing
    m_Hint->setAlignment(Qt::AlignTop);
    m_Ok->setFocus();
    judge();
}

QWidget *MakeUsableDialog::makeAddressRow() {
    auto *fields = new QWidget;
    auto *form = new QFormLayout(fields);
    form->setContentsMargins(0, 0, 0, 0);
    form->setHorizontalSpacing(12);
    m_Address = new QLineEdit(m_Proposal.address == 0 ? QString() : text(commissioning::toText(m_Proposal.address)));
    m_Address->setObjectName(QStringLiteral("editIpAddress"));
    m_Address->setMaxLength(LongestAddressText);
    m_Address->setValidator(new QIpAddressValidator(m_Address));
    connect(m_Address, &QLineEdit::textChanged, this, &MakeUsableDialog::judge);
    auto *map = new QPushButton(QStringLiteral("Address &Map..."));
    map->setObjectName(QStringLiteral("btnMap"));
    map->setAutoDefault(false);
    connect(map, &QPushButton::clicked, this, &MakeUsableDialog::openMap);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_Address, 1);
    row->addWidget(map);
    auto *label = new QLabel(QStringLiteral("IP &Address:"));
    label->setBuddy(m_Address);
    form->addRow(label, row);
    form->addRow(QStringLiteral("Subnet Mask:"), m_Mask);
    return fields;
}

void MakeUsableDialog::setUpModes(QLayout &layout) {
    const auto addChoice = [&](const char *title, const char *name, const std::string &refusal) {
        auto *button = new QRadioButton(QLatin1String(title));
        button->setObjectName(QLatin1String(name));
        button->setEnabled(refusal.empty());
        button->setToolTip(text(refusal));
        connect(button, &QRadioButton::toggled, this, &MakeUsableDialog::judge);
        layout.addWidget(button);
        return button;
    };
    const std::string noStatic = refusalOfMode(m_Proposal.device, Mode::Static);
    m_ForGood = addChoice("Keep this address for &good", "btnForGood", noStatic);
    m_UntilRestart = addChoice("Keep this address until the camera's next &restart only", "btnUntilRestart", "");
    m_Dhcp = addChoice("Get an address by &DHCP for good, starting from this one", "btnDhcp",
                       refusalOfMode(m_Proposal.device, Mode::Dhcp));
    (noStatic.empty() ? m_ForGood : m_UntilRestart)->setChecked(true);
}

commissioning::Address MakeUsableDialog::address() const {
    return ipv4AddressFromText(m_Address->text()).toIPv4Address();
}

commissioning::AdapterAddress MakeUsableDialog::subnet() const {
    const commissioning::AdapterAddress *own = m_Address ? subnetOf(&m_Adapter, address()) : nullptr;
    return own ? *own : *homeSubnet(m_Adapter);
}

commissioning::RescuePlan MakeUsableDialog::plan() const {
    commissioning::RescuePlan plan = m_Proposal;
    plan.address = address();
    plan.mask = subnet().mask;
    plan.mode = m_Dhcp->isChecked() ? Mode::Dhcp : Mode::Static;
    return plan;
}

bool MakeUsableDialog::isKept() const { return !m_UntilRestart->isChecked(); }

QString MakeUsableDialog::problem() const {
    const commissioning::RescuePlan chosen = plan();
    const std::string mac = chosen.device.GetMacAddress().c_str();
    std::string reason = refusalOfTwin(mac, m_Inventory.findings);
    if (reason.empty())
        reason = commissioning::refusalOfHolder(chosen.device);
    if (!reason.empty())
        return text(reason);
    if (m_Address->text().isEmpty())
        return QStringLiteral("No free address was found in %1. Enter one, or look at the map.")
            .arg(text(toText(subnet())));
    QString mistake = addressProblem(m_Address->text(), QString(), {});
    if (!mistake.isEmpty())
        return mistake;
    reason = refusalOfAddress(chosen.address, chosen.mask, mac, m_Around);
    if (reason.empty() && m_pKnown->taken.count(chosen.address) != 0)
        reason = "Another device has the address " + commissioning::toText(chosen.address) + ".";
    return text(reason);
}

void MakeUsableDialog::judge() {
    const QString found = problem();
    m_Mask->setText(text(commissioning::toText(subnet().mask)));
    m_Hint->setText(found);
    m_Ok->setEnabled(found.isEmpty());
}

void MakeUsableDialog::openMap() {
    const auto picked = pickAddress(this, m_Inventory, m_Adapter, subnet(), address(), {}, m_pKnown);
    if (picked)
        m_Address->setText(text(commissioning::toText(*picked)));
    judge();
}
