#include "Desktop.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

using namespace testnet;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const char *const InvalidAddress = "IP Addresses 127.0.0.1 and 224.0.0.0 to 255.255.255.255 cannot be used.";

/// Camera 1 in a foreign subnet.
class Forcing : public Desktop {
protected:
    Forcing() {
        open({cameraAt(1, "172.16.0.9/16")});
        select(1);
    }
    static QLineEdit &field(QWidget &dialog, const char *name) { return *dialog.findChild<QLineEdit *>(name); }
    static QPushButton &okOf(QWidget &dialog) {
        return *dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
    }
    static QString fields(QWidget &dialog) {
        QStringList texts;
        for (const char *name : {"editMacAddress", "editIpAddress", "editNetmask", "editDefaultGateway"})
            texts << (field(dialog, name).isVisible() ? field(dialog, name).text() : "(hidden)");
        return texts.join(" ");
    }
    QString titled(const char *header) const { return QString("Assign Temporary IP Address (Force IP): ") + header; }
};

TEST_F(Forcing, FromTheContextMenu) {
    EXPECT_EQ("Not Reachable", cell(1, Status));
    expect(titled(AssignHeader), [&](QWidget &dialog) {
        EXPECT_EQ("(hidden) 192.168.10. 255.255.255.0 0.0.0.0", fields(dialog));
        EXPECT_FALSE(okOf(dialog).isEnabled());
        QTest::keyClicks(&field(dialog, "editIpAddress"), "77");
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    useContextMenu();
    EXPECT_EQ("192.168.10.77", addressOf(1));
    EXPECT_EQ("192.168.10.77 OK", cell(1, IpAddress) + " " + cell(1, Status));
    EXPECT_THAT(said(), Not(HasSubstr("error.png")));
    EXPECT_THAT(waits, Contains(Rediscovering));
    EXPECT_EQ("1", selected());
}

TEST_F(Forcing, ByMacWithTheShortcut) {
    select(tree().topLevelItem(0));
    const auto complete = [](QWidget &dialog, const char *mac) {
        type(field(dialog, "editMacAddress"), mac);
        type(field(dialog, "editIpAddress"), "192.168.10.78");
        click(okOf(dialog));
    };
    expect(titled(ForceByMacHeader), [&](QWidget &dialog) {
        EXPECT_EQ("02-5A-E3- 192.168.10. 255.255.255.0 0.0.0.0", fields(dialog));
        complete(dialog, "02-5a-e3-00-00-99"); // no such camera
    });
    expect(titled(ForceByMacHeader), [&](QWidget &dialog) {
        EXPECT_EQ("02-5a-e3-00-00-99 192.168.10.78 255.255.255.0 0.0.0.0", fields(dialog));
        complete(dialog, "02:5a e3 000001");
    });
    press(Qt::Key_F, Qt::AltModifier | Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ("192.168.10.78", addressOf(1));
    EXPECT_THAT(reports.join('\n').toStdString(), StartsWith("forceIp: Failed to issue the ForceIp command."));
    refresh();
    EXPECT_EQ("OK", cell(1, Status));
    select(1);
    EXPECT_EQ("172.16.0.9", text("editIpAddress")); // which is stored
}

TEST_F(Forcing, InvalidAddressesAreAskedForAgainAndCancelSendsNothing) {
    expect(titled(AssignHeader), [&](QWidget &dialog) {
        type(field(dialog, "editIpAddress"), "127.0.0.1");
        type(field(dialog, "editDefaultGateway"), "");
        type(field(dialog, "editNetmask"), "/16");
        click(okOf(dialog));
    });
    expectBox("Error", InvalidAddress, QMessageBox::Ok);
    expect(titled(AssignHeader), [&](QWidget &dialog) {
        EXPECT_EQ("(hidden) 127.0.0.1 255.255.0.0 0.0.0.0", fields(dialog));
        type(field(dialog, "editIpAddress"), "224.0.0.0");
        click(okOf(dialog));
    });
    expectBox("Error", InvalidAddress, QMessageBox::Ok);
    expectForceIp(AssignHeader);
    nic0->cameras.clearRequests();
    useContextMenu();
    EXPECT_EQ(0u, nic0->cameras.requests().size());
    EXPECT_THAT(reports, ElementsAre());
}

} // namespace
