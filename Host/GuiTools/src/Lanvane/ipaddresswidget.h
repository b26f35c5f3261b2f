#pragma once

#include <QDialog>
#include <QHostAddress>
#include <QList>
#include <QNetworkAddressEntry>
#include <QString>

#include <memory>

class QIpAddressWithNetmaskValidator;
class Ui_IpAddressWidgetClass;

/// Asks for an IP address with subnet mask and default gateway, and on demand for the MAC address of the device meant.
///
/// OK is enabled only while every shown field is acceptable. The address texts are as the user typed them: pass them
/// through fixupIpAddress and fixupMacAddress before use. After accept() the default gateway is never empty and the
/// subnet mask is dotted.
class IpAddressWidget : public QDialog {
    Q_OBJECT
    Q_PROPERTY(QString headerText READ headerText WRITE setHeaderText)
    Q_PROPERTY(QString noticeText READ noticeText WRITE setNoticeText)
    Q_PROPERTY(QString ipAddress READ ipAddress WRITE setIpAddress)
    Q_PROPERTY(QString subnetMask READ subnetMask WRITE setSubnetMask)
    Q_PROPERTY(QString defaultGateway READ defaultGateway WRITE setDefaultGateway)
    Q_PROPERTY(QString macAddress READ macAddress WRITE setMacAddress)
    Q_PROPERTY(bool showMacAddress READ showMacAddress WRITE setShowMacAddress)
    Q_PROPERTY(bool allowBroadcastAddress READ allowBroadcastAddress WRITE setAllowBroadcastAddress)
    Q_PROPERTY(bool allowMulticastAddress READ allowMulticastAddress WRITE setAllowMulticastAddress)
    Q_PROPERTY(bool allowExperiemntalPurposeAddress READ allowExperiemntalPurposeAddress WRITE
                   setAllowExperiemntalPurposeAddress)

public:
    explicit IpAddressWidget(QWidget *parent = nullptr);
    ~IpAddressWidget() override;

    /// Plain or rich text above the fields.
    QString headerText() const;
    void setHeaderText(const QString &text);
    QString ipAddress() const;
    void setIpAddress(const QString &text);
    QString subnetMask() const;
    void setSubnetMask(const QString &text);
    QString defaultGateway() const;
    void setDefaultGateway(const QString &text);
    QString macAddress() const;
    void setMacAddress(const QString &text);

    /// Plain text below the header on what to know before one enters an address; empty for none.
    QString noticeText() const;
    void setNoticeText(const QString &text);

    /// Addresses of this host, which with their networks' own and broadcast addresses are refused.
    void setHostEntries(const QList<QNetworkAddressEntry> &entries);

    /// Whether the row of the MAC address is shown; it is not at first.
    bool showMacAddress() const;
    void setShowMacAddress(bool show);

    // Which addresses OK lets through (see QIpAddressWithNetmaskValidator); none of them at first. Loopback addresses
    // always pass, as the caller refuses the one that matters with an explanation.
    bool allowBroadcastAddress() const;
    void setAllowBroadcastAddress(bool allow);
    bool allowMulticastAddress() const;
    void setAllowMulticastAddress(bool allow);
    bool allowExperiemntalPurposeAddress() const;
    void setAllowExperiemntalPurposeAddress(bool allow);

    /// The mask of the address's class: 8, 16 or 24 bits. Null for multicast and experimental addresses and for texts
    /// that are no IPv4 address.
    static QHostAddress subnetFromAddress(const QString &address);
    static QHostAddress subnetFromAddress(const QHostAddress &address);

public slots:
    void accept() override;
    void setVisible(bool visible) override;

private slots:
    void on_editMacAddress_textEdited(const QString &text);
    void on_editIpAddress_textEdited(const QString &text);
    void on_editNetmask_textEdited(const QString &text);
    void on_editDefaultGateway_textEdited(const QString &text);
    void on_editIpAddress_editingFinished();
    void on_editNetmask_editingFinished();

private:
    void enableButtons();
    bool isInputAcceptable() const;
    QString subnetProblemOfInput() const;

    std::unique_ptr<Ui_IpAddressWidgetClass> m_ui;
    QIpAddressWithNetmaskValidator *m_addressValidator; ///< owned by the dialog through Qt's parent-child tree
    QList<QNetworkAddressEntry> m_hostEntries;
    bool m_showMacAddress = false;
};
