// Several cameras at a time: selected together, configured in one go, undone, from files.

#include "Desktop.h"

#include "support/TestFolder.h"

#include <QAction>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

using namespace testnet;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// A user with a mouse.
class Several : public Desktop {
protected:
    void openWithTen(const std::string &settings = "") {
        Cameras cameras;
        for (unsigned i = 1; i <= 10; ++i) {
            const std::string address = "192.168.10." + std::to_string(139 + i) + "/24";
            cameras.push_back(cameraAt(i, address, ",enabled=dhcp+lla,dhcp=" + address + settings));
        }
        open(cameras);
    }
    void clickRow(unsigned camera, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(tree().viewport(), Qt::LeftButton, modifiers, placeOf(camera));
        QCoreApplication::processEvents();
    }
    QPoint placeOf(unsigned camera) {
        tree().scrollToItem(row(camera));
        return (tree().visualItemRect(row(camera)) & tree().viewport()->rect()).center();
    }
    /// The right mouse button in the row, then the first entry, then what is done in its window.
    void configureByMenu(unsigned camera, const Act &act) {
        expect("&Configure Selected...", [](QWidget &shown) {
            auto &menu = static_cast<QMenu &>(shown);
            QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(menu.actions().first()).center());
        });
        expect("Configure Cameras: ", act);
        const QPoint place = placeOf(camera);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, tree().viewport()->mapToGlobal(place));
        QApplication::sendEvent(tree().viewport(), &event);
    }
    void clickIn(QWidget &dialog, const char *button) { click(*dialog.findChild<QPushButton *>(button)); }
    static std::string message(const QWidget &dialog) {
        return dialog.findChild<QLabel *>("planMessage")->text().toStdString();
    }
    static QString cell(const QWidget &dialog, int row, int column) {
        return dialog.findChild<QTableView *>("planTable")->model()->index(row, column).data().toString();
    }
    bool canUndo() {
        emit the<QMenu>("menuCameras").aboutToShow();
        return the<QAction>("actionUndoLastChange").isEnabled();
    }
    void trigger(const char *action) { the<QAction>(action).trigger(); }
    /// The last numbers of the ten cameras' addresses, static or by DHCP: "61s 62s 63d ...".
    QString stored() {
        QString text;
        for (unsigned i = 1; i <= 10; ++i)
            text += QString::fromStdString(addressOf(i)).section('.', 3) + (status(i).ipEnabled & 1U ? "s " : "d ");
        return text.trimmed();
    }
};

enum PlanCell { Address = 4, Deed = 8, Outcome = 9 };

TEST_F(Several, TenBecomeStaticInEightClicksAndAreUndone) {
    openWithTen();
    nic0->adapter.cameraSide().ip("address add 192.168.10.63/24 dev cam"); // somebody who is no camera
    const QString before = stored();
    const bool couldUndo = canUndo();
    clickRow(1);
    clickRow(10, Qt::ShiftModifier);
    EXPECT_THAT(said(), HasSubstr("10 cameras are selected."));
    configureByMenu(5, [&](QWidget &dialog) {
        auto &start = *dialog.findChild<QLineEdit *>("planStart");
        EXPECT_EQ("192.168.10.2 192.168.10.2 192.168.10.11",
                  start.text() + " " + cell(dialog, 0, Address) + " " + cell(dialog, 9, Address));
        EXPECT_EQ(&start, dialog.focusWidget());
        QTest::keyClicks(&start, "192.168.10.61"); // over the suggestion, which is selected
        EXPECT_EQ("Set to Static IP 192.168.10.70/24", cell(dialog, 9, Deed));
        clickIn(dialog, "planApply"); // looks first
        EXPECT_EQ("Set to Static IP 192.168.10.71/24", cell(dialog, 9, Deed));
        EXPECT_THAT(message(dialog), StartsWith("Nothing was sent: another device has 192.168.10.63."));
        picture("configure-selected", &dialog);
        clickIn(dialog, "planApply");
        EXPECT_THAT(message(dialog), StartsWith("10 cameras changed."));
        EXPECT_EQ("Done", cell(dialog, 9, Outcome));
        picture("configured", &dialog);
        clickIn(dialog, "planClose");
    });
    EXPECT_TRUE(canUndo());
    EXPECT_EQ("61s 62s 64s 65s 66s 67s 68s 69s 70s 71s", stored());
    EXPECT_EQ("192.168.10.71", Desktop::cell(10, IpAddress)); // the list is up to date

    expect("Undo Last Change: ", [&](QWidget &dialog) {
        EXPECT_THAT(message(dialog), StartsWith("10 of 10 cameras will be changed."));
        picture("undo", &dialog);
        clickIn(dialog, "planApply");
        EXPECT_THAT(message(dialog), StartsWith("10 cameras changed."));
        clickIn(dialog, "planClose");
    });
    trigger("actionUndoLastChange");
    EXPECT_EQ(before, stored());
    EXPECT_EQ(couldUndo, canUndo());
}

