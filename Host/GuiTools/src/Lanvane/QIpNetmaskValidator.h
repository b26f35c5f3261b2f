#pragma once

#include "Lanvane/QIpAddressValidator.h"

/// Accepts a dotted contiguous netmask of 1 to 30 bits, or a prefix length "/0" to "/32" that is still to be turned
/// into a mask by fixup.
///
/// Trap: line edits call fixup only for texts that are not acceptable; whoever reads a mask must call it.
class QIpNetmaskValidator : public QIpAddressValidator {
    Q_OBJECT

public:
    explicit QIpNetmaskValidator(QObject *parent = nullptr) : QIpAddressValidator(parent) {}

    State validate(QString &text, int &pos) const override;
    /// Turns a prefix length into the dotted mask: "/24" becomes 255.255.255.0. Any other text is only trimmed.
    void fixup(QString &text) const override;

    /// Whether \p text, after fixup, is a mask a device can be given. In this alone "/0", "/31" and "/32" fail.
    bool isUsable(const QString &text) const;
};

/// The mask that a text stands for, in host order; 0 for one that no device can be given.
quint32 usableNetmask(const QString &text);
/// The usual spelling, dotted also of a prefix length. A text that is no mask is only cleaned.
QString canonicalNetmask(QString text);
