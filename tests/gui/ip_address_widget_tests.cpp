#include "Lanvane/ipaddresswidget.h"
#include "QtText.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

namespace {

class IpAddressDialog : public testing::Test {
protected:
    void SetUp() override {
        m_dialog.show();
        m_dialog.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&m_dialog));
        ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::focusWidget() != nullptr; }));
    }

    QLineEdit *edit(const char *name) { return m_dialog.findChild<QLineEdit *>(name); }
    QPushButton *ok() { return m_dialog.findChild<QDialogButtonBox *>("buttonBox")->button(QDialogButtonBox::Ok); }
    void type(const char *name, const QString &text) {
        edit(name)->setFocus();
        edit(name)->selectAll();
        QTest::keyClick(edit(name), Qt::Key_Delete);
        QTest::keyClicks(edit(name), text);
    }

    IpAddressWidget m_dialog;
};

} // namespace

TEST_F(IpAddressDialog, EnablesOkForAcceptableFields) {
    EXPECT_FALSE(ok()->isEnabled());
    // address | mask | gateway | MAC address, when it is asked for
    expectRewrites({"192.168.1.7|255.255.255.0|0.0.0.0 -> OK", "192.168.1.7|/24| -> OK",
                    "127.0.0.1|255.0.0.0| -> OK", // refused by the caller, with a reason
                    "230.1.1.1|255.255.255.0| -> ", "192.168.1.255|/24| -> ", "192.168.1.7|/32| -> ",
                    "192.168.1.7|255.255.255.0|192.168.1 -> ", "10.0.0.7|/8||02-5A-E3- -> ",
                    "10.0.0.7|/8||02-5A-E3-1A-2B-3C -> OK", "255.255.255.255|/8| -> "},
                   [this](const QString &line) {
                       const QStringList fields = line.split('|');
                       m_dialog.setShowMacAddress(fields.size() > 3);
                       type("editMacAddress", fields.value(3));
                       type("editDefaultGateway", fields.at(2));
                       type("editIpAddress", fields.at(0));
                       type("editNetmask", fields.at(1)); // last: OK is judged before the field is left
                       return QString(ok()->isEnabled() ? "OK" : "");
                   });
    m_dialog.setAllowMulticastAddress(true);
    EXPECT_FALSE(ok()->isEnabled());
    m_dialog.setAllowExperiemntalPurposeAddress(true);
    EXPECT_TRUE(ok()->isEnabled());
}

TEST_F(IpAddressDialog, SaysWhyAnAddressOrAnAttemptIsRefused) {
    m_dialog.setHostEntries({addressEntry("192.168.1.10/255.255.255.0")});
    EXPECT_FALSE(m_dialog.findChild<QLabel *>("lblNotice")->isVisible());
    m_dialog.setNoticeText("No answer.");
    EXPECT_TRUE(m_dialog.findChild<QLabel *>("lblNotice")->isVisible());
    expectRewrites({"192.168.1.10|/16 -> The IP address is that of this host.",
                    "10.0.0.0|/8 -> The IP address is that of the network itself.", "192.168.1.11|/24 -> OK"},
                   [this](const QString &line) {
                       type("editIpAddress", line.section('|', 0, 0));
                       type("editNetmask", line.section('|', 1));
                       return ok()->isEnabled() ? "OK" : m_dialog.findChild<QLabel *>("lblHint")->text();
                   });
}

TEST_F(IpAddressDialog, SuggestsAMaskWhereNoneIsGiven) {
    expectRewrites({"10.1.2.3| -> 255.0.0.0", "192.168.1.2|0.0.0.0 -> 255.255.255.0",
                    "10.1.2.3|255.255.0.0 -> 255.255.0.0", "10.1.2| -> "},
                   [this](const QString &line) {
                       m_dialog.setSubnetMask(line.section('|', 1));
                       type("editIpAddress", line.section('|', 0, 0));
                       QTest::keyClick(edit("editIpAddress"), Qt::Key_Tab);
                       EXPECT_EQ(QApplication::focusWidget(), edit("editNetmask"));
                       return m_dialog.subnetMask();
                   });
}

TEST_F(IpAddressDialog, HandsOverDottedMaskAndGateway) {
    type("editIpAddress", "192.168.1.2");
    type("editNetmask", "/20");
    QTest::keyClick(edit("editNetmask"), Qt::Key_Tab);
    EXPECT_EQ(m_dialog.subnetMask(), "255.255.240.0");
    EXPECT_EQ(QApplication::focusWidget(), edit("editDefaultGateway"));

    type("editNetmask", "/24");
    ok()->click(); // as the mnemonic does it: the field keeps the focus
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
    EXPECT_EQ(m_dialog.subnetMask(), "255.255.255.0");
    EXPECT_EQ(m_dialog.defaultGateway(), "0.0.0.0");
}

TEST_F(IpAddressDialog, ReachesEveryShownFieldByItsMnemonic) {
    m_dialog.setShowMacAddress(true);
    const std::pair<Qt::Key, const char *> fields[] = {{Qt::Key_A, "editIpAddress"},
                                                       {Qt::Key_S, "editNetmask"},
                                                       {Qt::Key_G, "editDefaultGateway"},
                                                       {Qt::Key_M, "editMacAddress"}};
    for (const auto &[key, field] : fields) {
        QTest::keyClick(&m_dialog, key, Qt::AltModifier);
        EXPECT_EQ(QApplication::focusWidget(), edit(field)) << field;
    }
}
