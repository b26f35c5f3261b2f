#include "Lanvane/ipaddresswidget.h"

#include "Lanvane/AddressRules.h"
#include "Lanvane/AddressText.h"
#include "Lanvane/QIpAddressWithNetmaskValidator.h"
#include "Lanvane/QIpNetmaskValidator.h"
#include "Lanvane/QMacAddressValidator.h"
#include "ui_ipaddresswidget.h"

#include <QPushButton>

namespace {

const QLatin1String NO_ADDRESS("0.0.0.0");

void applyFixup(QLineEdit *edit) {
    QString text = edit->text();
    edit->validator()->fixup(text);
    if (text != edit->text())
        edit->setText(text);
}

bool isMaskMissing(const QString &mask) {
    const QString text = mask.trimmed();
    return text.isEmpty() || text == NO_ADDRESS;
}

} // namespace

IpAddressWidget::IpAddressWidget(QWidget *parent) : QDialog(parent), m_ui(std::make_unique<Ui_IpAddressWidgetClass>()) {
    m_ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    m_addressValidator = new QIpAddressWithNetmaskValidator(m_ui->editNetmask, this);
    m_addressValidator->setAllowLoopbackAddress(true);
    auto *gatewayValidator = new QIpAddressWithNetmaskValidator(m_ui->editNetmask, this);
    gatewayValidator->setAllowNullAddress(true);
    m_ui->editMacAddress->setValidator(new QMacAddressValidator(this));
    m_ui->editIpAddress->setValidator(m_addressValidator);
    m_ui->editNetmask->setValidator(new QIpNetmaskValidator(this));
    m_ui->editDefaultGateway->setValidator(gatewayValidator);
    for (QLineEdit *edit : {m_ui->editMacAddress, m_ui->editIpAddress, m_ui->editNetmask, m_ui->editDefaultGateway})
        edit->setMaxLength(LongestAddressText);

    setNoticeText(QString());
    setShowMacAddress(false);
}

IpAddressWidget::~IpAddressWidget() = default;

QString IpAddressWidget::headerText() const { return m_ui->lblHeader->text(); }

void IpAddressWidget::setHeaderText(const QString &text) { m_ui->lblHeader->setText(text); }

QString IpAddressWidget::noticeText() const { return m_ui->lblNotice->text(); }

void IpAddressWidget::setNoticeText(const QString &text) {
    m_ui->lblNotice->setText(text);
    m_ui->lblNotice->setVisible(!text.isEmpty());
}

void IpAddressWidget::setHostEntries(const QList<QNetworkAddressEntry> &entries) {
    m_hostEntries = entries;
    enableButtons();
}

QString IpAddressWidget::ipAddress() const { return m_ui->editIpAddress->text(); }

void IpAddressWidget::setIpAddress(const QString &text) {
    m_ui->editIpAddress->setText(text);
    enableButtons();
}

QString IpAddressWidget::subnetMask() const { return m_ui->editNetmask->text(); }

void IpAddressWidget::setSubnetMask(const QString &text) {
    m_ui->editNetmask->setText(text);
    enableButtons();
}

QString IpAddressWidget::defaultGateway() const { return m_ui->editDefaultGateway->text(); }

void IpAddressWidget::setDefaultGateway(const QString &text) {
    m_ui->editDefaultGateway->setText(text);
    enableButtons();
}

QString IpAddressWidget::macAddress() const { return m_ui->editMacAddress->text(); }

void IpAddressWidget::setMacAddress(const QString &text) {
    m_ui->editMacAddress->setText(text);
    enableButtons();
}

bool IpAddressWidget::showMacAddress() const { return m_showMacAddress; }

void IpAddressWidget::setShowMacAddress(bool show) {
    m_showMacAddress = show;
    m_ui->lblMacAddress->setVisible(show);
    m_ui->editMacAddress->setVisible(show);
    enableButtons();
}

