#include "Desktop.h"

#include <QRadioButton>
#include <QtTest>

using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Saving = Desktop;

const char *const Opening = "Trying to establish a connection to the device...";
const char *const Rediscovering =
    "Camera restarts its IP configuration cycle.\nWaiting until the device has been discovered again...";
const char *const Lost = "broadcastConfiguration: Failed to discover reconfigured device";

TEST_F(Saving, EachModeByBroadcast) {
    // In a foreign subnet, which does not matter.
    open({cameraAt(1, "172.16.0.9/16", ",dhcp=192.168.10.140/24")}, {cameraAt(2, "192.168.20.22/24")});
    select(1);
    const struct {
        const char *button, *text, *address;
        std::uint32_t enabled;
    } modes[] = {
        {"btnUseDhcp", "DHCP, Auto IP", "192.168.10.140", 6},
        {"btnUseAutoIp", "Auto IP", "169.254.", 4},
        {"btnUsePersistentIp", "Static IP, Auto IP", "192.168.10.21", 5},
    };
    for (const auto &mode : modes) {
        SCOPED_TRACE(mode.text);
        click(mode.button);
        const bool isStatic = mode.enabled == 5;
        EXPECT_EQ(isStatic, isEnabled("editIpAddress") && isEnabled("editNetmask") && isEnabled("editDefaultGateway"));
        EXPECT_NE("", text("editIpAddress"));
        if (isStatic) {
            type("editIpAddress", "192.168.010.021");
            type("editNetmask", "/24");
            type("editDefaultGateway", "192.168.10.254");
        }
        the<QWidget>("btnWriteConfiguration").setFocus();
        click("btnWriteConfiguration");
        EXPECT_EQ(mode.enabled, status(1).ipEnabled);
        EXPECT_THAT(addressOf(1), HasSubstr(mode.address));
        EXPECT_EQ(mode.text, cell(1, IpConfiguration));
        EXPECT_EQ(addressOf(1), cell(1, IpAddress).toStdString());
        EXPECT_EQ("1", selected());
        EXPECT_FALSE(isEnabled("btnWriteConfiguration"));
        EXPECT_EQ(&tree(), window().focusWidget());
    }
    EXPECT_EQ("255.255.255.0 192.168.10.254",
              status(1).persistent.mask.toString() + " " + status(1).persistent.gateway.toString());
    EXPECT_EQ(0u, status(1).requests.count(TAG_WRITEREG_CMD));
    EXPECT_EQ(0u, status(2).ipCycles);
    EXPECT_THAT(waits, ElementsAre(Rediscovering));
    EXPECT_THAT(reports, ElementsAre());
    select(2); // asks nothing
}

TEST_F(Saving, ByUnicastWithoutTheVendorCommand) {
    open({cameraAt(1, "192.168.10.21/24", ",vendor-config=not-implemented"),
          cameraAt(2, "192.168.10.22/24", ",vendor-config=error,xml=none,dhcp=192.168.10.140/24")});
    select(1);
    type("editIpAddress", "192.168.10.51");
    press(Qt::Key_Return);
    EXPECT_EQ("192.168.10.51 192.168.10.51", addressOf(1) + " " + cell(1, IpAddress).toStdString());
    EXPECT_EQ(5u, status(1).ipEnabled);
    EXPECT_FALSE(status(1).holder);

    select(2);
    type("editIpAddress", "192.168.10.52"); // and then thinks otherwise
    click("btnUseDhcp");
    press(Qt::Key_S, Qt::ControlModifier); // the button shows for a moment that it is pressed
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(2, IpAddress) == "192.168.10.140"; }, 15000));
    EXPECT_EQ("192.168.10.140", addressOf(2));
    EXPECT_EQ("DHCP, Auto IP", cell(2, IpConfiguration));
    EXPECT_EQ("192.168.10.22", status(2).persistent.address.toString());
    EXPECT_THAT(waits, ElementsAre(Opening, Rediscovering));
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Saving, ForcesFirstWhenACameraCannotBeReached) {
    open({unicastCamera(1, "172.16.0.9/16")});
    select(1);
    type("editIpAddress", "192.168.10.51");
    type("editNetmask", "255.255.255.0");
    expectForceIp(ConnectHeader);
    expectBox(NotSaved, QMessageBox::Close);
    click("btnWriteConfiguration");
    EXPECT_EQ("172.16.0.9", addressOf(1));
    EXPECT_EQ("192.168.10.51", text("editIpAddress")); // to be tried again

    expectForceIp(ConnectHeader, "192.168.10.77");
    click("btnWriteConfiguration");
    EXPECT_EQ("192.168.10.51", addressOf(1));
    EXPECT_EQ("OK", cell(1, Status));
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Saving, NeverReachesAnotherCameraWithTheSameAddress) {
    open({unicastCamera(1, "192.168.10.21/24"), unicastCamera(2, "192.168.10.21/24")}); // the first one answers
    select(2);
    type("editIpAddress", "192.168.10.52");
    expectForceIp(ConnectHeader, "192.168.10.77");
    click("btnWriteConfiguration");
    EXPECT_EQ("192.168.10.21 192.168.10.52", addressOf(1) + " " + addressOf(2));
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Saving, ACameraTakenMeanwhileIsLeftAlone) {
    open({cameraAt(1, "192.168.10.21/24")}); // refuses the vendor command, too, then
    select(1);
    click("btnUseAutoIp");
    hold(1);
    expectBox("Connection failed", AccessDenied, QMessageBox::Ok);
    expectBox(NotSaved, QMessageBox::Close);
    click("btnWriteConfiguration");
    EXPECT_EQ(5u, status(1).ipEnabled);
    EXPECT_EQ(0u, status(1).ipCycles);
    expectSaveQuestion(QMessageBox::No);
    refresh();
    EXPECT_FALSE(isEnabled("editor"));
}

