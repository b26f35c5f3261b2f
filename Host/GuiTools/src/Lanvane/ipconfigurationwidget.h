#pragma once

#include "Lanvane/BackgroundSearch.h"
#include "Lanvane/DeviceLister.h"
#include "Lanvane/DeviceTree.h"
#include "Lanvane/EditorState.h"
#include "Lanvane/NetworkAdapter.h"
#include "Lanvane/Situation.h"
#include "Lanvane/WindowInteraction.h"
#include "commissioning/Change.h"
#include "commissioning/Connection.h"
#include "commissioning/Journal.h"
#include "commissioning/Recollection.h"
#include "commissioning/Result.h"

#include <QHash>
#include <QMessageBox>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class MakeUsable;
class PlanTable;
struct PlanOrder;
class QLineEdit;
class QMenu;
class QRadioButton;
namespace Ui {
class IpConfigurationWidget;
}

/// The window's content: the tree of adapters and devices, what is known of the selected one, and the editor of its IP
/// configuration. GUI thread only; long operations run inside a slot, on a thread of their own (Operation), while the
/// window paints and keeps the user out.
class IpConfigurationWidget : public QWidget {
    Q_OBJECT

public:
    /// The group of the settings in which the window and its content keep what is to be found again.
    static constexpr const char *SettingsGroup = "MainWindow";

    explicit IpConfigurationWidget(QWidget *parent = nullptr);
    ~IpConfigurationWidget() override;

    void setUpdateInterval(std::chrono::milliseconds interval) { m_Background.setInterval(interval); }
    void setRediscoveryPatience(const commissioning::RediscoveryPatience &patience) { m_Patience = patience; }

    /// What the last search has found out.
    const Situation &situation() const { return m_Situation; }
    const commissioning::Inventory &inventory() const { return m_Situation.inventory(); }

    /// Gives back the device that an operation has opened, if any; there must be no operation that uses it.
    void closeDevice();
    /// Ends the operation that runs, if one does, and gives its device back.
    void giveUpDevice();

    static void fixupIpAddress(QString &address);
    static void fixupMacAddress(QString &mac);

    bool isCameraSelected() const;
    /// Whether the journal has a change that can be taken back.
    bool canUndo() const;

public slots:
    /// Lists adapters and devices anew.
    void refresh();
    // Several cameras at a time, each in a window of its own (PlanWindow).
    void configureSelected();
    void openPlan();
    /// Of the selected cameras when there are several, else of all.
    void saveListAs();
    void undoLastChange();
    /// Whether searches in the background keep the list up to date.
    void setKeptUpToDate(bool isKept);
    /// Selects the next row that needs attention, if one does.
    void showNextInNeed();

signals:
    /// \param summary "12 cameras on 2 adapters, 3 need attention"; empty while nothing is known.
    void summaryChanged(const QString &summary);

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private slots:
    void on_btnRefresh_clicked();
    void on_btnWriteConfiguration_clicked();
    void on_editIpAddress_textEdited(const QString &text);
    void on_editNetmask_textEdited(const QString &text);
    void on_editNetmask_editingFinished();
    void on_editDefaultGateway_textEdited(const QString &text);
    void ipConfigurationEdited();
    void onCurrentItemChanged(QTreeWidgetItem *current, QTreeWidgetItem *previous);
    /// Later than it changes: the current row has followed.
    void onSelectionChanged();
    void onShowContextMenu(const QPoint &position);
    void onSelectionInfo_linkActivated(const QString &link);
    void onAssignTemporaryIPAddress();
    void forceIpByMac_triggered();
    // Other platforms open their network settings here.
    void ShowNetworkConnections_triggered();
    void onNetworkAdapterProperties();
    void onReturnPressed();
    void renameDevice(const QString &mac, const QString &name);
    void revertEditor();

private:
    using OptionalDevice = std::optional<Corvo::CQuorelGigEDeviceInfo>;

