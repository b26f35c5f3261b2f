// The window on a real X server with a window manager, and a real mouse.

#include "Desktop.h"
#include "MinimalCorvo/CorvoBase.h"
#include "RealDisplay.h"
#include "support/GuiApplication.h"
#include "support/NetworkMain.h"

#include <QMenu>
#include <QSettings>
#include <QtTest>

#include <future>

using namespace testnet;

namespace {

class RealClicks : public Desktop {
protected:
    /// \param button 1: left, 3: right.
    static void clickAt(const QWidget &widget, const QPoint &place, int button = 1) {
        const QPoint there = widget.mapToGlobal(place);
        const std::string command = "mousemove " + std::to_string(there.x()) + " " + std::to_string(there.y()) +
                                    " click " + std::to_string(button);
        const auto done = std::async(std::launch::async, [&] { EXPECT_TRUE(RealDisplay::xdotool(command)); });
        while (done.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            QTest::qWait(5); // the window manager may ask the window
        QTest::qWait(100);
    }
    void clickOn(const char *name) const {
        const auto &widget = the<QWidget>(name);
        clickAt(widget, {12, widget.height() / 2});
    }
    void clickRow(unsigned camera, int button = 1) const {
        clickAt(*tree().viewport(), tree().visualItemRect(row(camera)).center(), button);
    }
};

TEST_F(RealClicks, SaveForceAndClose) {
    open({cameraAt(1, "192.168.10.21/24", ",dhcp=192.168.10.140/24"), cameraAt(2, "10.1.1.2/24")});
    clickRow(1);
    EXPECT_EQ("1", selected());
    clickOn("btnUseDhcp");
    clickOn("btnWriteConfiguration");
    EXPECT_TRUE(QTest::qWaitFor([this] { return cell(1, IpAddress) == "192.168.10.140"; }, 20000));
    EXPECT_TRUE(QTest::qWaitFor([this] { return isEnabled("deviceTree"); }, 20000));

    expect("&Assign Temporary IP Address...", [](QWidget &menu) {
        auto &entries = static_cast<QMenu &>(menu);
        clickAt(menu, entries.actionGeometry(entries.actions().first()).center());
    });
    expectForceIp(AssignHeader, "192.168.10.77");
    clickRow(2, 3);
    EXPECT_TRUE(QTest::qWaitFor([this] { return cell(2, IpAddress) == "192.168.10.77"; }, 20000));
    EXPECT_EQ("192.168.10.77", addressOf(2));

    ASSERT_TRUE(RealDisplay::xdotool("key alt+F4")); // which the window manager makes a request of
    EXPECT_TRUE(QTest::qWaitFor([this] { return !window().isVisible(); }, 20000));
    EXPECT_TRUE(reports.isEmpty()) << reports.join('\n').toStdString();
}

TEST_F(RealClicks, AddressesAreSeenOnASmallScreen) {
    const QFont usual = QApplication::font();
    open({cameraAt(1, "192.168.100.121/24", ",model=Camera Model Name 1234-56,name=left")});
    for (const int points : {usual.pointSize(), 11, 14}) {
        QFont font = usual;
        font.setPointSize(points);
        QApplication::setFont(font);
        QSettings().clear();
        openWindow();
        const QFontMetrics metrics = tree().fontMetrics();
        EXPECT_GE(tree().columnWidth(IpAddress), metrics.horizontalAdvance("192.168.100.121"));
        EXPECT_LE(tree().columnViewportPosition(SubnetMask) + metrics.horizontalAdvance("255.255.255.0"),
                  tree().viewport()->width());
        EXPECT_LE(window().frameGeometry().width(), 1024);
    }
    QApplication::setFont(usual);
}

} // namespace

int main(int argc, char *argv[]) {
    return runInPrivateNetwork(argc, argv, [&] {
        if (!RealDisplay::isThere() && !RealDisplay::mustBeThere())
            return 77;
        const RealDisplay display;
        const GuiApplication application(argc, argv, "xcb");
        Corvo::CorvoInitialize();
        const int result = RUN_ALL_TESTS();
        Corvo::CorvoTerminate(true);
        return result;
    });
}
