#include "Lanvane/AddressRules.h"
#include "Lanvane/EditorState.h"
#include "QtText.h"

#include <gmock/gmock.h>

using commissioning::Mode;

namespace {

/// A camera at 192.168.10.140 behind an adapter at 192.168.10.1/24, on a host that has 10.0.0.7/16 as well.
class Editor : public testing::Test {
protected:
    /// \param stored "IP MASK GATEWAY"; empty when it could not be read. \param forced in this run.
    void load(const char *config, const QString &stored, bool forced = false) {
        m_Device.SetIpConfigCurrent(config).SetIpAddress("192.168.10.140").SetSubnetMask("255.255.255.0");
        m_Device.SetDefaultGateway("0.0.0.0");
        m_Device.SetPropertyValue("_PortableIpConfigOptions", "1792"); // all
        const char *const keys[] = {"GevPersistentIPAddress", "GevPersistentSubnetMask", "GevPersistentDefaultGateway"};
        for (int i = 0; i < 3 && !stored.isEmpty(); ++i)
            m_Device.SetPropertyValue(keys[i], stored.section(' ', i, i).toStdString());
        const QNetworkAddressEntry adapter = addressEntry("192.168.10.1/255.255.255.0");
        m_Surroundings = {"nic0", adapter, {adapter, addressEntry("10.0.0.7/255.255.0.0")}, forced};
        editor.load(m_Device, m_Surroundings);
    }
    /// What is shown, what differs (M mode, A address, N netmask, G gateway) and what one can do with it.
    QString state() const {
        QString text = editor.text(EditorState::IpAddress) + " " + editor.text(EditorState::Netmask) + " " +
                       editor.text(EditorState::DefaultGateway) + " ";
        const commissioning::Change change = editor.change();
        for (const auto &[differs, letter] : {std::pair{change.modeDiffers, 'M'},
                                              {change.addressDiffers, 'A'},
                                              {change.maskDiffers, 'N'},
                                              {change.gatewayDiffers, 'G'}})
            text += differs ? QString(letter) : QString();
        return text + (editor.hasChanges() && editor.isValid() ? " save" : "") + (editor.isSavePending() ? " ask" : "");
    }

