// From a camera that does not show up, or cannot be used, to the command that mends it.

#include "Desktop.h"
#include "support/SocketAddress.h"
#include "support/TestFolder.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QtTest>

#include <filesystem>
#include <sys/socket.h>
#include <unistd.h>

using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class Reason : public Desktop {
protected:
    static void run(const char *command) { ASSERT_EQ(std::system(command), 0) << command; }
    std::string summary() const { return the<QPushButton>("btnSummary").text().toStdString(); }
    void selectAdapter(const char *name) { select(tree().findItems(name, Qt::MatchStartsWith, Name).value(0)); }
    /// Takes the n-th command of what is said, by keyboard, and runs it. \returns it.
    std::string copyAndRun(int index = 0) {
        auto &label = the<QLabel>("selectionInfo");
        label.setFocus(Qt::TabFocusReason);
        for (int i = 0; i <= index; ++i)
            QTest::keyClick(&label, Qt::Key_Tab);
        QTest::keyClick(&label, Qt::Key_Return);
        const std::string command = QGuiApplication::clipboard()->text().toStdString();
        run(command.c_str());
        QGuiApplication::clipboard()->clear();
        refresh();
        return command;
    }
};

TEST_F(Reason, ReversePathFilter) {
    open({cameraAt(1, "192.168.10.21/24")}, {cameraAt(2, "10.0.0.9/8")});
    run("sysctl -qw net.ipv4.conf.nic1.rp_filter=1");
    refresh();
    EXPECT_EQ("1 camera on 2 adapters, 1 adapter needs attention", summary());
    click("btnSummary");
    EXPECT_EQ("nic1", tree().currentItem()->text(Name));
    EXPECT_THAT(said(), HasSubstr("<b>No camera answered here</b></p><p><b>Error:</b> Reverse path filtering hides"));
    EXPECT_THAT(tree().currentItem()->toolTip(Name).toStdString(), HasSubstr("<b>Error:</b>"));
    picture("filter");
    EXPECT_EQ("sysctl -w net.ipv4.conf.all.rp_filter=0 net.ipv4.conf.nic1.rp_filter=0", copyAndRun());
    EXPECT_THAT(rows(), ElementsAre("nic0", "1", "nic1", "2"));
    EXPECT_THAT(said(), Not(HasSubstr("No camera answered")));
}

TEST_F(Reason, FirewallHidesCamerasAndTheListenerListsThem) {
    const TestFolder folder;
    std::filesystem::copy_file(LISTENER, folder / "lanvane-listen");
    run(("setcap cap_net_raw=p " + std::string(folder / "lanvane-listen")).c_str());
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QByteArray((folder / "").c_str()) + ":" + path);
    open({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24")});
    EXPECT_EQ("2 cameras on 2 adapters", summary());
    run("nft 'add table ip f; add chain ip f in { type filter hook input priority 0; policy drop; }'");
    refresh();
    for (int tries = 0; tries < 5 && summary().rfind("0 cameras", 0) == 0; ++tries)
        refresh(); // the listener has 100 ms to start
    EXPECT_EQ("2 cameras on 2 adapters, 2 cameras and 2 adapters need attention", summary());
    select(1);
    EXPECT_EQ("Hidden 192.168.10.21", cell(1, Status) + " " + cell(1, IpAddress));
    EXPECT_THAT(said(), HasSubstr("a firewall of this host dropped it"));
    EXPECT_FALSE(isEnabled("editor"));
    EXPECT_EQ("", text("editIpAddress"));
    expect("&Assign Temporary IP Address...", [](QWidget &menu) {
        EXPECT_FALSE(static_cast<QMenu &>(menu).actions().at(0)->isEnabled());
        menu.close();
    });
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, {});
    QApplication::sendEvent(&tree(), &menuKey);
    picture("hidden");
    EXPECT_THAT(copyAndRun(), StartsWith("nft insert rule ip f in"));
    EXPECT_EQ("OK", cell(1, Status));
    EXPECT_EQ("2 cameras on 2 adapters", summary());
    EXPECT_EQ("192.168.10.21", text("editIpAddress"));
}

