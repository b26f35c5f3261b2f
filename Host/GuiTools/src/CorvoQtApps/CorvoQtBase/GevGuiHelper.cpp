#include "CorvoQtBase/GevGuiHelper.h"

#include "MinimalCorvo/DeviceInfo.h"

#include <QByteArray>

#include <cctype>
#include <cstdlib>

namespace {

constexpr unsigned int CONFIG_PERSISTENT_IP = 1;
constexpr unsigned int CONFIG_DHCP = 2;
constexpr unsigned int CONFIG_AUTO_IP = 4;
constexpr unsigned int OPTION_FIRST_ONLY = 1;
constexpr int MAC_DIGITS = 12;
constexpr const char *GIGE_DEVICE_CLASS = "QuorelGigE";

void appendEntry(QString &text, const QString &entry) {
    if (!text.isEmpty())
        text += QLatin1String(", ");
    text += entry;
}

QByteArray hexDigits(const char *text) {
    QByteArray digits;
    for (; *text != '\0'; ++text)
        if (std::isxdigit(static_cast<unsigned char>(*text)) != 0)
            digits += *text;
    return digits;
}

} // namespace

QString formatIPConfiguration(unsigned int config, unsigned int options) {
    const bool firstOnly = (options & OPTION_FIRST_ONLY) != 0;
    QString text;
    if ((config & CONFIG_PERSISTENT_IP) != 0) {
        text = QStringLiteral("Static IP");
        if (firstOnly)
            return text;
    }
    if ((config & CONFIG_DHCP) != 0) {
        appendEntry(text, QStringLiteral("DHCP"));
        if (firstOnly)
            return text;
    }
    if ((config & CONFIG_AUTO_IP) == 0)
        return QString();
    appendEntry(text, QStringLiteral("Auto IP"));
    return text;
}

QString formatIPConfiguration(const char *configText, unsigned int options) {
    if (configText == nullptr || *configText == '\0')
        return QString();
    return formatIPConfiguration(static_cast<unsigned int>(std::strtoul(configText, nullptr, 10)), options);
}

QString formatMACAddress(const char *mac, const char *separator) {
    if (mac == nullptr)
        return QString();
    const QByteArray digits = hexDigits(mac);
    if (digits.size() != MAC_DIGITS)
        return QString();
    QString text;
    for (int i = 0; i < MAC_DIGITS; i += 2) {
        if (i > 0)
            text += QString::fromUtf8(separator != nullptr ? separator : "-");
        text += QString::fromLatin1(digits.mid(i, 2));
    }
    return text;
}

bool IsUtf8Device(const Corvo::CDeviceInfo *deviceInfo) {
    return deviceInfo != nullptr && deviceInfo->GetDeviceClass() == GIGE_DEVICE_CLASS;
}

QString GetUtf8Property(const Corvo::CDeviceInfo *deviceInfo, const char *name) {
    if (deviceInfo == nullptr || name == nullptr)
        return QString();
    Corvo::String_t value;
    if (!deviceInfo->GetPropertyValue(name, value))
        value = Corvo::CInfoBase::PropertyNotAvailable;
    return IsUtf8Device(deviceInfo) ? QString::fromUtf8(value) : QString::fromLocal8Bit(value);
}
