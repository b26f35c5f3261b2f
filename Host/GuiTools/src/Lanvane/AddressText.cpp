#include "Lanvane/AddressText.h"

#include <QChar>
#include <QRegularExpression>

#include <algorithm>
#include <cctype>
#include <iterator>

void fixupIpAddress(QString &text) {
    text = text.trimmed();
    if (text.isEmpty()) {
        text = QStringLiteral("0.0.0.0");
        return;
    }
    static const QRegularExpression leadingZero(QStringLiteral("[^1-9](0+)(\\d+)"));
    for (auto match = leadingZero.match(text); match.hasMatch(); match = leadingZero.match(text))
        text.remove(match.capturedStart() + 1, 1);
}

void fixupMacAddress(QString &text) {
    QString digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits), isHexDigit);
    text = digits;
}

QHostAddress ipv4AddressFromText(const QString &text) {
    QString cleaned = text;
    fixupIpAddress(cleaned);
    // QHostAddress alone would take blanks, signs, octal and hexadecimal numbers within.
    static const QRegularExpression dottedDecimal(QStringLiteral("^0*(\\d{1,3}(\\.\\d{1,3}){3})$"));
    const QHostAddress address(dottedDecimal.match(cleaned).captured(1));
    return address.protocol() == QAbstractSocket::IPv4Protocol ? address : QHostAddress();
}

QString canonicalIpAddress(QString text) {
    const QHostAddress address = ipv4AddressFromText(text);
    if (!address.isNull())
        return address.toString();
    fixupIpAddress(text);
    return text;
}

bool isHexDigit(QChar ch) {
    const ushort code = ch.unicode();
    return code < 0x80 && std::isxdigit(code) != 0;
}
