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
    if (cleaned.count(QLatin1Char('.')) != 3)
        return QHostAddress();
    const QHostAddress address(cleaned);
    return address.protocol() == QAbstractSocket::IPv4Protocol ? address : QHostAddress();
}

bool isHexDigit(QChar ch) {
    const ushort code = ch.unicode();
    return code < 0x80 && std::isxdigit(code) != 0;
}