TEST_F(Several, ACancelledApplicationSaysWhatWasDone) {
    openWithTen(",silence=700");
    QTest::keyClick(&tree(), Qt::Key_A, Qt::ControlModifier);
    QCoreApplication::processEvents();
    expect("Configure Cameras: ", [&](QWidget &dialog) {
        QTest::keyClicks(dialog.findChild<QLineEdit *>("planStart"), "192.168.10.61");
        QTimer looks;
        const unsigned cyclesBefore = status(1).ipCycles;
        QObject::connect(&looks, &QTimer::timeout, &dialog, [&] {
            if (status(1).ipCycles == cyclesBefore)
                return;
            looks.stop(); // the first of them restarts
            EXPECT_TRUE(dialog.findChild<QWidget *>("planProgress")->isVisible());
            EXPECT_FALSE(dialog.findChild<QWidget *>("planTable")->isEnabled());
            QTest::keyClick(&dialog, Qt::Key_Escape);
            EXPECT_THAT(message(dialog), StartsWith("Cancelling"));
        });
        looks.start(50);
        clickIn(dialog, "planApply");
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_THAT(message(dialog), StartsWith("Cancelled. 1 camera changed. 9 cameras not begun."));
        EXPECT_EQ("Not begun: It was not begun, as a stop was requested.", cell(dialog, 9, Outcome));
        EXPECT_EQ("61s 141d", stored().section(' ', 0, 1));
        clickIn(dialog, "planApply"); // what is not done yet
        EXPECT_THAT(message(dialog), StartsWith("9 cameras changed."));
        nic0->cameras.setFaults(camera(10).mac, camsim::parseFaults("silent-after=0"));
        type(*dialog.findChild<QLineEdit *>("planStart"), "192.168.10.81");
        clickIn(dialog, "planApply");
        EXPECT_EQ("9 cameras changed. 1 camera not begun.\nNothing more is applied before the marked cells are right.\n"
                  "Row 10, 02:5A:E3:00:00:0A: There is no camera '02:5A:E3:00:00:0A'.",
                  message(dialog));
        clickIn(dialog, "planClose");
    });
    trigger("actionConfigureSelected");
    EXPECT_EQ("81s 82s 83s 84s 85s 86s 87s 88s 89s 70s", stored());
}