    /// An operation, questions included, runs as long as this lives: no other starts, the window stays, and what the
    /// user does meanwhile is dropped.
    class Busy {
    public:
        explicit Busy(int &depth) : m_Depth(depth) { ++m_Depth; }
        ~Busy();
        Q_DISABLE_COPY(Busy)

    private:
        int &m_Depth;
    };

    // Construction
    void setUpTree();
    void setUpActions();
    void setUpShortcuts();
    void setUpEditor();
    void restoreLayout();
    void saveLayout() const;
    void showAllColumnsOnce();
    void growWindow();

    // Refresh and rows
    void doRefresh();
    /// \param view to be shown as soon as there are rows.
    void fillTree(const DeviceTree::View &view);
    void addAdapterRows(int first);
    /// \returns whether the search came to its end.
    bool search(const DeviceTree::View &view, const commissioning::DiagnosisOptions &options);
    /// Gives those that cannot be used a row, too, and says why.
    void takeAdapters(const std::vector<commissioning::Adapter> &adapters);
    void takeSituation(Situation situation);
    void showHiddenDevices();

    // Keeping the list up to date (IpConfigurationUpdate.cpp)
    void takeUpdate(commissioning::Diagnosis found);
    void updateAdapters(const std::vector<commissioning::Adapter> &adapters);
    void updateDevices(DeviceLister::DeviceInfoList_t devices);
    /// Removes the rows of those that are not even hidden any more.
    void forgetHidden(const Situation &before);
    void show(const DeviceTree::View &view);
    std::size_t updateTreeRowFromDeviceInfoByMac(const QString &mac);
    bool UpdateTreeItemFromDeviceInfo(QTreeWidgetItem *item, const Corvo::CQuorelGigEDeviceInfo *device);
    bool UpdateTreeItemFromNetworkAdapter(QTreeWidgetItem *item, const CNetworkAdapter *adapter);
    QTreeWidgetItem *findAdapterTreeItem(const QString &name) const;

    // Selection
    void copySelected(int column = -1) const; ///< \param column -1 for all
    const CNetworkAdapter *GetNetworkAdapterFromItemIndex(int index) const;
    OptionalDevice GetDeviceInfoFromItemIndex(int index) const;
    /// As the lister has it now.
    OptionalDevice deviceOf(const QString &mac) const;
    OptionalDevice deviceOf(const QTreeWidgetItem *item) const { return deviceOf(DeviceTree::keyOf(item).mac); }
    OptionalDevice GetSelectedDeviceInfo() const;
    const CNetworkAdapter *GetSelectedNetworkAdapter() const;
    /// The adapter of an adapter row, or that under which a device is listed.
    const CNetworkAdapter *GetNetworkAdapaterFromDeviceItem(const QTreeWidgetItem *item) const;
    const CNetworkAdapter *adapterOf(const QString &name) const;
    DeviceSurroundings surroundingsOf(const QTreeWidgetItem *item) const;
    void updateUiFromTreeItem(const QTreeWidgetItem *item);
    void showPatchedInfo(const QString &mac);
    /// An operation has changed what is known of a device. \param forced the address it was given, if it was.
    void onUpdated(const QString &mac, std::optional<commissioning::Address> forced);
    void updateSelectionInfo(const QTreeWidgetItem *item);
    /// Both as rich text. \param notes what matters most; comes into view.
    void showInfo(const QString &facts, const QString &notes);
    void setSelectionInfoText(const QString &richText);
    /// \param above what is scrolled out, as rich text.
    void scrollSelectionInfo(const QString &above);
    void setHintText(const QString &text);
    QString noticeText(const QString &mac) const;

    // Editor
    void fillEditor(const QTreeWidgetItem *item);
    /// After the editor's device has changed. What the user has typed stays.
    void updateEditor();
    void showEditorState();
    void checkModeButton();
    void updateUiState(QTreeWidgetItem *item);
    void enableWidgets(bool enable);
    void typed(EditorState::Field field, const QString &text);
    bool isValidConfigInUI() const { return m_Editor.isValid(); }
    void clearEditFlags();