TEST_F(Saving, ACameraThatDoesNotComeBackIsReported) {
    open({cameraAt(1, "192.168.10.21/24", ",silence=3600000")});
    select(1);
    type("editIpAddress", "192.168.10.51");
    expectForceIp(ConnectHeader);
    expect(QString("Ostra Lanvane: ") + NotSaved, [](QWidget &dialog) {
        auto &box = static_cast<QMessageBox &>(dialog);
        EXPECT_EQ("The settings were sent, but the camera did not come back. It does not answer the search.",
                  box.informativeText());
        click(*box.button(QMessageBox::Close));
    });
    click("btnWriteConfiguration");
    EXPECT_EQ("Not Reachable", cell(1, Status));
    EXPECT_THAT(reports, ElementsAre(Lost));
    EXPECT_THAT(waits, ElementsAre(Rediscovering, Opening));
    EXPECT_EQ("192.168.10.51", status(1).persistent.address.toString());
}

TEST_F(Saving, WhatWasTypedSurvivesAForcedAddressButNoModeWithoutAddresses) {
    open({cameraAt(1, "192.168.10.21/24", ",dhcp=192.168.10.140/24"), cameraAt(2, "192.168.10.22/24")});
    select(1);
    type("editIpAddress", "192.168.");
    expect("&Assign Temporary IP Address...", [](QWidget &menu) { QTest::keyClick(&menu, Qt::Key_A); });
    expectForceIp(AssignHeader);
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(), QPoint()); // Qt does not know where the row is
    QApplication::sendEvent(&tree(), &menuKey);
    EXPECT_EQ("192.168.", text("editIpAddress"));
    EXPECT_FALSE(isEnabled("btnWriteConfiguration"));
    click("btnUseDhcp");
    EXPECT_EQ("192.168.10.21 255.255.255.0 0.0.0.0", addresses());
    expectSaveQuestion(QMessageBox::Yes);
    select(2);
    EXPECT_EQ("192.168.10.140", addressOf(1));
    select(1);
    EXPECT_TRUE(the<QRadioButton>("btnUseDhcp").isChecked());
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Saving, OnlyWhatIsValidSupportedAndChanged) {
    open({cameraAt(1, "192.168.10.21/24", ",options=persistent+lla")});
    select(1);
    EXPECT_FALSE(isEnabled("btnUseDhcp"));
    const struct {
        const char *field, *text;
        bool savable;
    } cases[] = {
        {"editIpAddress", "192.168.10.210", true},    {"editIpAddress", "192.168.10.21", false},
        {"editIpAddress", "192.168.10.255", false},   {"editNetmask", "255.255.0.0", true},
        {"editNetmask", "255.0.255.0", false},        {"editNetmask", "/24", false},
        {"editDefaultGateway", "192.168.10.1", true}, {"editDefaultGateway", "", false},
    };
    for (const auto &entry : cases) {
        SCOPED_TRACE(entry.field + std::string(" ") + entry.text);
        type(entry.field, entry.text);
        EXPECT_EQ(entry.savable, isEnabled("btnWriteConfiguration"));
        press(Qt::Key_Escape);
        EXPECT_EQ("192.168.10.21 255.255.255.0 0.0.0.0", addresses());
        EXPECT_FALSE(isEnabled("btnWriteConfiguration"));
    }
    type("editNetmask", "/24");
    the<QWidget>("editIpAddress").setFocus();
    EXPECT_EQ("255.255.255.0", text("editNetmask"));
    press(Qt::Key_Escape);
    click("btnUseAutoIp");
    press(Qt::Key_Escape);
    EXPECT_TRUE(the<QRadioButton>("btnUsePersistentIp").isChecked());
    refresh(); // asks nothing
}

} // namespace