bool IpAddressWidget::allowBroadcastAddress() const { return m_addressValidator->allowBroadcastAddress(); }

void IpAddressWidget::setAllowBroadcastAddress(bool allow) {
    m_addressValidator->setAllowBroadcastAddress(allow);
    enableButtons();
}

bool IpAddressWidget::allowMulticastAddress() const { return m_addressValidator->allowMulticastAddress(); }

void IpAddressWidget::setAllowMulticastAddress(bool allow) {
    m_addressValidator->setAllowMulticastAddress(allow);
    enableButtons();
}

bool IpAddressWidget::allowExperiemntalPurposeAddress() const {
    return m_addressValidator->allowExperimentalPurposeAddress();
}

void IpAddressWidget::setAllowExperiemntalPurposeAddress(bool allow) {
    m_addressValidator->setAllowExperimentalPurposeAddress(allow);
    enableButtons();
}

QHostAddress IpAddressWidget::subnetFromAddress(const QString &address) {
    return subnetFromAddress(ipv4AddressFromText(address));
}

QHostAddress IpAddressWidget::subnetFromAddress(const QHostAddress &address) {
    if (address.protocol() != QAbstractSocket::IPv4Protocol)
        return QHostAddress();
    const quint32 value = address.toIPv4Address();
    if (value >> 31 == 0)
        return QHostAddress(0xFF000000);
    if (value >> 30 == 2)
        return QHostAddress(0xFFFF0000);
    if (value >> 29 == 6)
        return QHostAddress(0xFFFFFF00);
    return QHostAddress();
}

void IpAddressWidget::accept() {
    // OK can be pressed by its mnemonic, which takes the focus from no field.
    applyFixup(m_ui->editNetmask);
    if (defaultGateway().trimmed().isEmpty())
        setDefaultGateway(NO_ADDRESS);
    QDialog::accept();
}

void IpAddressWidget::setVisible(bool visible) {
    QLineEdit *first = m_showMacAddress ? m_ui->editMacAddress : m_ui->editIpAddress;
    if (visible)
        first->setFocus(Qt::OtherFocusReason);
    QDialog::setVisible(visible);
    // The text filled in is a beginning to be completed, but a dialog that appears selects the text of its first field,
    // which would then be lost with the first key.
    if (visible)
        first->end(false);
}

void IpAddressWidget::on_editMacAddress_textEdited(const QString & /*text*/) { enableButtons(); }

void IpAddressWidget::on_editIpAddress_textEdited(const QString & /*text*/) { enableButtons(); }

void IpAddressWidget::on_editNetmask_textEdited(const QString & /*text*/) { enableButtons(); }

void IpAddressWidget::on_editDefaultGateway_textEdited(const QString & /*text*/) { enableButtons(); }

void IpAddressWidget::on_editIpAddress_editingFinished() {
    if (!isMaskMissing(subnetMask()))
        return;
    const QHostAddress mask = subnetFromAddress(ipAddress());
    if (!mask.isNull())
        setSubnetMask(mask.toString());
}

void IpAddressWidget::on_editNetmask_editingFinished() {
    applyFixup(m_ui->editNetmask);
    enableButtons();
}

QString IpAddressWidget::subnetProblemOfInput() const {
    return subnetProblem(ipAddress(), subnetMask(), m_hostEntries);
}

void IpAddressWidget::enableButtons() {
    m_ui->lblHint->setText(subnetProblemOfInput());
    m_ui->buttonBox->button(QDialogButtonBox::Ok)->setEnabled(isInputAcceptable());
}

bool IpAddressWidget::isInputAcceptable() const {
    const bool isMacAcceptable = !m_showMacAddress || m_ui->editMacAddress->hasAcceptableInput();
    return isMacAcceptable && m_ui->editIpAddress->hasAcceptableInput() && subnetProblemOfInput().isEmpty() &&
           QIpNetmaskValidator().isUsable(subnetMask()) && m_ui->editDefaultGateway->hasAcceptableInput();
}
