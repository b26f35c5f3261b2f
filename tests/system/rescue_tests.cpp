// "Make Usable..." and the address map, with clicks as they come from the window system.

#include "Desktop.h"

#include "Lanvane/AddressMap.h"
#include "Lanvane/AddressMapModel.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QTableView>
#include <QWindow>
#include <QtTest>

using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// Cameras 1 and 3 in a foreign subnet, camera 2 in order, camera 4 but for its mask.
class Rescuing : public Desktop {
protected:
    Rescuing() {
        open({cameraAt(1, "172.16.0.2/16", ",dhcp=192.168.10.150/24"), cameraAt(2, "192.168.10.3/24"),
              cameraAt(3, "172.16.0.9/16", ",silence=3600000,vendor-config=silent"), cameraAt(4, "192.168.10.30/16")});
        nic0->adapter.cameraSide().ip("address add 192.168.10.4/24 dev cam"); // a neighbour that is no camera
    }
    /// As the kernel does for hours when a camera has been replaced, for instance.
    static void rememberOneThatHasLeft(const std::string &address) {
        ip("neighbour replace " + address + " lladdr 02:5A:E3:00:00:99 dev nic0 nud stale");
    }
    /// The window gets it, and decides what it is for.
    static void clickAt(QWidget &widget, const QPoint &place) {
        QWidget *const top = widget.window();
        QTest::mouseClick(top->windowHandle(), Qt::LeftButton, {}, widget.mapTo(top, place));
    }
    static void clickOn(QWidget &dialog, const char *name) {
        auto *widget = dialog.findChild<QWidget *>(name);
        clickAt(*widget, QPoint(10, widget->height() / 2));
    }
    static void clickOk(QWidget &dialog) {
        QWidget *ok = dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
        EXPECT_TRUE(ok->isEnabled()) << hint(dialog).toStdString();
        clickAt(*ok, ok->rect().center());
    }
    static QLineEdit &address(QWidget &dialog) { return *dialog.findChild<QLineEdit *>("editIpAddress"); }
    static QString hint(QWidget &dialog) { return dialog.findChild<QLabel *>("lblHint")->text(); }
    void expectDialog(Act act, unsigned camera = 1, const char *address = "172.16.0.2") {
        expect(QString("Make Usable: <p>Virtual Camera, %1, 025AE300000%1</p><p>It has the address %2 and is behind "
                       "nic0 (192.168.10.1/24).</p>")
                   .arg(camera)
                   .arg(address),
               std::move(act));
    }
    void useLink() {
        auto &label = the<QLabel>("selectionInfo");
        QString under;
        const auto connection =
            QObject::connect(&label, &QLabel::linkHovered, [&](const QString &link) { under = link; });
        QPoint place(label.margin() + 10, label.height());
        while (under != "#make-usable" && place.y() > 0) {
            place -= QPoint(0, 4);
            QMouseEvent move(QEvent::MouseMove, place, Qt::NoButton, {}, {});
            QApplication::sendEvent(&label, &move);
        }
        QObject::disconnect(connection);
        the<QScrollArea>("selectionInfoArea").ensureVisible(place.x(), place.y());
        clickAt(label, place);
    }
    /// "MODES ADDRESS/PREFIX" that camera 1 has stored, and what its row tells.
    std::string outcome() {
        return std::to_string(status(1).ipEnabled) + " " + status(1).persistent.address.toString() + " " +
               (cell(1, Status) + " " + cell(1, IpAddress)).toStdString();
    }
};

