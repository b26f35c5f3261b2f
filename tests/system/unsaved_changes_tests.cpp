#include "Desktop.h"

#include <QSettings>
#include <QTimer>
#include <QtTest>

using namespace testnet;

namespace {

const char *const NotSavedRefresh = "The configuration could not be saved.\nThe Refresh operation has been canceled.";
const char *const NotSavedClose =
    "The configuration could not be saved.\nWould you like to continue closing the application?\n\nIf you click 'Yes', "
    "your configuration will not be changed and the application will close.\nIf you click 'No', you will return to the "
    "application.";

/// Cameras 1 and 2 in order, and 3 in a foreign subnet.
class UnsavedChanges : public Desktop {
protected:
    UnsavedChanges() {
        open({unicastCamera(1, "192.168.10.21/24"), unicastCamera(2, "192.168.10.22/24"),
              unicastCamera(3, "172.16.0.9/16")});
    }
    void edit(unsigned camera) {
        select(camera);
        type("editIpAddress", "192.168.10.51");
        type("editNetmask", "255.255.255.0");
    }
    /// Answers the question and meets a camera that was taken meanwhile.
    void expectFailingSave() {
        expectSaveQuestion(QMessageBox::Yes);
        expectBox("Connection failed", AccessDenied, QMessageBox::Ok);
    }
};

TEST_F(UnsavedChanges, OnSelectionChange) {
    edit(1);
    expectSaveQuestion(QMessageBox::Yes);
    select(2);
    EXPECT_EQ("2 192.168.10.22", selected() + " " + text("editIpAddress"));
    EXPECT_EQ("192.168.10.51 192.168.10.22", addressOf(1) + " " + addressOf(2));
    EXPECT_EQ("192.168.10.51", cell(1, IpAddress));

    edit(2);
    hold(2);
    expectFailingSave();
    expectBox(NotSaved, QMessageBox::Ok);
    select(1);
    EXPECT_EQ("1 192.168.10.51", selected() + " " + text("editIpAddress"));
}

TEST_F(UnsavedChanges, OfTheRowThatIsLeftGoToItsOwnCamera) {
    edit(3);
    expectSaveQuestion(QMessageBox::Yes);
    expectForceIp(ConnectHeader, "192.168.10.77");
    select(tree().topLevelItem(1)); // another adapter, another subnet
    EXPECT_EQ("192.168.10.51", addressOf(3));
    EXPECT_EQ("nic1", tree().currentItem()->text(Name));
    EXPECT_FALSE(isEnabled("editor"));
    EXPECT_EQ("192.168.10.51 OK", cell(3, IpAddress) + " " + cell(3, Status));
}

TEST_F(UnsavedChanges, OnRefresh) {
    edit(1);
    expectSaveQuestion(QMessageBox::No);
    refresh();
    EXPECT_EQ("192.168.10.21", text("editIpAddress"));

    edit(1);
    hold(1);
    expectFailingSave();
    expectBox(NotSavedRefresh, QMessageBox::Ok);
    refresh();
    EXPECT_EQ("In use", cell(1, Status)); // not as it was
    EXPECT_EQ(0u, status(1).ipCycles);

    nic0->cameras.setHolder(camera(1).mac, {});
    expectSaveQuestion(QMessageBox::Yes);
    refresh();
    EXPECT_EQ("192.168.10.51 192.168.10.51", text("editIpAddress") + " " + cell(1, IpAddress));
}

TEST_F(UnsavedChanges, OnCloseSavedOrDiscarded) {
    edit(1);
    hold(1);
    expectFailingSave();
    expectBox(NotSavedClose, QMessageBox::No);
    EXPECT_FALSE(window().close());
    EXPECT_TRUE(window().isVisible());
    EXPECT_FALSE(QSettings().contains("MainWindow/pos") || QSettings().contains("MainWindow/header"));

    expectFailingSave();
    expectBox(NotSavedClose, QMessageBox::Yes);
    EXPECT_TRUE(window().close());
    EXPECT_TRUE(QSettings().contains("MainWindow/pos") && QSettings().contains("MainWindow/header"));

    for (const bool save : {false, true}) {
        openWindow();
        edit(2);
        expectSaveQuestion(save ? QMessageBox::Yes : QMessageBox::No);
        EXPECT_TRUE(window().close());
        EXPECT_EQ(save ? "192.168.10.51" : "192.168.10.22", addressOf(2));
    }
}

TEST_F(UnsavedChanges, NothingElseStartsDuringAWait) {
    edit(1);
    int steps = 0;
    const auto disturb = [&] {
        EXPECT_NE(nullptr, QApplication::overrideCursor());
        content().refresh(); // nothing else starts
        QTest::keyClick(&window(), Qt::Key_F5);
        QTest::keyClicks(&the<QWidget>("editIpAddress"), "9");
        QTest::mouseClick(tree().viewport(), Qt::LeftButton, {}, tree().visualItemRect(row(2)).center());
        ++steps;
    };
    QTimer::singleShot(0, &window(), disturb);
    QTimer::singleShot(50, &window(), disturb);
    click("btnWriteConfiguration");
    EXPECT_EQ(2, steps);
    EXPECT_EQ("1 192.168.10.51", selected() + " " + text("editIpAddress"));
    EXPECT_EQ("192.168.10.51", addressOf(1));
    EXPECT_TRUE(window().close());
}

} // namespace
