#pragma once

#include <QString>
#include <QValidator>

/// Accepts a MAC address: twelve hexadecimal digits, with separators anywhere. An empty text is acceptable too, so that
/// an empty MAC field does not block a dialog.
class QMacAddressValidator : public QValidator {
    Q_OBJECT

public:
    explicit QMacAddressValidator(QObject *parent = nullptr) : QValidator(parent) {}

    /// For an invalid text \p pos becomes the index of the character that does not belong.
    State validate(QString &text, int &pos) const override;

    /// The characters that may stand between the digits; blank, colon and hyphen by default.
    QString allowedSeperators() const { return m_strAllowedSeperators; }
    void setAllowedSeperators(const QString &separators) { m_strAllowedSeperators = separators; }

private:
    QString m_strAllowedSeperators = QStringLiteral(" :-");
};
