#pragma once

#include "Lanvane/QIpAddressValidator.h"

#include <QPointer>

class QLineEdit;

/// Judges an address of a host together with the netmask that stands in another line edit.
///
/// On top of QIpAddressValidator these addresses are refused, each unless its flag allows it; all flags start as false:
///
/// | address | flag |
/// |---|---|
/// | 0.0.0.0 or an empty text | allowNullAddress |
/// | 127.0.0.0 to 127.255.255.255 | allowLoopbackAddress |
/// | 224.0.0.0 to 239.255.255.255 | allowMulticastAddress |
/// | 240.0.0.0 and above, the limited broadcast 255.255.255.255 included | allowExperimentalPurposeAddress |
/// | below 224.0.0.0, host bits all one | allowBroadcastAddress |
/// | below 224.0.0.0, host bits all zero (the network itself) | none, always refused |
///
/// The last two are judged only while the netmask edit holds a usable mask (1 to 30 bits, dotted or as prefix length).
/// A refused address is Intermediate, never Invalid: it may be the beginning of an acceptable one, and the netmask may
/// still change.
class QIpAddressWithNetmaskValidator : public QIpAddressValidator {
    Q_OBJECT

public:
    /// \param netmaskEdit not owned; null or destroyed means that no mask is known.
    explicit QIpAddressWithNetmaskValidator(const QLineEdit *netmaskEdit, QObject *parent = nullptr);

    State validate(QString &text, int &pos) const override;

    bool allowLoopbackAddress() const { return m_allowLoopbackAddress; }
    void setAllowLoopbackAddress(bool allow) { m_allowLoopbackAddress = allow; }
    bool allowNullAddress() const { return m_allowNullAddress; }
    void setAllowNullAddress(bool allow) { m_allowNullAddress = allow; }
    bool allowBroadcastAddress() const { return m_allowBroadcastAddress; }
    void setAllowBroadcastAddress(bool allow) { m_allowBroadcastAddress = allow; }
    bool allowMulticastAddress() const { return m_allowMulticastAddress; }
    void setAllowMulticastAddress(bool allow) { m_allowMulticastAddress = allow; }
    bool allowExperimentalPurposeAddress() const { return m_allowExperimentalPurposeAddress; }
    void setAllowExperimentalPurposeAddress(bool allow) { m_allowExperimentalPurposeAddress = allow; }

private:
    bool isAllowed(quint32 address) const;
    bool isAllowedHost(quint32 address) const;

    QPointer<const QLineEdit> m_netmaskEdit;
    bool m_allowLoopbackAddress = false;
    bool m_allowNullAddress = false;
    bool m_allowBroadcastAddress = false;
    bool m_allowMulticastAddress = false;
    bool m_allowExperimentalPurposeAddress = false;
};
