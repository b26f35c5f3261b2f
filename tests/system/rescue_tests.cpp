// "Make Usable..." and the address map, with clicks as they come from the window system.

#include "Desktop.h"

#include "Lanvane/AddressMap.h"
#include "Lanvane/AddressMapModel.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QWindow>
#include <QtTest>

using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// Camera 1 in a foreign subnet, camera 2 in order.
class Rescuing : public Desktop {
protected:
    Rescuing() {
        open({cameraAt(1, "172.16.0.2/16", ",dhcp=192.168.10.150/24"), cameraAt(2, "192.168.10.3/24")});
        nic0->adapter.cameraSide().ip("address add 192.168.10.4/24 dev cam"); // a neighbour that is no camera
        QCoreApplication::instance()->installEventFilter(&m_Presses);
    }
    /// The window gets it, and decides what it is for.
    static void clickAt(QWidget &widget, const QPoint &place, Qt::MouseButton button = Qt::LeftButton) {
        QWidget *const top = widget.window();
        QTest::mouseClick(top->windowHandle(), button, {}, widget.mapTo(top, place));
    }
    static void clickOn(QWidget &dialog, const char *name) {
        QWidget *widget = dialog.findChild<QWidget *>(name);
        clickAt(*widget, QPoint(10, widget->height() / 2));
    }
    static void clickOk(QWidget &dialog) {
        QWidget *ok = dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
        EXPECT_TRUE(ok->isEnabled()) << dialog.findChild<QLabel *>("lblHint")->text().toStdString();
        clickAt(*ok, ok->rect().center());
    }
    static QString address(QWidget &dialog) { return dialog.findChild<QLineEdit *>("editIpAddress")->text(); }
    void expectDialog(Act act) {
        expect("Make Usable: <p>OL-2040, 1, 025AE3000001</p><p>It has the address 172.16.0.2 and is behind nic0 "
               "(192.168.10.1/24).</p>",
               std::move(act));
    }
    void useMenu() {
        expect("&Assign Temporary IP Address...", [](QWidget &menu) {
            auto &entries = static_cast<QMenu &>(menu);
            clickAt(menu, entries.actionGeometry(entries.actions().value(1)).center());
        });
        const QRect visible = tree().visualItemRect(row(1)) & tree().viewport()->rect();
        clickAt(*tree().viewport(), visible.center(), Qt::RightButton);
    }
    void useLink() { // which has no place of its own to click at
        emit the<QLabel>("selectionInfo").linkActivated("#make-usable");
    }
    /// "MODES ADDRESS/PREFIX" that camera 1 has stored, and what its row tells.
    std::string outcome() {
        return std::to_string(status(1).ipEnabled) + " " + status(1).persistent.address.toString() + " " +
               (cell(1, Status) + " " + cell(1, IpAddress)).toStdString();
    }

    struct Presses : QObject {
        bool eventFilter(QObject *watched, QEvent *event) override {
            count += event->type() == QEvent::MouseButtonPress && event->spontaneous() && watched->isWindowType();
            return false;
        }
        int count = 0;
    } m_Presses;
};

TEST_F(Rescuing, TakesThreeClicks) {
    EXPECT_EQ("Not Reachable", cell(1, Status));
    expectDialog([](QWidget &dialog) {
        EXPECT_EQ("192.168.10.2", address(dialog)); // its own with the adapter's network
        clickOk(dialog);
    });
    useMenu();
    EXPECT_EQ(3, m_Presses.count);
    EXPECT_EQ("5 192.168.10.2 OK 192.168.10.2", outcome());
    EXPECT_THAT(info().toStdString(), HasSubstr("<b>Done.</b> The camera has the address 192.168.10.2 and keeps it."));
    EXPECT_EQ("1", selected());
    EXPECT_THAT(reports, ElementsAre());
}

} // namespace
