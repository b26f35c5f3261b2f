// The list and the window around it: what helps to find, copy and read.

#include "Desktop.h"

#include <QAccessible>
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTextBrowser>
#include <QtTest>

using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr int UserName = SubnetMask + 1;

class Listing : public Desktop {
protected:
    Listing() {
        open({cameraAt(1, "192.168.10.100/24", ",model=A,name=left"),
              cameraAt(2, "192.168.10.21/24", ",model=B,name=right"), cameraAt(3, "192.168.10.22/24", ",model=C")});
    }
    QStringList shown() const {
        QStringList serials;
        for (QTreeWidgetItemIterator i(&tree(), QTreeWidgetItemIterator::NotHidden); *i; ++i) {
            if ((*i)->parent())
                serials << (*i)->text(Serial);
        }
        return serials;
    }
    void clickHeader(int column) {
        const QHeaderView &header = *tree().header();
        tree().horizontalScrollBar()->setValue(header.sectionPosition(column));
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                          QPoint(header.sectionViewportPosition(column) + 12, header.height() / 2));
    }
};

TEST_F(Listing, FilterSortAndCopy) {
    press(Qt::Key_F, Qt::ControlModifier);
    const struct {
        const char *text;
        QStringList serials;
    } filters[] = {
        {"RIGHT", {"2"}}, {"10.2", {"2", "3"}}, {"025ae3000001", {"1"}}, {"nobody", {}}, {"", {"1", "2", "3"}}};
    for (const auto &filter : filters) {
        type("editFilter", filter.text);
        EXPECT_EQ(filter.serials, shown()) << filter.text;
    }
    type("editFilter", "left");
    refresh();
    EXPECT_EQ(QStringList{"1"}, shown());
    press(Qt::Key_Escape);

    select(3); // what the editor is for is never hidden
    type("editFilter", "left");
    EXPECT_EQ((QStringList{"1", "3"}), shown());
    refresh();
    EXPECT_EQ((QStringList{"1", "3", "3"}), shown() << selected());
    select(1);
    QTest::mouseClick(tree().viewport(), Qt::LeftButton, Qt::ControlModifier, tree().visualItemRect(row(3)).center());
    type("editFilter", "left"); // of several, those that are hidden are none any more
    EXPECT_EQ((QStringList{"1", "1"}), shown() << selected());
    EXPECT_FALSE(row(3)->isSelected());
    tree().topLevelItem(0)->setExpanded(false);
    EXPECT_EQ("", selected());
    press(Qt::Key_Escape);
    refresh();

    clickHeader(IpAddress);
    EXPECT_EQ((QStringList{"2", "3", "1"}), shown()); // as numbers
    clickHeader(IpAddress);
    refresh();
    EXPECT_EQ((QStringList{"1", "3", "2"}), shown());
    clickHeader(IpAddress);
    EXPECT_EQ((QStringList{"1", "2", "3"}), shown());

    select(1);
    QTest::keyClick(&tree(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ("A\t192.168.10.100\t255.255.255.0\t1\t025AE3000001\tOK\tStatic IP, Auto IP\tleft",
              QGuiApplication::clipboard()->text()); // as on this small screen
}

TEST_F(Listing, NamesAreShownAndEdited) {
    select(1);
    EXPECT_EQ("left <span>Name: left</span>", row(1)->text(UserName) + " " + row(1)->toolTip(Name));
    EXPECT_THAT(said(), HasSubstr("Name: left"));
    const auto rename = [this](const QString &name) {
        tree().editItem(row(1), UserName);
        auto *editor = tree().viewport()->findChild<QLineEdit *>();
        ASSERT_NE(nullptr, editor);
        editor->setText(name);
        QTest::keyClick(editor, Qt::Key_Return);
        EXPECT_TRUE(QTest::qWaitFor([&] { return row(1)->text(UserName) == name; }));
    };
    rename("new <b>");
    EXPECT_THAT(said(), HasSubstr("new &lt;b&gt;"));
    tree().editItem(row(2), UserName);
    QTest::keyClicks(tree().viewport()->findChild<QLineEdit *>(), "typed");
    refresh();
    EXPECT_TRUE(QTest::qWaitFor([&] { return status(2).userName == "typed"; })); // what was typed is not lost
    EXPECT_TRUE(QTest::qWaitFor([&] { return row(2)->text(UserName) == "typed"; }));
    EXPECT_EQ("new <b>", row(1)->text(UserName)); // the camera has it
    rename("");
    save("192.168.10.101");
    EXPECT_EQ("192.168.10.101 ", cell(1, IpAddress) + " " + row(1)->text(UserName)); // no old name is written back
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Listing, HintsAreNotCutAndMoveNothing) {
    select(1);
    const QRect field = the<QWidget>("editDefaultGateway").geometry();
    auto &hint = the<QLabel>("hintText");
    for (const char *address : {"192.168.10.255", "10"}) { // the longest and the shortest
        type("editIpAddress", address);
        EXPECT_THAT(hint.text().toStdString(), HasSubstr("IP address"));
        EXPECT_LE(hint.heightForWidth(hint.width()), hint.height()) << hint.text().toStdString();
        EXPECT_EQ(field, the<QWidget>("editDefaultGateway").geometry());
    }
    press(Qt::Key_Escape);
}

TEST_F(Listing, EveryStopHasANameAndF1Helps) {
    nic0->cameras.setReachable(camera(1).mac, false);
    refresh();
    select(1);
    window().setAttribute(Qt::WA_KeyboardFocusChange); // as the Tab key does
    int stops = 0;
    for (QWidget *stop : window().findChildren<QWidget *>()) {
        if (!(stop->focusPolicy() & Qt::TabFocus) || !stop->isVisible())
            continue;
        ++stops;
        EXPECT_NE("", QAccessible::queryAccessibleInterface(stop)->text(QAccessible::Name))
            << stop->objectName().toStdString();
        if (!stop->isEnabled())
            continue;
        stop->setFocus(Qt::TabFocusReason);
        const QImage focused = window().grab().toImage();
        stop->clearFocus();
        EXPECT_NE(focused, window().grab().toImage()) << stop->objectName().toStdString();
    }
    EXPECT_GE(stops, 10);
    EXPECT_THAT(
        QAccessible::queryAccessibleInterface(&the<QWidget>("selectionInfo"))->text(QAccessible::Name).toStdString(),
        HasSubstr("The device is unreachable!"));

    press(Qt::Key_F1);
    const QString page = the<QTextBrowser>("troubleshooting").toPlainText();
    for (const char *part : {"Reverse path filtering would hide cameras", "answers-blocked", "Check cable and power."})
        EXPECT_THAT(page.toStdString(), HasSubstr(part));
    QTest::keyClick(&the<QTextBrowser>("troubleshooting"), Qt::Key_Escape);
}

} // namespace
