#include "CorvoQtBase/DeviceText.h"

#include <QChar>

#include <algorithm>
#include <iterator>

namespace {

bool isUnwanted(QChar ch) {
    switch (ch.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format: // bidirectional marks, embeddings, overrides and isolates; zero-width characters
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

} // namespace

QString plainDeviceText(const QString &text) {
    QString plain;
    std::copy_if(text.begin(), text.end(), std::back_inserter(plain), [](QChar ch) { return !isUnwanted(ch); });
    return plain;
}

QString richDeviceText(const QString &text) { return plainDeviceText(text).toHtmlEscaped(); }

QString deviceTip(const QString &text) {
    return text.isEmpty() ? text : QStringLiteral("<span>%1</span>").arg(richDeviceText(text));
}
