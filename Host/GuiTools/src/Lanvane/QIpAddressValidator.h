#pragma once

#include <QValidator>

/// Accepts an IPv4 address in dotted form with four octets, from 0.0.1.0 upwards.
class QIpAddressValidator : public QValidator {
    Q_OBJECT

public:
    explicit QIpAddressValidator(QObject *parent = nullptr) : QValidator(parent) {}

    State validate(QString &text, int &pos) const override;
};
