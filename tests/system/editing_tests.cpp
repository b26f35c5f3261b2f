#include "Desktop.h"

#include "Lanvane/WaitIndication.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest>

using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::StartsWith;

namespace {

using Editing = Desktop;

TEST_F(Editing, ATemporaryAddressIsSaidToBeOneAndCanBeKept) {
    open({cameraAt(1, "172.16.0.9/16", ",vendor-config=error"), cameraAt(2, "192.168.10.22/24")});
    select(1);
    expectForceIp(AssignHeader, "192.168.10.77");
    useContextMenu();
    EXPECT_THAT(said(), HasSubstr("Currently at the temporary address 192.168.10.77"));
    the<QLabel>("selectionInfo").linkActivated("#keep-address");
    EXPECT_EQ("192.168.10.77 255.255.255.0 0.0.0.0", addresses());
    click("btnWriteConfiguration");
    EXPECT_EQ("192.168.10.77", status(1).persistent.address.toString());
    EXPECT_THAT(said(), Not(HasSubstr("temporary")));
    EXPECT_FALSE(isEnabled("btnWriteConfiguration"));
}

TEST_F(Editing, AQuestionIsAnOperationAndNamesItsCamera) {
    open({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24")});
    select(1);
    type("editIpAddress", "192.168.10.51");
    expect("Ostra Lanvane: Do you want to save the changes to the configuration?", [&](QWidget &box) {
        EXPECT_EQ("<p>Virtual Camera, 1, 025AE3000001</p>", static_cast<QMessageBox &>(box).informativeText());
        QMetaObject::invokeMethod(&content(), "on_btnWriteConfiguration_clicked");
        content().refresh();
        EXPECT_FALSE(window().close());
        click(*static_cast<QMessageBox &>(box).button(QMessageBox::No));
    });
    select(2);
    EXPECT_EQ("2 192.168.10.22", selected() + " " + text("editIpAddress"));
    EXPECT_EQ(0u, status(1).ipCycles + status(2).ipCycles);
}

TEST_F(Editing, TheListStaysWhereItWasScrolled) {
    Cameras cameras;
    for (unsigned i = 1; i <= 30; ++i)
        cameras.push_back(cameraAt(i, "192.168.10." + std::to_string(20 + i) + "/24", ",dhcp=192.168.10.200/24"));
    open(cameras);
    const auto atTop = [this] { return tree().itemAt(0, 0)->text(Serial); };
    select(20);
    tree().verticalScrollBar()->setValue(18);
    tree().horizontalScrollBar()->setValue(30);
    const QString top = atTop();
    click("btnUseDhcp");
    click("btnWriteConfiguration");
    EXPECT_EQ("192.168.10.200", addressOf(20));
    EXPECT_EQ(top, atTop());
    nic0->cameras.removeCamera(camera(1).mac);
    refresh();
    EXPECT_EQ(top + " 20", atTop() + " " + selected());
    EXPECT_EQ(30, tree().horizontalScrollBar()->value());
}

TEST_F(Editing, TheBoxSaysThatASaveWasSentAndTheCameraStayedAway) {
    open({cameraAt(1, "192.168.10.21/24", ",silence=3600000")});
    select(1);
    expectForceIp(ConnectHeader);
    expect(QString("Ostra Lanvane: ") + NotSaved, [](QWidget &box) {
        EXPECT_EQ("The settings were sent, but the camera did not come back. It does not answer the search.",
                  static_cast<QMessageBox &>(box).informativeText());
        box.close();
    });
    save("192.168.10.51");
    EXPECT_EQ("Not Reachable 192.168.10.51", cell(1, Status) + " " + text("editIpAddress"));
    EXPECT_THAT(reports, ElementsAre("broadcastConfiguration: Failed to discover reconfigured device"));
    EXPECT_THAT(waits, IsSupersetOf({Rediscovering, "Trying to establish a connection to the device..."}));
    EXPECT_EQ("192.168.10.51", status(1).persistent.address.toString());
}

TEST_F(Editing, TheForceIpDialogSaysThatACameraIsInUse) {
    open({cameraAt(1, "192.168.10.21/24")});
    hold(1);
    refresh();
    select(1);
    expect(QString("Assign Temporary IP Address (Force IP): ") + AssignHeader, [](QWidget &dialog) {
        EXPECT_THAT(dialog.findChild<QLabel *>("lblNotice")->text().toStdString(),
                    StartsWith("The camera is controlled by another application"));
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    useContextMenu();
}

TEST_F(Editing, NothingTypedIsTooMuch) {
    open({cameraAt(1, "192.168.10.21/24")});
    select(1);
    QElapsedTimer elapsed;
    elapsed.start();
    the<QLineEdit>("editIpAddress").setText(QString(32000, '0'));
    EXPECT_LT(elapsed.elapsed(), 1000);
    const QWidget neverShown;
    awaitExposure(neverShown);
}

} // namespace
