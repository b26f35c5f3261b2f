#include "Lanvane/QIpAddressWithNetmaskValidator.h"

#include "Lanvane/AddressRules.h"
#include "Lanvane/AddressText.h"
#include "Lanvane/QIpNetmaskValidator.h"

#include <QLineEdit>

namespace {

constexpr quint32 FIRST_MULTICAST = 0xE0000000;    // 224.0.0.0
constexpr quint32 FIRST_EXPERIMENTAL = 0xF0000000; // 240.0.0.0
constexpr quint32 LOOPBACK_NETWORK = 127;

} // namespace

QIpAddressWithNetmaskValidator::QIpAddressWithNetmaskValidator(const QLineEdit *netmaskEdit, QObject *parent)
    : QIpAddressValidator(parent), m_netmaskEdit(netmaskEdit) {}

QValidator::State QIpAddressWithNetmaskValidator::validate(QString &text, int &pos) const {
    const State state = QIpAddressValidator::validate(text, pos);
    if (state == Invalid)
        return Invalid;
    const QHostAddress address = ipv4AddressFromText(text); // that of an empty text is 0.0.0.0
    if (m_allowNullAddress && address == QHostAddress(QHostAddress::AnyIPv4))
        return Acceptable;
    if (state != Acceptable)
        return state;
    return isAllowed(address.toIPv4Address()) ? Acceptable : Intermediate;
}

bool QIpAddressWithNetmaskValidator::isAllowed(quint32 address) const {
    if (address >= FIRST_EXPERIMENTAL)
        return m_allowExperimentalPurposeAddress;
    if (address >= FIRST_MULTICAST)
        return m_allowMulticastAddress;
    if (address >> 24 == LOOPBACK_NETWORK)
        return m_allowLoopbackAddress;
    return isAllowedHost(address);
}

bool QIpAddressWithNetmaskValidator::isAllowedHost(quint32 address) const {
    switch (hostPartOf(address, m_netmaskEdit ? usableNetmask(m_netmaskEdit->text()) : 0)) {
    case HostPart::Network:
        return false;
    case HostPart::Broadcast:
        return m_allowBroadcastAddress;
    case HostPart::Device:
        break;
    }
    return true;
}
