#include "Desktop.h"

#include <QRadioButton>
#include <QtTest>

using namespace testnet;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Saving = Desktop;

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
    EXPECT_THAT(waits, Contains(Rediscovering));
    EXPECT_THAT(reports, ElementsAre());
    select(2); // asks nothing
}

TEST_F(Saving, NeverReachesAnotherCameraWithTheSameAddress) {
    open({unicastCamera(1, "192.168.10.21/24"), unicastCamera(2, "192.168.10.21/24")}); // the first one answers
    select(2);
    type("editIpAddress", "192.168.10.52");
    expectForceIp(ConnectHeader, "192.168.10.77");
    press(Qt::Key_Return);
    EXPECT_EQ("192.168.10.21 192.168.10.52", addressOf(1) + " " + addressOf(2));
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Saving, WhatWasTypedSurvivesTheForceIpDialog) {
    open({cameraAt(1, "192.168.10.21/24")});
    select(1);
    type("editIpAddress", "192.168.");
    expect("&Assign Temporary IP Address...", [](QWidget &menu) { QTest::keyClick(&menu, Qt::Key_A); });
    expectForceIp(AssignHeader);
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(), QPoint()); // Qt does not know where the row is
    QApplication::sendEvent(&tree(), &menuKey);
    EXPECT_EQ("192.168.", text("editIpAddress"));
    EXPECT_FALSE(isEnabled("btnWriteConfiguration"));
}

TEST_F(Saving, OnlyWhatIsValidSupportedAndChanged) {
    open({cameraAt(1, "192.168.10.21/24", ",options=persistent+lla")});
    select(1);
    EXPECT_FALSE(isEnabled("btnUseDhcp"));
    const struct {
        const char *field, *text;
        bool savable;
    } cases[] = {
        {"editIpAddress", "192.168.10.210", true},
        {"editIpAddress", "192.168.10.255", false},
        {"editNetmask", "255.255.0.0", true},
        {"editDefaultGateway", "192.168.10.1", true},
    };
    for (const auto &entry : cases) {
        SCOPED_TRACE(entry.text);
        type(entry.field, entry.text);
        EXPECT_EQ(entry.savable, isEnabled("btnWriteConfiguration"));
        press(Qt::Key_Escape);
        EXPECT_EQ("192.168.10.21 255.255.255.0 0.0.0.0", addresses());
        EXPECT_FALSE(isEnabled("btnWriteConfiguration"));
    }
    type("editNetmask", "/24");
    EXPECT_FALSE(isEnabled("btnWriteConfiguration")); // it is the same
    the<QWidget>("editIpAddress").setFocus();
    EXPECT_EQ("255.255.255.0", text("editNetmask"));
    press(Qt::Key_Escape);
    click("btnUseAutoIp");
    press(Qt::Key_Escape);
    EXPECT_TRUE(the<QRadioButton>("btnUsePersistentIp").isChecked());
    refresh(); // asks nothing
}

} // namespace