    EditorState editor;
    EditorState::Device m_Device;
    DeviceSurroundings m_Surroundings;
};

TEST_F(Editor, ShowsWhatIsStoredAndCountsWhatIsNot) {
    const struct {
        const char *config, *stored;
        bool forced;
        const char *loaded, *asStatic;
    } cases[] = {
        {"5", "172.16.0.9 255.255.0.0 172.16.0.1", false, "172.16.0.9 255.255.0.0 172.16.0.1 ",
         "172.16.0.9 255.255.0.0 172.16.0.1 "},
        {"5", "", false, "192.168.10.140 255.255.255.0 0.0.0.0 ", "192.168.10.140 255.255.255.0 0.0.0.0 "},
        {"5", "", true, "192.168.10.140 255.255.255.0 0.0.0.0 ANG save",
         "192.168.10.140 255.255.255.0 0.0.0.0 ANG save ask"},
        {"6", "192.168.10.21 255.255.255.0 0.0.0.0", false, "192.168.10.140 255.255.255.0 0.0.0.0 ",
         "192.168.10.21 255.255.255.0 0.0.0.0 M save ask"},
        {"6", "0.0.0.0 0.0.0.0 0.0.0.0", false, "192.168.10.140 255.255.255.0 0.0.0.0 ",
         "192.168.10. 255.255.255.0 0.0.0.0 MAN"},
        {"4", "", false, "192.168.10.140 255.255.255.0 0.0.0.0 ", "192.168.10. 255.255.255.0 0.0.0.0 MANG"},
    };
    for (const auto &c : cases) {
        m_Device = {};
        load(c.config, c.stored, c.forced);
        EXPECT_EQ(c.loaded, state()) << c.config << ' ' << c.stored;
        editor.chooseMode(Mode::Static);
        EXPECT_EQ(c.asStatic, state()) << c.config << ' ' << c.stored;
    }
}

TEST_F(Editor, KeepsWhatWasTypedInAnotherMode) {
    load("5", "172.16.0.9 255.255.0.0 0.0.0.0");
    editor.type(EditorState::IpAddress, "192.168.010.051");
    editor.type(EditorState::Netmask, "/24");
    EXPECT_EQ("192.168.010.051 /24 0.0.0.0 AN save ask", state());
    editor.chooseMode(Mode::Dhcp);
    EXPECT_EQ("192.168.10.140 255.255.255.0 0.0.0.0 M save ask", state());
    m_Device.SetPropertyValue("GevPersistentIPAddress", "192.168.10.51"); // stored by a save that then failed
    editor.follow(m_Device, m_Surroundings);
    editor.chooseMode(Mode::Static);
    EXPECT_EQ("192.168.010.051 /24 0.0.0.0 N save ask", state());
    EXPECT_EQ(0xC0A80A33, editor.change().address);
    EXPECT_EQ(0xFFFFFF00, editor.change().mask);
    editor.load(m_Device, m_Surroundings);
    EXPECT_EQ("192.168.10.51 255.255.0.0 0.0.0.0 ", state());
    editor.takeCurrentAddresses();
    EXPECT_EQ("192.168.10.140 255.255.255.0 0.0.0.0 AN save ask", state());
    editor.type(EditorState::IpAddress, "192.168.");
    editor.chooseMode(Mode::Auto);
    EXPECT_EQ("192.168.10.140 255.255.255.0 0.0.0.0 M save ask", state()); // half an address does not matter then
    m_Device.SetIpAddress("10.0.0.7");                                     // nor does it that it has this host's now
    editor.follow(m_Device, m_Surroundings);
    EXPECT_EQ("10.0.0.7 255.255.255.0 0.0.0.0 M save ask", state());
    m_Device.SetPropertyValue("_PortableIpConfigOptions", "256"); // it supports static addresses only, all at once
    editor.follow(m_Device, m_Surroundings);
    EXPECT_EQ("No IP configuration is chosen.", editor.hint());
}

/// Of a new camera, whose static mode was stored before the save broke off.
TEST_F(Editor, KeepsWhatWasAskedForAfterHalfASave) {
    load("6", "0.0.0.0 0.0.0.0 0.0.0.0");
    editor.chooseMode(Mode::Static);
    editor.type(EditorState::IpAddress, "192.168.10.51");
    m_Device.SetIpConfigCurrent("5");
    editor.follow(m_Device, m_Surroundings);
    EXPECT_EQ("192.168.10.51 255.255.255.0 0.0.0.0 AN save ask", state());
}

TEST_F(Editor, SaysWhatCannotBeSaved) {
    load("5", "172.16.0.9 255.255.0.0 0.0.0.0");
    const QString network = "The IP address is that of the network itself.";
    const QString broadcast = "The IP address is the broadcast address of the network.";
    const QString host = "The IP address is that of this host.";
    const struct {
        const char *address, *mask, *gateway;
        QString hint;
    } cases[] = {
        {"192.168.10.51", "/24", "", ""},
        {"192.168.10.", "/24", "", "The IP address is not complete."},
        {"127.0.0.1", "/8", "", "The IP address is none that a device can have."},
        {"224.0.0.1", "/24", "", "The IP address is none that a device can have."},
        {"192.168.10.1", "/24", "", host},
        {"10.0.0.7", "/8", "", host}, // of another adapter
        {"172.16.0.0", "/16", "", network},
        {"172.16.255.255", "/16", "", broadcast},
        {"192.168.10.0", "/16", "", network}, // the adapter's
        {"10.0.255.255", "/8", "", broadcast},
        {"192.168.10.51", "/31", "", "The subnet mask is not one of a network."},
        {"192.168.10.51", "/24", "192.168.10.1", ""},
        {"192.168.10.51", "/24", "192.168.10.255", "The default gateway is not the address of a host."},
    };
    for (const auto &c : cases) {
        editor.type(EditorState::IpAddress, c.address);
        editor.type(EditorState::Netmask, c.mask);
        editor.type(EditorState::DefaultGateway, c.gateway);
        EXPECT_EQ(c.hint, editor.hint()) << c.address << ' ' << c.mask << ' ' << c.gateway;
    }
    m_Device.SetPropertyValue("_PortableIpConfigOptions", "0");
    editor.load(m_Device, m_Surroundings);
    EXPECT_EQ("The device says that it supports none of these configurations.", editor.hint());
}

} // namespace
