#include "Lanvane/QIpNetmaskValidator.h"

#include "Lanvane/AddressText.h"

namespace {

constexpr int MAX_PREFIX_LENGTH = 32;
constexpr int NO_PREFIX_LENGTH = -1;

bool isPrefixNotation(const QString &text) { return text.startsWith(QLatin1Char('/')); }

/// The number behind the slash, or NO_PREFIX_LENGTH.
int prefixLength(const QString &text) {
    bool isNumber = false;
    const int length = text.mid(1).toInt(&isNumber);
    return isNumber && length >= 0 && length <= MAX_PREFIX_LENGTH ? length : NO_PREFIX_LENGTH;
}

QHostAddress maskOfPrefix(int length) {
    // Shifted as 64 bits, because shifting 32 bits by 32 is undefined.
    return QHostAddress(static_cast<quint32>(quint64{0xFFFFFFFF} << (MAX_PREFIX_LENGTH - length)));
}

/// One or more ones from the top, then two or more zeros.
bool isHostMask(quint32 mask) {
    const quint32 hostBits = ~mask;
    const bool isContiguous = (hostBits & (hostBits + 1)) == 0;
    return isContiguous && hostBits >= 3 && hostBits <= 0x7FFFFFFF;
}

} // namespace

QValidator::State QIpNetmaskValidator::validate(QString &text, int &pos) const {
    QString simplified = text.simplified();
    if (isPrefixNotation(simplified))
        return prefixLength(simplified) == NO_PREFIX_LENGTH ? Intermediate : Acceptable;
    const State state = QIpAddressValidator::validate(simplified, pos);
    if (state != Acceptable)
        return state;
    return isHostMask(ipv4AddressFromText(simplified).toIPv4Address()) ? Acceptable : Intermediate;
}

void QIpNetmaskValidator::fixup(QString &text) const {
    text = text.simplified();
    if (!isPrefixNotation(text))
        return;
    const int length = prefixLength(text);
    if (length != NO_PREFIX_LENGTH)
        text = maskOfPrefix(length).toString();
}

bool QIpNetmaskValidator::isUsable(const QString &text) const {
    QString mask = text;
    fixup(mask);
    int pos = 0;
    return !isPrefixNotation(mask) && validate(mask, pos) == Acceptable;
}

quint32 usableNetmask(const QString &text) {
    return QIpNetmaskValidator().isUsable(text) ? ipv4AddressFromText(canonicalNetmask(text)).toIPv4Address() : 0;
}

QString canonicalNetmask(QString text) {
    QIpNetmaskValidator().fixup(text);
    return canonicalIpAddress(text);
}