TEST_F(Several, ListsAreSavedAndPlansOpened) {
    const TestFolder folder;
    const std::string file = folder / "cameras.csv";
    const auto choose = [&](const char *title) {
        expect(QString(title) + ": ", [&](QWidget &dialog) {
            auto &name = *dialog.findChild<QLineEdit *>("fileNameEdit");
            type(name, QString::fromStdString(file));
            QTest::keyClick(&name, Qt::Key_Return);
        });
    };
    const auto openPlan = [&](const char *text, const Act &act) {
        std::ofstream(file) << text;
        choose("Open Plan");
        expect("cameras.csv: ", act);
        trigger("actionOpenPlan");
    };
    open({cameraAt(1, "192.168.10.21/24", ",name=left"), cameraAt(2, "192.168.10.22/24"),
          cameraAt(3, "192.168.10.23/24")});
    clickRow(1);
    clickRow(2, Qt::ControlModifier);
    choose("Save the List of the Selected Cameras");
    trigger("actionSaveListAs");
    EXPECT_EQ("camera,mode,address,mask,gateway,name\n"
              "02:5A:E3:00:00:01,static,192.168.10.21,255.255.255.0,0.0.0.0,left\n"
              "02:5A:E3:00:00:02,static,192.168.10.22,255.255.255.0,0.0.0.0,\n",
              TestFolder::Read(file));

    openPlan("camera,mode,address\n1,static,192.168.10.300\n2,dhcp,\n", [&](QWidget &dialog) {
        EXPECT_EQ("This plan cannot be applied:\nLine 2, character 10: '192.168.10.300' is not an IPv4 address.",
                  message(dialog));
        EXPECT_FALSE(dialog.findChild<QPushButton *>("planApply")->isEnabled());
        clickIn(dialog, "planClose");
    });
    openPlan("camera,address,name\n1,192.168.10.22,right\n2,192.168.10.21,\n", [&](QWidget &dialog) {
        clickIn(dialog, "planApply");
        clickIn(dialog, "planClose");
    });
    EXPECT_EQ("192.168.10.22 192.168.10.21 192.168.10.23", addressOf(1) + " " + addressOf(2) + " " + addressOf(3));
    EXPECT_EQ("right", status(1).userName);
}

TEST_F(Several, NothingIsHalfEditedWhenSeveralAreSelected) {
    open({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24"), cameraAt(3, "192.168.10.23/24")},
         {cameraAt(4, "192.168.20.21/24")});
    select(1);
    type("editIpAddress", "192.168.10.53");
    expectSaveQuestion(QMessageBox::No);
    expect("Configure Cameras: ", [&](QWidget &dialog) { clickIn(dialog, "planClose"); });
    trigger("actionConfigureSelected");
    EXPECT_EQ("192.168.10.21", text("editIpAddress"));
    type("editIpAddress", "192.168.10.51");
    expectSaveQuestion(QMessageBox::No);
    QTest::keyClick(&tree(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return info().contains("4 cameras are selected."); }));
    EXPECT_EQ("  ", addresses());
    EXPECT_FALSE(isEnabled("editor"));
    EXPECT_FALSE(isEnabled("btnWriteConfiguration"));
    refresh();
    EXPECT_THAT(said(), HasSubstr("4 cameras are selected.")); // rows go by MAC
    type("editFilter", "192.168.10");
    tree().setFocus();
    QTest::keyClick(&tree(), Qt::Key_C, Qt::ControlModifier); // those that are shown
    const QStringList copied = QGuiApplication::clipboard()->text().split('\n');
    ASSERT_EQ(3, copied.size());
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(copied[i].contains("025AE300000" + QString::number(i + 1) + "\t")) << copied[i].toStdString();
    type("editFilter", "");
    EXPECT_FALSE(row(4)->isSelected());
    clickRow(2, Qt::ControlModifier);
    clickRow(3, Qt::ControlModifier);
    EXPECT_EQ("1 192.168.10.21", selected() + " " + text("editIpAddress")); // the one that is left
    EXPECT_TRUE(isEnabled("editor"));
    clickRow(1, Qt::ControlModifier); // nothing else is selected, so it stays
    EXPECT_TRUE(row(1)->isSelected());
    type("editIpAddress", "192.168.10.51");
    expectSaveQuestion(QMessageBox::Yes);
    clickRow(2, Qt::ShiftModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return addressOf(1) == "192.168.10.51"; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(0u, status(2).ipCycles);
}

} // namespace
