#include "Lanvane/QIpAddressValidator.h"

#include "Lanvane/AddressText.h"

#include <QStringList>

#include <algorithm>

namespace {

constexpr quint32 FIRST_ACCEPTABLE = 0x00000100; // 0.0.1.0

bool hasEmptyOctet(const QString &text) {
    const QStringList octets = text.split(QLatin1Char('.'));
    return std::any_of(octets.begin(), octets.end(), [](const QString &octet) { return octet.trimmed().isEmpty(); });
}

} // namespace

QValidator::State QIpAddressValidator::validate(QString &text, int & /*pos*/) const {
    const int dots = text.count(QLatin1Char('.'));
    if (dots > 3)
        return Invalid;
    if (dots < 3 || hasEmptyOctet(text))
        return Intermediate;
    const QHostAddress address = ipv4AddressFromText(text);
    if (address.isNull())
        return Invalid;
    return address.toIPv4Address() < FIRST_ACCEPTABLE ? Intermediate : Acceptable;
}
