#pragma once

#include <QNetworkAddressEntry>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>
#include <initializer_list>
#include <ostream>

/// Lets GoogleTest print what it compares.
inline void PrintTo(const QString &text, std::ostream *stream) { *stream << '"' << text.toStdString() << '"'; }

/// \param text as in "192.168.1.10/255.255.255.0"
inline QNetworkAddressEntry addressEntry(const QString &text) {
    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(text.section('/', 0, 0)));
    entry.setNetmask(QHostAddress(text.section('/', 1)));
    return entry;
}

/// Each line is "before -> after", both taken as they are, blanks included.
template <class Rewrite> void expectRewrites(std::initializer_list<const char *> lines, Rewrite rewrite) {
    for (const char *line : lines) {
        const QStringList parts = QString(line).split(" -> ");
        EXPECT_EQ(rewrite(parts.at(0)), parts.at(1)) << line;
    }
}
