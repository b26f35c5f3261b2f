#pragma once

#include "support/Site.h" // before Qt, which makes a macro of a name in it

#include "Lanvane/MainWnd.h"
#include "Lanvane/ipconfigurationwidget.h"
#include "gui/QtText.h"

#include <QApplication>
#include <QMessageBox>
#include <QTreeWidget>
#include <gmock/gmock.h>

#include <deque>

enum Column { Name, Serial, Mac, Status, IpConfiguration, IpAddress, SubnetMask };

/// The main window, a user in front of it and two adapters with cameras: "nic0" at 192.168.10.1/24, "nic1" at
/// 192.168.20.1/24. Cameras go by their number (testnet::camera).
///
/// The user answers dialogs as the test has foretold, in that order. Any other dialog fails the test and is dismissed,
/// as does a foretold one that never came.
class Desktop : public testing::Test {
protected:
    using Cameras = std::vector<camsim::CameraConfig>;
    using Act = std::function<void(QWidget &dialog)>;

    Desktop();
    ~Desktop() override;
    void TearDown() override;

    /// Starts the cameras, shows the window and waits for its first refresh.
    void open(const Cameras &onNic0, const Cameras &onNic1 = {});
    /// The same with the cameras that are there.
    void openWindow();

    template <class Widget> Widget &the(const char *name) const {
        auto *widget = m_Window->findChild<Widget *>(QLatin1String(name));
        if (!widget)
            throw std::out_of_range(name);
        return *widget;
    }
    MainWnd &window() { return *m_Window; }
    QTreeWidget &tree() const { return the<QTreeWidget>("deviceTree"); }
    IpConfigurationWidget &content() const { return the<IpConfigurationWidget>("IpConfigurationWidget"); }
    QString info() const;
    std::string said() const { return info().toStdString(); }
    QString text(const char *field) const;
    /// "IP MASK GATEWAY" of the editor.
    QString addresses() const {
        return text("editIpAddress") + " " + text("editNetmask") + " " + text("editDefaultGateway");
    }
    /// Adapters by name, their cameras by serial number.
    QStringList rows() const;
    /// Null when it is not listed.
    QTreeWidgetItem *row(unsigned camera) const;
    QString cell(unsigned camera, Column column) const;
    /// Serial number in the current row; that of an adapter is empty.
    QString selected() const { return tree().currentItem() ? tree().currentItem()->text(Serial) : "(none)"; }
    bool isEnabled(const char *name) const { return the<QWidget>(name).isEnabled(); }

    void select(unsigned camera) { select(row(camera)); }
    void select(QTreeWidgetItem *item);
    void click(const char *button) { click(the<QWidget>(button)); }
    static void click(QWidget &button);
    void type(const char *field, const QString &text) { type(the<QWidget>(field), text); }
    /// Replaces what the field holds.
    static void type(QWidget &field, const QString &text);
    /// Clicks "Save" with this address.
    void save(const QString &address);
    /// Sent to the widget with the focus.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// Assigns a temporary address to the current row's device.
    void useContextMenu();
    void openContextMenu();
    void refresh() { press(Qt::Key_F5); }
    /// By the entry of the menu.
    void keepUpToDate(std::chrono::milliseconds interval);
    /// Leaves a picture of the window, or of a dialog, in the folder LANVANE_PICTURES, when there is one in the
    /// environment (scripts/pictures).
    void picture(const char *name, QWidget *dialog = nullptr);
    /// Waits until so many adapters are up and running.
    static void awaitAdapters(int count);

    void expect(const QString &dialog, Act act) { m_Expected.push_back({dialog, std::move(act)}); }
    /// Does something once to the wait box that shows this step.
    void expectWait(const QString &step, Act act) { m_Waits.push_back({step, std::move(act)}); }
    void expectWaitAndCancel(const QString &step);
    /// From now on this answers what was not foretold.
    void expectAnything(Act act) { m_Anything = std::move(act); }
    /// A message box with the window's title.
    void expectBox(const QString &text, QMessageBox::StandardButton answer) {
        expectBox("Ostra Lanvane", text, answer);
    }
    void expectBox(const QString &title, const QString &text, QMessageBox::StandardButton answer);
    /// The Force IP dialog, canceled when no address is given.
    void expectForceIp(const QString &header, const QString &address = {});
    void expectSaveQuestion(QMessageBox::StandardButton answer);

    testnet::Site &siteOf(unsigned camera);
    camsim::CameraStatus status(unsigned camera) { return siteOf(camera).cameras.status(testnet::camera(camera).mac); }
    std::string addressOf(unsigned camera) { return siteOf(camera).addressOf(camera); }
    void hold(unsigned camera);

    std::optional<testnet::Site> nic0, nic1;
    QStringList reports; ///< of the error queue: "CONTEXT: TEXT"
    QStringList waits;   ///< texts of the wait boxes, each once

private:
    struct Expected {
        QString dialog;
        Act act;
    };
    void lookForDialogs();
    void lookAtWaitBox(QWidget &box);
    void answer(QWidget &dialog);

    QObject m_Context; ///< ends the timers
    std::unique_ptr<MainWnd> m_Window;
    std::deque<Expected> m_Expected;
    std::deque<Expected> m_Waits;
    Act m_Anything;
    QVector<QWidget *> m_Answered; ///< the dialogs that acts are about
};

// Dialogs.
/// Of the Force IP dialog: from the context menu on nic0, by the hidden shortcut and before a unicast write on nic0.
constexpr const char *AssignHeader = "Please specify a temporary IP address.<br>This address will be valid until the "
                                     "device resets.<br>Valid addresses are:<br>192.168.10.1 - 192.168.10.254<br>";
constexpr const char *ForceByMacHeader =
    "Please specify the MAC address for the device to force the IP address.\n\nThere won't be any error message in "
    "case you specify the wrong MAC address.";
constexpr const char *ConnectHeader =
    "A connection to the device must be established in order to change the configuration.<br>To do this, a temporary "
    "IP address needs to be assigned to the device.<br>This temporary address will only be used to update the "
    "configuration and will not be stored on the device.<br>Valid addresses are:<br>192.168.10.1 - 192.168.10.254<br>";
constexpr const char *Rediscovering =
    "Camera restarts its IP configuration cycle.\nWaiting until the device has been discovered again...";
constexpr const char *NotSaved = "The configuration could not be saved.";
constexpr const char *AccessDenied = "Access denied\nThe device is controlled by another application.\nClose the "
                                     "connection before changing the IP configuration.";

/// A number from the environment, so that a long run needs no other program.
inline int environmentNumber(const char *name, int usual) {
    return qEnvironmentVariableIsSet(name) ? qEnvironmentVariableIntValue(name) : usual;
}

/// One that has to be written by unicast: it refuses the vendor command. (One that does not know it is waited for.)
inline camsim::CameraConfig unicastCamera(unsigned number, const char *address, const std::string &settings = "") {
    return testnet::cameraAt(number, address, ",xml=none,vendor-config=error,while-controlled=accept" + settings);
}
