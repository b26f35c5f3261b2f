#include "Lanvane/QMacAddressValidator.h"

#include "Lanvane/AddressText.h"

namespace {

constexpr int MAC_DIGITS = 12;

} // namespace

QValidator::State QMacAddressValidator::validate(QString &text, int &pos) const {
    if (text.isEmpty())
        return Acceptable;
    int digits = 0;
    for (int i = 0; i < text.size(); ++i) {
        if (isHexDigit(text.at(i))) {
            ++digits;
        } else if (!m_strAllowedSeperators.contains(text.at(i))) {
            pos = i;
            return Invalid;
        }
    }
    if (digits > MAC_DIGITS)
        return Invalid;
    return digits < MAC_DIGITS ? Intermediate : Acceptable;
}
