#include "Desktop.h"

#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>

using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const char *const ErrorImage = "<p><img src=':/Lanvane/Resources/error.png'><br>";
const char *const UnreachableText =
    "The device is unreachable!</p><p>Currently you will not be able to use the device.</p>Please make sure the IP "
    "address is in the same subnet as the adapter the device is connected to.<br>Possible addresses are:<br>"
    "192.168.10.1 - 192.168.10.254<br>";
const char *const InUseText =
    "The device is currently in use by another application!</p><p>Please close any applications currently using the "
    "device and click <b>Refresh</b> to check the status again.";
const char *const UnknownText =
    "There was an error while trying to determine the accessibility status of the device.</p>Try refreshing the list "
    "by clicking <b>Refresh</b>.";
const char *const OtherSubnetText =
    "<p>The network adapter and the device are currently not in the same subnet. Therefore, the device will currently "
    "not be visible to applications.</p><p>Make sure the device and the network adapter share the same network prefix "
    "and subnet mask.</p>";

using Finding = Desktop;

TEST_F(Finding, TheFirstRefreshStartsWhenTheWindowIsShown) {
    open({cameraAt(3, "192.168.10.23/24", ",model=B"), cameraAt(2, "192.168.10.22/24", ",model=B"),
          cameraAt(1, "192.168.10.21/24")},
         {cameraAt(4, "192.168.20.24/24")});
    EXPECT_THAT(rows(), ElementsAre("nic0", "2", "3", "1", "nic1", "4")); // by model and number
    EXPECT_EQ("<table align='left' border='0' cellpadding='1' cellspacing='1'><tr><td width='8'></td></tr><tr><td "
              "width='8'></td><td>IP Address:</td><td width='100' align='right'>192.168.10.1</td></tr><tr><td></td>"
              "<td>Subnet Mask:</td><td align='right'>255.255.255.0</td></tr></table>",
              info());
    EXPECT_FALSE(isEnabled("editor"));

    QStringList cells;
    for (int column = Name; column <= SubnetMask; ++column)
        cells << tree().headerItem()->text(column) + "=" + row(2)->text(column);
    EXPECT_EQ("=B|Serial Number=2|MAC Address=025AE3000002|Status=OK|IP Configuration=Static IP, Auto IP|"
              "IP Address=192.168.10.22|Subnet Mask=255.255.255.0",
              cells.join("|"));
    select(2);
    QString expected = "<p><table align='left' border='0' cellpadding='1' cellspacing='1'>";
    for (const char *line :
         {"Vendor:</td><td>Ostra", "Model Name:</td><td>B", "Serial Number:</td><td>2",
          "MAC Address:</td><td>025AE3000002", "IP Configuration:</td><td>Static IP, Auto IP",
          "IP Address:</td><td>192.168.10.22", "Subnet Mask:</td><td>255.255.255.0", "Gateway:</td><td>0.0.0.0"})
        expected += QString("<tr><td width='8'></td><td>%1</td></tr>").arg(line);
    EXPECT_EQ(expected + "</table></p>", info());
    EXPECT_TRUE(isEnabled("editor"));
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Finding, EachVerdictHasItsRowDiagnosisAndEditor) {
    open({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24"), cameraAt(5, "192.168.10.25/24"),
          cameraAt(6, "172.16.0.9/16"), cameraAt(7, "192.168.10.27/16")});
    hold(2);
    // Readable although held exclusively: nothing definite can be said.
    nic0->cameras.writeRegister(camera(5).mac, GEV_REG_CONTROL_CHANNEL_PRIVILEGE, 1);
    refresh();
    const struct {
        unsigned camera;
        const char *status;
        std::optional<QStyle::StandardPixmap> icon;
        QString diagnosis;
        bool editable;
    } cases[] = {
        {2, "In use", QStyle::SP_MessageBoxWarning, InUseText, false},
        {5, "Unknown", QStyle::SP_MessageBoxCritical, UnknownText, true},
        {6, "Not Reachable", QStyle::SP_MessageBoxWarning, UnreachableText, true},
        {7, "OK", {}, OtherSubnetText, true},
        {1, "OK", {}, "", true},
    };
    for (const auto &expected : cases) {
        SCOPED_TRACE(expected.camera);
        select(expected.camera);
        EXPECT_EQ(expected.status, cell(expected.camera, Status));
        const QIcon icon = row(expected.camera)->icon(Status);
        ASSERT_EQ(expected.icon.has_value(), !icon.isNull());
        if (expected.icon) {
            EXPECT_EQ(QApplication::style()->standardIcon(*expected.icon).pixmap(16, 16).toImage(),
                      icon.pixmap(16, 16).toImage());
        }
        const QString diagnosis = expected.diagnosis.isEmpty() ? QString() : ErrorImage + expected.diagnosis;
        EXPECT_EQ(diagnosis, info().section("</table></p>", 1).left(diagnosis.size())); // findings follow
        EXPECT_EQ(expected.diagnosis.isEmpty(), info().endsWith("</table></p>"));
        EXPECT_EQ(expected.diagnosis.isEmpty(),
                  the<QScrollArea>("selectionInfoArea").verticalScrollBar()->value() == 0);
        EXPECT_EQ(expected.editable, isEnabled("btnUseDhcp") && isEnabled("editIpAddress"));
        EXPECT_EQ(expected.editable, the<QLabel>("hintText").text().isEmpty());
        EXPECT_FALSE(isEnabled("btnWriteConfiguration"));
    }
}

