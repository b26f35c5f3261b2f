#include "Desktop.h"

#include "CorvoQtBase/AsyncErrorQueue.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QtTest>

namespace {

constexpr int LookInterval_ms = 20;

/// What a dialog is and says: "TITLE: TEXT", or the first entry of a menu.
QString describe(const QWidget &dialog) {
    if (const auto *box = qobject_cast<const QMessageBox *>(&dialog))
        return box->windowTitle() + ": " + box->text();
    if (const auto *menu = qobject_cast<const QMenu *>(&dialog))
        return menu->actions().value(0)->text();
    const auto *header = dialog.findChild<QLabel *>("lblHeader");
    return dialog.windowTitle() + ": " + (header ? header->text() : QString());
}

void dismiss(QWidget &dialog) { dialog.close(); }

} // namespace

Desktop::Desktop() {
    QSettings().clear();
    QObject::connect(GetTheGlobalAsyncErrorQueue(), &AsyncErrorQueue::displayError, &m_Context,
                     [this](AsyncErrorQueue::ErrorSeverity, const QString &text, const QString &, const QString &,
                            const QString &context) { reports << context + ": " + text; });
    lookForDialogs();
}

Desktop::~Desktop() = default;

void Desktop::TearDown() {
    for (const auto *expected : {&m_Expected, &m_Waits}) {
        for (const Expected &missing : *expected)
            ADD_FAILURE() << "never asked: " << missing.dialog.toStdString();
    }
    EXPECT_EQ(nullptr, QApplication::overrideCursor());
}

void Desktop::open(const Cameras &onNic0, const Cameras &onNic1) {
    nic0.emplace("nic0", "192.168.10.1/24", onNic0);
    nic1.emplace("nic1", "192.168.20.1/24", onNic1);
    awaitAdapters(2); // they count as running up to a second later than they have a link
    openWindow();
}

void Desktop::openWindow() {
    m_Window = std::make_unique<MainWnd>();
    content().setRediscoveryPatience({6, std::chrono::milliseconds(100)});
    window().show();
    const QString before = info(); // the window comes first, then the search
    EXPECT_EQ("<p>No devices found!</p>Click <b>Refresh</b> or press <b>F5</b> to search for devices.", before);
    EXPECT_TRUE(QTest::qWaitFor([&] { return info() != before; }));
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window()));
}

QString Desktop::info() const { return the<QLabel>("selectionInfo").text(); }

QString Desktop::text(const char *field) const { return the<QLineEdit>(field).text(); }

QStringList Desktop::rows() const {
    QStringList names;
    for (QTreeWidgetItemIterator i(&tree()); *i; ++i)
        names << (*i)->text((*i)->parent() ? Serial : Name);
    return names;
}

QTreeWidgetItem *Desktop::row(unsigned camera) const {
    return tree().findItems(QString::number(camera), Qt::MatchExactly | Qt::MatchRecursive, Serial).value(0);
}

QString Desktop::cell(unsigned camera, Column column) const {
    const QTreeWidgetItem *item = row(camera);
    return item ? item->text(column) : "(not listed)";
}

void Desktop::select(QTreeWidgetItem *item) {
    ASSERT_NE(nullptr, item);
    tree().scrollToItem(item);
    const QRect visible = tree().visualItemRect(item) & tree().viewport()->rect();
    ASSERT_TRUE(!visible.isEmpty() && tree().isEnabled());
    QTest::mouseClick(tree().viewport(), Qt::LeftButton, {}, visible.center());
    QCoreApplication::processEvents(); // what saving leaves to be done
}

void Desktop::click(QWidget &button) {
    ASSERT_TRUE(button.isVisible() && button.isEnabled()) << button.objectName().toStdString();
    QTest::mouseClick(&button, Qt::LeftButton);
}

void Desktop::type(QWidget &field, const QString &text) {
    ASSERT_TRUE(field.isVisible() && field.isEnabled()) << field.objectName().toStdString();
    field.setFocus();
    QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&field, Qt::Key_Delete);
    QTest::keyClicks(&field, text);
}

void Desktop::save(const QString &address) {
    type("editIpAddress", address);
    click("btnWriteConfiguration");
}

void Desktop::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    window().activateWindow(); // a box may have been in front
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
    QWidget *focus = window().focusWidget();
    QTest::keyClick(focus ? focus : &window(), key, modifiers);
}

void Desktop::keepUpToDate(std::chrono::milliseconds interval) {
    content().setUpdateInterval(interval);
    the<QAction>("actionKeepUpToDate").setChecked(true);
}