TEST_F(Reason, AdaptersThatCannotBeUsedHaveARow) {
    nic0.emplace("nic0", "192.168.10.1/24", Cameras{cameraAt(1, "192.168.10.21/24")});
    const testnet::Adapter without("nic1", "");
    const testnet::Adapter unplugged("nic2", "192.168.30.1/24");
    const testnet::Adapter off("nic3", "192.168.40.1/24");
    unplugged.cameraSide().ip("link set cam down");
    ip("link set nic3 down");
    openWindow();
    EXPECT_THAT(rows(), ElementsAre("nic0", "1", "nic1 (no IPv4 address)", "nic2 (no link)", "nic3 (switched off)"));
    EXPECT_EQ("1 camera on 1 adapter", summary()); // of those nobody has said that they are to be used
    selectAdapter("nic2");
    EXPECT_THAT(said(), HasSubstr("Adapter nic2 has no link"));
    selectAdapter("nic3");
    picture("idle");
    EXPECT_EQ("ip link set dev nic3 up", copyAndRun());
    selectAdapter("nic1");
    EXPECT_THAT(copyAndRun(), StartsWith("ip address add "));
    EXPECT_THAT(rows(), testing::IsSupersetOf({"nic1", "nic3"}));
    EXPECT_THAT(said(), HasSubstr("<b>No camera answered here</b></p><p>Most frequent causes: "));
}

TEST_F(Reason, CamerasSayWhatIsWrongWithThem) {
    const int holder = socket(AF_INET, SOCK_DGRAM, 0);
    open({cameraAt(1, "172.16.0.9/16"), cameraAt(2, "192.168.10.22/24"), cameraAt(3, "192.168.10.23/24")},
         {cameraAt(4, "192.168.10.22/24")});
    ASSERT_EQ(bind(holder, SocketAddress("192.168.10.1", 5555), sizeof(sockaddr_in)), 0);
    nic0->cameras.setHolder(camera(3).mac, camsim::Holder{{camsim::Ipv4::parse("192.168.10.1"), 5555}, 2});
    refresh();
    EXPECT_EQ("4 cameras on 2 adapters, 3 need attention", summary());
    select(3);
    EXPECT_THAT(said(), HasSubstr("in use by another application!"));
    EXPECT_THAT(said(), HasSubstr("is in use by 192.168.10.1:5555, program system_tests (process " +
                                  std::to_string(getpid()) + ") of this host."));
    picture("held");
    for (const char *next : {"4", "1", "2", "4"}) { // behind the last one comes the first
        click("btnSummary");
        EXPECT_EQ(next, selected());
        EXPECT_NE(row(3)->icon(Name).cacheKey(), tree().currentItem()->icon(Name).cacheKey()); // with a sign
    }
    EXPECT_THAT(said(), HasSubstr("<b>Error:</b> Camera 02:5A:E3:00:00:04 has the current address 192.168.10.22, which "
                                  "camera 02:5A:E3:00:00:02 has as well."));
    EXPECT_THAT(said(), HasSubstr(">lanvanectl rescue 02:5A:E3:00:00:04<"));
    picture("duplicate");
    select(1);
    EXPECT_THAT(said(), HasSubstr("outside the subnets of adapter nic0 (192.168.10.0/24)"));
    picture("foreign");
    EXPECT_EQ("ip address add 172.16.0.1/16 brd + dev nic0", copyAndRun(1));
    EXPECT_EQ("OK", cell(1, Status));
    EXPECT_THAT(said(), Not(HasSubstr("Warning")));

    // What a forced address has mended is no longer said.
    nic0->cameras.setHolder(camera(3).mac, {});
    close(holder);
    ip("address delete 172.16.0.1/16 dev nic0");
    refresh();
    select(1);
    expectForceIp(AssignHeader, "192.168.10.77");
    useContextMenu();
    EXPECT_THAT(said(), Not(HasSubstr("outside the subnets")));
    EXPECT_THAT(said(), HasSubstr("Currently at the temporary address 192.168.10.77"));
}