/// With the right button in the row, on the entry and on OK.
TEST_F(Rescuing, TakesThreeClicks) {
    EXPECT_EQ("Not Reachable", cell(1, Status));
    expect("&Assign Temporary IP Address...", [](QWidget &menu) {
        QTest::mouseRelease(menu.windowHandle(), Qt::RightButton);
        auto &entries = static_cast<QMenu &>(menu);
        clickAt(menu, entries.actionGeometry(entries.actions().value(1)).center());
    });
    expectDialog([this](QWidget &dialog) {
        picture("make-usable", &dialog);
        EXPECT_EQ("192.168.10.2", address(dialog).text()); // its own with the adapter's network
        clickOk(dialog);
    });
    const QPoint place = (tree().visualItemRect(row(1)) & tree().viewport()->rect()).center();
    QTest::mousePress(window().windowHandle(), Qt::RightButton, {}, tree().viewport()->mapTo(&window(), place));
    EXPECT_EQ("5 192.168.10.2 OK 192.168.10.2", outcome());
    picture("made-usable");
    EXPECT_THAT(said(), HasSubstr("<b>Done.</b> The camera has the address 192.168.10.2 and keeps it."));
    EXPECT_EQ("1", selected());
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Rescuing, TheMapTellsWhoHasWhat) {
    rememberOneThatHasLeft("192.168.10.77");
    select(1);
    expectDialog([&](QWidget &dialog) {
        type(address(dialog), "192.168.10.3");
        EXPECT_EQ("The camera with the MAC address 02:5A:E3:00:00:02 has the address 192.168.10.3.", hint(dialog));
        expect("Address Map: ", [this](QWidget &widget) {
            auto &map = static_cast<AddressMap &>(widget);
            const auto describe = [&](unsigned host) { return map.model().describe(0xC0A80A00 + host).toStdString(); };
            auto &table = *map.findChild<QTableView *>("addresses");
            const auto click = [&](unsigned host) {
                clickAt(*table.viewport(), table.visualRect(map.model().indexOf(0xC0A80A00 + host)).center());
            };
            EXPECT_EQ("192.168.10.77: not asked yet", describe(77));
            EXPECT_TRUE(QTest::qWaitFor([&] { return describe(77) == "192.168.10.77: free"; }, 15000));
            EXPECT_THAT(describe(4), HasSubstr("192.168.10.4: another device, MAC "));
            for (const unsigned taken : {1U, 3U, 4U, 255U})
                click(taken);
            EXPECT_TRUE(map.isVisible());
            picture("address-map", &map);
            click(77);
        });
        clickOn(dialog, "btnMap");
        EXPECT_EQ("192.168.10.77", address(dialog).text());
        expect("Address Map: ", [](QWidget &map) { // where everything is known already
            for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Return})
                QTest::keyClick(map.findChild<QTableView *>("addresses"), key);
            EXPECT_FALSE(map.isVisible());
        });
        clickOn(dialog, "btnMap");
        EXPECT_EQ("192.168.10.78", address(dialog).text());
        expect("Address Map: ", [this](QWidget &map) {
            nic0->adapter.cameraSide().ip("link set cam down"); // everybody would seem to be absent
            clickOn(map, "btnAgain");
            const auto &state = *map.findChild<QLabel *>("lblState");
            EXPECT_TRUE(QTest::qWaitFor([&] { return state.text().startsWith("The adapter has no link"); }, 15000));
            nic0->adapter.cameraSide().ip("link set cam up");
            map.close();
        });
        clickOn(dialog, "btnMap");
        clickOn(dialog, "btnUntilRestart");
        clickOk(dialog);
    });
    useLink();
    EXPECT_EQ("5 172.16.0.2 OK 192.168.10.78", outcome());
    EXPECT_THAT(said(), HasSubstr("The camera has the address 192.168.10.78 until its next restart."));
}

TEST_F(Rescuing, LooksAgainWhetherATypedAddressIsFreeAndThenTakesDhcp) {
    rememberOneThatHasLeft("192.168.10.5");
    select(1);
    expectDialog([&](QWidget &dialog) {
        type(address(dialog), "192.168.10.4");
        clickOk(dialog);
    });
    expectDialog([&](QWidget &dialog) {
        EXPECT_EQ("Another device has the address 192.168.10.4.", hint(dialog));
        type(address(dialog), "192.168.10.5");
        clickOn(dialog, "btnDhcp");
        clickOk(dialog);
    });
    useLink();
    EXPECT_EQ("6 172.16.0.2 OK 192.168.10.150", outcome());
}

TEST_F(Rescuing, OffersTheAddressThatLacksTheRightMaskOnly) {
    select(4);
    expectDialog(
        [](QWidget &dialog) {
            EXPECT_EQ("192.168.10.30", address(dialog).text());
            clickOk(dialog);
        },
        4, "192.168.10.30");
    useLink();
    EXPECT_EQ("192.168.10.30 255.255.255.0 OK", cell(4, IpAddress) + " " + cell(4, SubnetMask) + " " + cell(4, Status));
    EXPECT_EQ("192.168.10.30", status(4).persistent.address.toString());

    nic0->cameras.setReachable(camera(2).mac, false); // whatever address it has
    refresh();
    select(2);
    expectDialog(&clickOk, 2, "192.168.10.3");
    useLink();
    EXPECT_THAT(said(), HasSubstr("<b>Done, but the camera cannot be reached yet.</b> The camera has the address"));
}

TEST_F(Rescuing, SaysWhatWasSentWhenItIsCancelled) {
    select(1);
    nic0->cameras.clearRequests();
    expectWaitAndCancel("Looking for a free address...");
    useLink();
    EXPECT_EQ(0u, nic0->cameras.requests().size());

    nic0->cameras.setFaults(camera(1).mac, camsim::parseFaults("silent-after=0"));
    expectDialog(&clickOk);
    expectWaitAndCancel("Assigning the temporary IP address...");
    useLink();
    EXPECT_THAT(said(), HasSubstr("<b>Cancelled.</b> The address 192.168.10.2 was sent, but the camera does not answer "
                                  "the search. Nothing was stored."));

    select(3);
    expectDialog(&clickOk, 3, "172.16.0.9");
    expectWait("Sending the configuration to the device...", [](QWidget &) {}); // and not before that
    expectWaitAndCancel(Rediscovering);
    useLink();
    EXPECT_THAT(said(), HasSubstr("<b>Cancelled.</b> The settings were sent, but the camera did not come back."));
}

} // namespace
