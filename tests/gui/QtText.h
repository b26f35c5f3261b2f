#pragma once

#include <QString>
#include <QStringList>

#include <gtest/gtest.h>
#include <initializer_list>
#include <ostream>

/// Lets GoogleTest print what it compares.
inline void PrintTo(const QString &text, std::ostream *stream) { *stream << '"' << text.toStdString() << '"'; }

/// Each line is "before -> after", both taken as they are, blanks included.
template <class Rewrite> void expectRewrites(std::initializer_list<const char *> lines, Rewrite rewrite) {
    for (const char *line : lines) {
        const QStringList parts = QString(line).split(" -> ");
        EXPECT_EQ(rewrite(parts.at(0)), parts.at(1)) << line;
    }
}
