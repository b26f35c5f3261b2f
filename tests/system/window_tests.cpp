#include "Desktop.h"

#include <QHeaderView>
#include <QScreen>
#include <QSettings>
#include <QSplitter>

using namespace testnet;

namespace {

class Window : public Desktop {
protected:
    /// Geometry of a window that finds these settings.
    static QRect geometryWith(const QVariant &pos, const QVariant &size) {
        QSettings().clear();
        if (pos.isValid())
            QSettings().setValue("MainWindow/pos", pos);
        if (size.isValid())
            QSettings().setValue("MainWindow/size", size);
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
    tree().header()->moveSection(tree().header()->visualIndex(Status), 1);
    window().resize(700, 500);
    window().move(20, 30);
    refresh();
    EXPECT_TRUE(window().close());
    EXPECT_EQ(2, QSettings().value("MainWindow/headerver"));
    openWindow();
    EXPECT_EQ(QRect(20, 30, 700, 500), QRect(window().pos(), window().size()));
    EXPECT_EQ(222, tree().header()->sectionSize(Mac));
    EXPECT_EQ(1, tree().header()->visualIndex(Status));

    QSettings().clear();
    openWindow();
    the<QSplitter>("splitter").setSizes({300, 400});
    const QList<int> sizes = the<QSplitter>("splitter").sizes();
    nic0->cameras.removeCamera(camera(1).mac); // no camera in that run
    refresh();
    EXPECT_TRUE(window().close());
    openWindow();
    EXPECT_EQ(sizes, the<QSplitter>("splitter").sizes());
    tree().header()->resizeSection(Mac, 222);
    EXPECT_TRUE(window().close());
    nic0->cameras.addCamera(cameraAt(1, "192.168.10.21/24"));
    openWindow();
    refresh();
    EXPECT_EQ(222, tree().header()->sectionSize(Mac));

    QTreeWidget before; // without the last column
    before.setColumnCount(SubnetMask + 1);
    before.header()->resizeSection(Mac, 211);
    QSettings().setValue("MainWindow/header", before.header()->saveState());
    openWindow();
    EXPECT_EQ(211, tree().header()->sectionSize(Mac));
    EXPECT_GT(tree().header()->sectionSize(SubnetMask + 1), 20);
    EXPECT_FALSE(tree().isColumnHidden(SubnetMask + 1));

    QSettings().setValue("MainWindow/headerver", 1); // another layout of the columns
    openWindow();
    EXPECT_NE(211, tree().header()->sectionSize(Mac));
}

} // namespace