TEST_F(Finding, RefreshKeepsTheSelection) {
    open({cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.10.22/24")});
    select(2);
    refresh();
    EXPECT_EQ("2", selected());
    nic0->cameras.removeCamera(camera(2).mac);
    click("btnRefresh");
    EXPECT_EQ(tree().topLevelItem(0), tree().currentItem());
    select(tree().topLevelItem(1));
    refresh();
    EXPECT_EQ("nic1", tree().currentItem()->text(Name));
}

TEST_F(Finding, NothingToListWithoutAdapters) {
    open({cameraAt(1, "192.168.10.21/24")});
    select(1);
    ip("link set nic0 down");
    ip("link set nic1 down");
    refresh();
    EXPECT_THAT(rows(), ElementsAre());
    EXPECT_THAT(said(), StartsWith("<p>No active network networkAdapter found!</p><p>Please make sure your network "
                                   "adapters are enabled and working correctly.</p>Click <b>Refresh</b> or press "
                                   "<b>F5</b> to refresh the list of adapters.<p>Adapter nic0 is switched off.</p>"));
    EXPECT_EQ("", text("editIpAddress"));
}

TEST_F(Finding, RowOfACameraHeardTwiceAndOfOneWithoutAdapterRow) {
    open({cameraAt(1, "192.168.10.21/24")}, {cameraAt(1, "192.168.10.21/24"), cameraAt(2, "192.168.20.22/24")});
    nic1->cameras.setFaults(camsim::parseFaults("delay=100")); // to be heard second
    refresh();
    EXPECT_THAT(rows(), ElementsAre("nic0", "1", "nic1", "2"));
    // A dormant link carries datagrams although the system does not count it as running.
    ip("link set nic1 down mode dormant");
    ip("link set nic1 up");
    awaitAdapters(1);
    refresh();
    EXPECT_THAT(rows(), ElementsAre("nic0", "1", "Virtual Camera"));
    select(2);
    EXPECT_EQ("192.168.20.22", text("editIpAddress"));
}

TEST_F(Finding, DeviceTextsAreShownAsTexts) {
    open({cameraAt(1, "192.168.10.21/24", ",model=<b>M</b>&\xE2\x80\xAEx,manufacturer=<img src='http://a'>\x1B")});
    select(1);
    EXPECT_THAT(said(), HasSubstr("<td>&lt;img src='http://a'&gt;</td>"));
    EXPECT_THAT(said(), HasSubstr("<td>&lt;b&gt;M&lt;/b&gt;&amp;x</td>"));
}

} // namespace