    // Saving: what is asked for, when and of whom (IpConfigurationSaving.cpp)
    /// Writes it and shows what became of the device.
    bool save(const commissioning::Change &change);
    bool saveEdited();
    bool checkSaveChanges() const;
    /// \returns whether there was something and it was saved.
    bool saveBeforeLeaving();
    /// \returns whether the window may close.
    bool saveBeforeClosing();
    /// Says that a save has failed, unless the user has cancelled it.
    void showFailure(const QString &text, QMessageBox::StandardButton button) const;
    /// What was sent and what is known, of the last save.
    QString saveReport() const;
    /// What the user should know of a save that did not fail.
    void showRemark();
    QMessageBox::StandardButton showBox(QMessageBox::Icon icon, const QString &text, const QString &informativeText,
                                        QMessageBox::StandardButtons buttons) const;

    // Ways into the commissioning library (IpConfigurationWriting.cpp)
    commissioning::Context operationContext();
    /// How it ended is in m_LastSave.
    bool writeConfiguration(const Corvo::CQuorelGigEDeviceInfo &device);
    bool broadcastConfiguration(const QString &mac);
    bool unicastConfiguration(const QString &oldIpAddress);
    bool waitForDevice(const QString &mac);

    // Several cameras (IpConfigurationPlans.cpp)
    /// Asks about unsaved changes. \returns whether there is nothing half-edited any more.
    bool settleEditor();
    void execPlan(PlanTable table, const PlanOrder &order);

    // Temporary address (IpConfigurationForceIp.cpp)
    /// What follows is about the selected device, or any on the selected adapter.
    void aimAtSelection();
    bool forceIp(const QString &headerText, bool showMacAddress, QString *newIpAddress);
    bool openDevice(const QString &ipAddress);
    QString validAddressesText() const;
    /// Says what was sent, and shows what the camera has made of it.
    void followCancelledForce();

    // Making the selected camera usable (IpConfigurationMakeUsable.cpp)
    /// The selected device, also one that only the listener heard.
    OptionalDevice selectedLostDevice() const;
    void addMakeUsable(QMenu &menu);
    /// The link to it when a camera cannot be used where it is; else empty.
    QString makeUsableText(const QString &mac) const;
    void makeUsable();
    void carryOut(MakeUsable &way);
    void followRescue(const MakeUsable &way, const commissioning::Result &result);
    void followCancelledRescue(const MakeUsable &way, const commissioning::Result &result);

    /// Runs a slot's work and reports what it throws.
    void guarded(const char *context, const std::function<void()> &work);

    std::unique_ptr<Ui::IpConfigurationWidget> ui;
    EditorState m_Editor; ///< with the flags of what is edited and what differs
    std::unique_ptr<DeviceLister> m_pDeviceLister;
    CNetworkAdapterList m_NetworkAdapters; ///< of the last refresh
    Situation m_Situation;
    commissioning::HostRecollection m_Host; ///< of the last search
    commissioning::Connection m_Connection; ///< open only while something is written
    WindowInteraction m_Interaction;
    /// What the running operation was asked to do, of the moment its key was pressed: no part of it reads the tree's
    /// selection or the editor.
    commissioning::Change m_Change;
    commissioning::Result m_LastSave;
    QHash<QString, QString> m_ForcedAddresses; ///< by MAC address, until they are stored
    commissioning::RediscoveryPatience m_Patience;
    commissioning::Journal m_Journal{commissioning::Journal::defaultPath()};
    int m_BusyDepth = 0; ///< operations that run
    bool m_isShowingSeveral = false;
    QString m_InfoSubject;        ///< MAC address or adapter that the selection info is about
    QHash<QString, int> m_Missed; ///< how many updates have missed a device, by MAC address
    BackgroundSearch m_Background;
    /// How an operation has ended, shown below what is known of the device.
    struct Notice {
        QString mac; ///< empty: of all
        QString text;
        QString title = QStringLiteral("Cancelled.");
    } m_Notice;
};

/// The widget's category in the trace log.
unsigned long GetIPConfigBaseCatID();
