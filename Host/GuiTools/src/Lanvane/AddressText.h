#pragma once

#include <QHostAddress>
#include <QString>

/// What a field for an address or a mask takes: room for blanks and leading zeros, and no more, because everything that
/// is typed is judged.
constexpr int LongestAddressText = 64;

/// Cleans an IPv4 address as the user typed it: trims it, turns an empty text into "0.0.0.0" and drops leading zeros
/// within the octets (192.168.001.010 becomes 192.168.1.10). The first octet keeps one leading zero.
void fixupIpAddress(QString &text);

/// Keeps nothing but the hexadecimal digits, in their order and letter case.
void fixupMacAddress(QString &text);

/// The address that four decimal numbers stand for once cleaned; a leading zero makes none of them octal. Null for any
/// other text.
QHostAddress ipv4AddressFromText(const QString &text);

/// The usual spelling of that address, so that what is judged is what is sent and shown. Any other text is only
/// cleaned.
QString canonicalIpAddress(QString text);

/// 0 to 9, a to f, A to F.
bool isHexDigit(QChar ch);
