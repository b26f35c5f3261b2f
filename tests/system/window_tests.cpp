#include "Desktop.h"

#include <QElapsedTimer>
#include <QHeaderView>
#include <QScreen>
#include <QSettings>

#include <iostream>

using namespace testnet;

namespace {

class Window : public Desktop {
protected:
    /// Geometry of a window that finds these settings.
    static QRect geometryWith(const QVariant &pos, const QVariant &size) {
        QSettings settings;
        settings.clear();
        settings.beginGroup("MainWindow");
        if (pos.isValid())
            settings.setValue("pos", pos);
        if (size.isValid())
            settings.setValue("size", size);
        settings.sync();
        const MainWnd window;
        return {window.pos(), window.size()};
    }
};

TEST_F(Window, StoredGeometry) {
    const QSize form(733, 408);
    const QSize stored(600, 300);
    EXPECT_EQ(QRect(QPoint(0, 0), form), geometryWith({}, {}));
    EXPECT_EQ(QRect(QPoint(30, 40), stored), geometryWith(QPoint(30, 40), stored));
    EXPECT_EQ(form, geometryWith(QPoint(30, 40), {}).size());
    EXPECT_EQ(form, geometryWith({}, stored).size());
    EXPECT_EQ(form, geometryWith(QPoint(30, 40), QSize(-5, -5)).size());
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    // The frame reaches 8 pixels to the left of the position and 16 above.
    EXPECT_EQ(stored, geometryWith(screen.bottomRight() + QPoint(8, 16), stored).size());
    EXPECT_EQ(form, geometryWith(screen.bottomRight() + QPoint(9, 0), stored).size());
    EXPECT_EQ(form, geometryWith(screen.bottomRight() + QPoint(0, 17), stored).size());
    EXPECT_EQ(form, geometryWith(QPoint(-592, 0), stored).size());
    EXPECT_EQ(stored, geometryWith(QPoint(-591, 0), stored).size());
}

TEST_F(Window, LayoutSurvivesARestart) {
    open({cameraAt(1, "192.168.10.21/24")});
    EXPECT_FALSE(tree().header()->sectionSize(Mac) == 222);
    tree().header()->resizeSection(Mac, 222);
    tree().header()->moveSection(Status, Serial);
    window().resize(700, 500);
    window().move(20, 30);
    refresh();
    EXPECT_TRUE(window().close());
    EXPECT_EQ(2, QSettings().value("MainWindow/headerver"));
    openWindow();
    EXPECT_EQ(QRect(20, 30, 700, 500), QRect(window().pos(), window().size()));
    EXPECT_EQ(222, tree().header()->sectionSize(Mac));
    EXPECT_EQ(1, tree().header()->visualIndex(Status));

    QSettings().setValue("MainWindow/headerver", 1); // another layout of the columns
    openWindow();
    EXPECT_EQ(static_cast<int>(Status), tree().header()->visualIndex(Status));
}

TEST_F(Window, AppearsAtOnceAndRefreshesTwoHundredCamerasSoon) {
    qputenv("CORVO_BROADCAST_RECV_BUF_SIZE", "1000000"); // the default loses some when the machine is busy
    Cameras cameras;
    for (unsigned i = 0; i < 200; ++i)
        cameras.push_back(cameraAt(i, "192.168.10." + std::to_string(i + 20) + "/24"));
    nic0.emplace("nic0", "192.168.10.1/24", cameras);
    awaitAdapters(1);
    QElapsedTimer timer;
    timer.start();
    {
        MainWnd first;
        first.show();
        first.grab();
        std::cout << "window shown and painted after " << timer.elapsed() << " ms\n";
    }
    openWindow();
    timer.restart();
    refresh();
    const qint64 elapsed = timer.elapsed();
    std::cout << "refresh of 200 cameras: " << elapsed << " ms\n";
    EXPECT_EQ(200, tree().topLevelItem(0)->childCount());
    EXPECT_LT(elapsed, 20000);
}

} // namespace