void Desktop::picture(const char *name, QWidget *dialog) {
    const QString folder = qEnvironmentVariable("LANVANE_PICTURES");
    if (folder.isEmpty())
        return;
    if (!dialog)
        window().resize(std::max(window().width(), 1100), 620);
    QTest::qWait(100); // for what is laid out later
    EXPECT_TRUE((dialog ? *dialog : window()).grab().save(folder + "/" + name + ".png"));
}

void Desktop::awaitAdapters(int count) {
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return CNetworkAdapter::allNetworkAdapters(QNetworkInterface::IsUp | QNetworkInterface::IsRunning,
                                                   QNetworkInterface::IsLoopBack)
                   .size() == count;
    }));
}

void Desktop::useContextMenu() {
    m_Expected.push_front(
        {"&Assign Temporary IP Address...", [](QWidget &menu) { QTest::keyClick(&menu, Qt::Key_A); }});
    openContextMenu();
}

void Desktop::openContextMenu() {
    // As the menu key does: sent to the tree, with a place in the current row.
    const QPoint place = tree().visualItemRect(tree().currentItem()).center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, place, tree().viewport()->mapToGlobal(place));
    QApplication::sendEvent(tree().viewport(), &event);
}

void Desktop::expectWaitAndCancel(const QString &step) {
    expectWait(step, [](QWidget &box) { QTest::keyClick(&box, Qt::Key_Escape); });
}

void Desktop::expectBox(const QString &title, const QString &text, QMessageBox::StandardButton answer) {
    expect(title + ": " + text, [answer](QWidget &dialog) {
        QAbstractButton *button = static_cast<QMessageBox &>(dialog).button(answer);
        ASSERT_NE(nullptr, button);
        click(*button);
    });
}

void Desktop::expectForceIp(const QString &header, const QString &address) {
    expect("Assign Temporary IP Address (Force IP): " + header, [address](QWidget &dialog) {
        (void)QTest::qWaitForWindowActive(&dialog); // the focus would select what is being typed
        if (!address.isEmpty())
            type(*dialog.findChild<QLineEdit *>("editIpAddress"), address);
        click(*dialog.findChild<QDialogButtonBox *>()->button(address.isEmpty() ? QDialogButtonBox::Cancel
                                                                                : QDialogButtonBox::Ok));
    });
}

void Desktop::expectSaveQuestion(QMessageBox::StandardButton answer) {
    expectBox("Do you want to save the changes to the configuration?", answer);
}

testnet::Site &Desktop::siteOf(unsigned camera) {
    const auto known = nic0->cameras.cameras();
    const bool isOnNic0 = std::find(known.begin(), known.end(), testnet::camera(camera).mac) != known.end();
    return isOnNic0 ? *nic0 : *nic1;
}

void Desktop::hold(unsigned camera) {
    const camsim::Holder other{{camsim::Ipv4::parse("192.168.10.200"), 5555}, GEV_CONTROL_ACCESS};
    siteOf(camera).cameras.setHolder(testnet::camera(camera).mac, other);
}

void Desktop::lookForDialogs() {
    // A new timer each time: one whose slot opens a dialog itself would not fire again meanwhile.
    QTimer::singleShot(LookInterval_ms, &m_Context, [this] { lookForDialogs(); });
    for (QWidget *box : QApplication::topLevelWidgets()) {
        if (box->objectName() == "WaitBox" && box->isVisible())
            lookAtWaitBox(*box);
    }
    QPointer<QWidget> dialog = QApplication::activePopupWidget();
    if (!dialog)
        dialog = QApplication::activeModalWidget();
    if (dialog.isNull() || !dialog->isVisible() || dialog->objectName() == "WaitBox" || m_Answered.contains(dialog))
        return;
    m_Answered.append(dialog); // an answer may take its time
    answer(*dialog);
    m_Answered.removeLast();
    if (dialog && dialog->isVisible()) {
        ADD_FAILURE() << "left open: " << describe(*dialog).toStdString();
        dismiss(*dialog);
    }
}

void Desktop::lookAtWaitBox(QWidget &box) {
    const QString step = box.findChild<QLabel *>()->text();
    if (!waits.contains(step))
        waits << step;
    if (m_Waits.empty() || m_Waits.front().dialog != step)
        return;
    const Act act = m_Waits.front().act;
    m_Waits.pop_front();
    act(box);
}

void Desktop::answer(QWidget &dialog) {
    if (m_Expected.empty() && m_Anything) {
        m_Anything(dialog);
        return;
    }
    const Expected expected = m_Expected.empty() ? Expected{"(none)", &dismiss} : m_Expected.front();
    if (!m_Expected.empty())
        m_Expected.pop_front();
    EXPECT_EQ(expected.dialog, describe(dialog));
    (expected.dialog == describe(dialog) ? expected.act : &dismiss)(dialog);
}
