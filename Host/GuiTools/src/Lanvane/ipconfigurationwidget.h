#pragma once

#include "Lanvane/DeviceLister.h"
#include "Lanvane/DeviceTree.h"
#include "Lanvane/EditorState.h"
#include "Lanvane/NetworkAdapter.h"

#include <QHash>
#include <QMessageBox>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QLineEdit;
class QRadioButton;
namespace Corvo {
class ICorvoGigEDevice;
}
namespace GenICam {
class GenericException;
}
namespace Ui {
class IpConfigurationWidget;
}

/// The window's content: the tree of adapters and devices, what is known of the selected one, and the editor of its IP
/// configuration. GUI thread only; long operations run inside a slot and let the window paint, but keep the user out.
class IpConfigurationWidget : public QWidget {
    Q_OBJECT

public:
    /// How long a device may take to come back after its IP cycle was restarted.
    struct RediscoveryPatience {
        int rounds = 30;
        int pause_ms = 2000; ///< before each round
    };

    explicit IpConfigurationWidget(QWidget *parent = nullptr);
    ~IpConfigurationWidget() override;

    void setRediscoveryPatience(const RediscoveryPatience &patience) { m_Patience = patience; }

    /// Gives back the device that an operation has opened, if any.
    void closeDevice();

    static void fixupIpAddress(QString &address);
    static void fixupMacAddress(QString &mac);

public slots:
    /// Lists adapters and devices anew.
    void refresh();

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
    void onShowContextMenu(const QPoint &position);
    void onSelectionInfo_linkActivated(const QString &link);
    void onAssignTemporaryIPAddress();
    void forceIpByMac_triggered();
    // Other platforms open their network settings here.
    void ShowNetworkConnections_triggered();
    void onNetworkAdapterProperties();
    void onReturnPressed();
    void revertEditor();

private:
    using OptionalDevice = std::optional<Corvo::CQuorelGigEDeviceInfo>;

    struct OpenFailure {
        QString text;
        bool isAccessDenied = false;
    };

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

    // Refresh and rows
    void doRefresh();
    void fillTree();
    void addDeviceRows();
    void show(const DeviceTree::View &view);
    std::size_t updateTreeRowFromDeviceInfoByMac(const QString &mac);
    bool UpdateTreeItemFromDeviceInfo(QTreeWidgetItem *item, const Corvo::CQuorelGigEDeviceInfo *device);
    bool UpdateTreeItemFromNetworkAdapter(QTreeWidgetItem *item, const CNetworkAdapter *adapter);
    QTreeWidgetItem *findAdapterTreeItem(const QString &name) const;

    // Selection
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
    void updateSelectionInfo(const QTreeWidgetItem *item);
    void setSelectionInfoText(const QString &richText);
    /// \param toEnd where the diagnosis stands, which matters more than the device's data above it.
    void scrollSelectionInfo(bool toEnd);
    void setHintText(const QString &text);

    // Editor
    void fillEditor(const QTreeWidgetItem *item);
    /// After the current row's device has changed. What the user has typed stays.
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
    /// After a save that failed: asks the device what it has now.
    void learnAnew(const Corvo::CQuorelGigEDeviceInfo &device);
    /// Asks the device, as it is described, whether it can be opened, and shows all that in its row.
    void retest(const Corvo::CQuorelGigEDeviceInfo &device);
    /// By a search; none when it does not answer.
    OptionalDevice find(const QString &mac);
    QMessageBox::StandardButton showBox(QMessageBox::Icon icon, const QString &text, const QString &informativeText,
                                        QMessageBox::StandardButtons buttons) const;

    // Writing the configuration (IpConfigurationWriting.cpp)
    bool writeConfiguration(const Corvo::CQuorelGigEDeviceInfo &device);
    bool broadcastConfiguration(const QString &mac);
    bool sendBroadcastConfiguration(const QString &mac);
    bool unicastConfiguration(const QString &oldIpAddress);
    bool sendUnicastConfiguration(const QString &oldIpAddress);
    void writeToOpenDevice(const QString &oldIpAddress, const QString &mac);
    void storeMode(const QString &mac);
    void storeAddresses(const QString &mac);
    /// Makes the device obtain its address anew. \returns whether it came back.
    bool restartAndAwait(const QString &mac);
    bool waitForDevice(const QString &mac);

    // Temporary address (IpConfigurationForceIp.cpp)
    /// What follows is about the selected device, or any on the selected adapter.
    void aimAtSelection();
    bool forceIp(const QString &headerText, bool showMacAddress, QString *newIpAddress);
    bool sendForceIp(const QString &mac, const AddressTexts &addresses, QString *newIpAddress, bool *pRediscovered);
    /// Why the device did not take it, as far as that can be found out.
    QString forceFailureText(const QString &mac, const QString &address);
    bool openDevice(const QString &ipAddress);
    bool tryOpenDevice(const QString &ipAddress, OpenFailure *pFailure);
    Corvo::CQuorelGigEDeviceInfo deviceToOpen(const QString &ipAddress) const;
    void createAndOpenDevice(const QString &ipAddress);
    bool isInUseByAnother(const QString &ipAddress);
    QString validAddressesText() const;

    /// Runs a slot's work and reports what it throws.
    void guarded(const char *context, const std::function<void()> &work);

    std::unique_ptr<Ui::IpConfigurationWidget> ui;
    EditorState m_Editor; ///< with the flags of what is edited and what differs
    std::unique_ptr<DeviceLister> m_pDeviceLister;
    Corvo::ICorvoGigEDevice *m_pDevice = nullptr; ///< open; given back by closeDevice
    CNetworkAdapterList m_NetworkAdapters;        ///< of the last refresh
    /// What the running operation was asked to do, of the moment its key was pressed: no part of it reads the tree's
    /// selection or the editor.
    commissioning::Change m_Change;
    QString m_SaveReport;                      ///< what was sent and what came back, where a save failed
    QString m_ForceFailure;                    ///< what the last Force IP failed with
    QHash<QString, QString> m_ForcedAddresses; ///< by MAC address, until they are stored
    RediscoveryPatience m_Patience;
    int m_BusyDepth = 0; ///< operations that run
};

/// The widget's category in the trace log.
unsigned long GetIPConfigBaseCatID();
