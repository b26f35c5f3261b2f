#pragma once

#include "Lanvane/DeviceDisplay.h"
#include "Lanvane/DeviceLister.h"
#include "Lanvane/NetworkAdapter.h"
#include "Lanvane/WindowInteraction.h"
#include "commissioning/Change.h"
#include "commissioning/Connection.h"
#include "commissioning/Result.h"

#include <QMessageBox>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QIpNetmaskValidator;
class QTreeWidgetItem;
namespace Ui {
class IpConfigurationWidget;
}

/// The window's content: the tree of adapters and devices, what is known of the selected one, and the editor of its IP
/// configuration. GUI thread only; long operations run inside a slot and let the window paint, but keep the user out.
class IpConfigurationWidget : public QWidget {
    Q_OBJECT

public:
    enum class AddressMode { None, Static, Dhcp, AutoIp };

    explicit IpConfigurationWidget(QWidget *parent = nullptr);
    ~IpConfigurationWidget() override;

    void setRediscoveryPatience(const commissioning::RediscoveryPatience &patience) { m_Patience = patience; }

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
    /// Other platforms open their network settings here.
    void ShowNetworkConnections_triggered();
    void onReturnPressed();
    void revertEditor();

private:
    using OptionalDevice = std::optional<Corvo::CQuorelGigEDeviceInfo>;

    /// What the editor showed when it was filled, to tell what the user has changed.
    struct EditorContent {
        AddressMode mode = AddressMode::None;
        QString ipAddress;
        QString netmask;
        QString defaultGateway;
    };

    // Construction
    void setUpTree();
    void setUsualColumnWidths();
    void setUpActions();
    void setUpEditor();
    void restoreHeader();
    void saveHeader() const;

    // Refresh and rows
    void doRefresh();
    void fillTree();
    void addDeviceRows();
    /// To the first devices; from then on, and when they were restored, the widths are the user's.
    void sizeColumnsOnce();
    void select(const QString &mac, const QString &adapterName);
    std::size_t updateTreeRowFromDeviceInfoByMac(const QString &mac);
    bool UpdateTreeItemFromDeviceInfo(QTreeWidgetItem *item, const Corvo::CQuorelGigEDeviceInfo *device);
    bool UpdateTreeItemFromNetworkAdapter(QTreeWidgetItem *item, const CNetworkAdapter *adapter);
    QTreeWidgetItem *findAdapterTreeItem(const QString &name) const;
    QTreeWidgetItem *findDeviceTreeItem(const QString &mac) const;
    std::vector<QTreeWidgetItem *> deviceTreeItems() const;

    // Selection
    const CNetworkAdapter *GetNetworkAdapterFromItemIndex(int index) const;
    OptionalDevice GetDeviceInfoFromItemIndex(int index) const;
    OptionalDevice deviceOf(const QTreeWidgetItem *item) const;
    OptionalDevice GetSelectedDeviceInfo() const;
    const CNetworkAdapter *GetSelectedNetworkAdapter() const;
    /// The adapter of an adapter row, or that under which a device is listed.
    const CNetworkAdapter *GetNetworkAdapaterFromDeviceItem(const QTreeWidgetItem *item) const;
    void updateUiFromTreeItem(const QTreeWidgetItem *item);
    void showPatchedInfo(const QString &mac);
    void updateSelectionInfo(const QTreeWidgetItem *item);
    void setSelectionInfoText(const QString &richText);
    /// \param toEnd where the diagnosis stands, which matters more than the device's data above it.
    void scrollSelectionInfo(bool toEnd);
    void setHintText(const QString &text);

    // Editor
    void fillEditor(const QTreeWidgetItem *item);
    void checkModeButton(const OptionalDevice &device);
    void updateEditor();
    void updateUiState(QTreeWidgetItem *item);
    void enableWidgets(bool enable);
    void edited();
    bool isValidConfigInUI() const;
    bool areAddressesValid() const;
    void revertAddresses();
    bool hasChanges() const;
    AddressMode selectedMode() const;
    EditorContent editorContent() const;
    void clearEditFlags();

    // Writing the configuration: ways into the commissioning library (IpConfigurationWriting.cpp)
    commissioning::Context operationContext();
    /// What the editor asks for.
    commissioning::Change changeFor(const Corvo::CQuorelGigEDeviceInfo &device) const;
    /// How it ended is in m_LastSave.
    bool writeConfiguration(const Corvo::CQuorelGigEDeviceInfo &device);
    bool broadcastConfiguration(const QString &mac);
    bool unicastConfiguration(const QString &oldIpAddress);
    bool waitForDevice(const QString &mac);
    void closeDevice();
    /// \returns the button chosen.
    int showFailedSave(const QString &text, QMessageBox::StandardButtons buttons);
    /// What the user should know of a save that did not fail.
    void showRemark();
    bool checkSaveChanges() const;
    void saveChangesOf(QTreeWidgetItem *item);
    bool saveBeforeClosing();

    // Temporary address (IpConfigurationForceIp.cpp)
    /// What follows is about the selected device, or any on the selected adapter.
    void aimAtSelection();
    bool forceIp(const QString &headerText, bool showMacAddress, QString *newIpAddress);
    bool openDevice(const QString &ipAddress);
    QString validAddressesText() const;

    /// Runs a slot's work and reports what it throws.
    void guarded(const char *context, const std::function<void()> &work);

    std::unique_ptr<Ui::IpConfigurationWidget> ui;
    bool m_isIpProtocolConfigDirty = false;
    bool m_isIpAddressDirty = false;
    bool m_isIpAddressEdited = false;
    bool m_isNetmaskDirty = false;
    bool m_isNetmaskEdited = false;
    bool m_isDefaultGatewayDirty = false;
    bool m_isDefaultGatewayEdited = false;
    bool m_isEditModeActive = false;
    bool m_isCustomNameDirty = false;
    std::unique_ptr<DeviceLister> m_pDeviceLister;
    commissioning::Connection m_Connection; ///< open only while something is written
    WindowInteraction m_Interaction;
    commissioning::Change m_Change; ///< what the running operation is about
    commissioning::Result m_LastSave;
    CNetworkAdapterList m_NetworkAdapters; ///< of the last refresh
    RowIcons m_Icons;
    EditorContent m_Loaded;
    QIpNetmaskValidator *m_pNetmaskValidator = nullptr; ///< owned by its line edit
    bool m_areColumnsSized = false;
    commissioning::RediscoveryPatience m_Patience;
    int m_BusyDepth = 0; ///< operations that run; no other starts and the window stays meanwhile
};

/// The widget's category in the trace log.
unsigned long GetIPConfigBaseCatID();