using KeptUpToDate = Desktop;

TEST_F(KeptUpToDate, RowsChangeInPlaceAndNothingElse) {
    Cameras cameras;
    for (unsigned i = 2; i < 40; ++i)
        cameras.push_back(cameraAt(i, "192.168.10." + std::to_string(i) + "/24", ",model=B"));
    open(cameras);
    keepUpToDate(std::chrono::milliseconds(50));
    select(20);
    type("editIpAddress", "192.168.10.2");
    the<QLineEdit>("editIpAddress").setCursorPosition(3);
    const QTreeWidgetItem *const top = tree().itemAt(0, 0);
    const QTreeWidgetItem *const current = tree().currentItem();
    ASSERT_NE(tree().topLevelItem(0), top);
    waits.clear();
    tree().topLevelItem(1)->setExpanded(false);

    nic0->cameras.setFaults(camera(3).mac, camsim::parseFaults("loss-from-camera=100,limit=1,commands=discovery"));
    const auto searches = [this] { return status(3).requests[TAG_DISCOVERY_CMD]; };
    const auto isThere = [&, end = searches() + 3] {
        EXPECT_NE("Gone", cell(3, Status)); // for one lost answer
        return searches() >= end;
    };
    EXPECT_TRUE(QTest::qWaitFor(isThere, 20000));

    nic0->cameras.addCamera(cameraAt(1, "192.168.10.99/24", ",model=A"));
    nic0->cameras.removeCamera(camera(39).mac);
    EXPECT_TRUE(QTest::qWaitFor([&] { return row(1) != nullptr && row(39) == nullptr; }, 20000));
    EXPECT_EQ(row(1), tree().topLevelItem(0)->child(0)); // in the order
    nic0->cameras.removeCamera(camera(20).mac);
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(20, Status) == "Gone"; }, 20000));
    nic0->cameras.addCamera(cameraAt(20, "192.168.10.98/24", ",model=B"));
    const auto isBack = [&] { return cell(20, IpAddress) == "192.168.10.98" && cell(20, Status) == "OK"; };
    EXPECT_TRUE(QTest::qWaitFor(isBack, 20000));
    EXPECT_TRUE(top == tree().itemAt(0, 0) && current == tree().currentItem() && current == row(20));
    EXPECT_EQ("192.168.10.2 3",
              text("editIpAddress") + " " + QString::number(the<QLineEdit>("editIpAddress").cursorPosition()));
    EXPECT_THAT(waits, ElementsAre());
    EXPECT_FALSE(tree().topLevelItem(1)->isExpanded());
    EXPECT_EQ("38 cameras on 2 adapters", the<QPushButton>("btnSummary").text());

    save("192.168.10.200"); // beside a search or not
    EXPECT_EQ("192.168.10.200", addressOf(20));
    nic0->cameras.removeCamera(camera(20).mac);
    nic1->cameras.addCamera(cameraAt(20, "192.168.20.20/24", ",model=B"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return row(20)->parent() == tree().topLevelItem(1); }, 20000));
    EXPECT_TRUE(row(20) == tree().currentItem() && row(20)->isSelected());
    ip("link set nic1 down");
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(20, Status) == "Gone"; }, 20000));
    EXPECT_TRUE(row(20) == tree().currentItem() && row(20)->isSelected());
    EXPECT_TRUE(window().close());
    EXPECT_THAT(reports, ElementsAre());
    openWindow();
    EXPECT_TRUE(the<QAction>("actionKeepUpToDate").isChecked());
}

} // namespace
