#include "Lanvane/ipconfigurationwidget.h"

#include "Base/GCException.h"
#include "CorvoQtBase/DeviceText.h"
#include "CorvoQtBase/errorhandling.h"
#include "Lanvane/AddressRules.h"
#include "Lanvane/AddressText.h"
#include "Lanvane/QIpAddressValidator.h"
#include "Lanvane/QIpAddressWithNetmaskValidator.h"
#include "Lanvane/QIpNetmaskValidator.h"
#include "Lanvane/WaitIndication.h"
#include "MinimalCorvo/TraceLog.h"
#include "ui_ipconfigurationwidget.h"

#include <QAction>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSettings>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTimer>

#include <algorithm>

using namespace Corvo;

namespace {

enum Column { ColName, ColSerialNumber, ColMac, ColStatus, ColIpConfiguration, ColIpAddress, ColSubnetMask };
enum RowType { AdapterRow = QTreeWidgetItem::UserType + 1, DeviceRow };
constexpr int IndexRole = Qt::UserRole;

constexpr const char *SettingsGroup = "MainWindow";
constexpr int HeaderVersion = 2;

const QNetworkInterface::InterfaceFlags RequiredFlags = QNetworkInterface::IsUp | QNetworkInterface::IsRunning;

/// Starts the first refresh once the window is there.
class DeferredInitialRefreshEvent : public QEvent {
public:
    DeferredInitialRefreshEvent() : QEvent(eventType()) {}
    static Type eventType() {
        static const int type = registerEventType();
        return static_cast<Type>(type);
    }
};

int indexOf(const QTreeWidgetItem *item) { return item->data(ColName, IndexRole).toInt(); }

/// Gives the focus back at the end: a widget that is disabled loses it, for good. One that stays disabled leaves it to
/// the other.
class FocusKeeper {
public:
    FocusKeeper(const QWidget &area, QWidget &other) : m_Widget(area.window()->focusWidget()), m_Other(other) {}
    ~FocusKeeper() {
        if (m_Widget)
            (m_Widget->isEnabled() ? *m_Widget : m_Other).setFocus();
    }
    Q_DISABLE_COPY(FocusKeeper)

private:
    QPointer<QWidget> m_Widget;
    QWidget &m_Other;
};

/// The dotted form, also of a prefix length.
QString canonicalNetmask(const QIpNetmaskValidator &validator, QString mask) {
    validator.fixup(mask);
    return canonicalIpAddress(mask);
}

} // namespace

unsigned long GetIPConfigBaseCatID() {
    static const unsigned long id = tracelog::LogGetCatID("Lanvane.Base");
    return id;
}

void IpConfigurationWidget::fixupIpAddress(QString &address) { ::fixupIpAddress(address); }

void IpConfigurationWidget::fixupMacAddress(QString &mac) { ::fixupMacAddress(mac); }

IpConfigurationWidget::IpConfigurationWidget(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::IpConfigurationWidget>()),
      m_Interaction(
          *this, [this](const char *context, const std::function<void()> &work) { guarded(context, work); },
          [this](const QString &name) {
              const QTreeWidgetItem *item = findAdapterTreeItem(name);
              return item ? GetNetworkAdapterFromItemIndex(indexOf(item)) : nullptr;
          },
          [this](const QString &mac) { showPatchedInfo(mac); }) {
    ui->setupUi(this);
    m_pDeviceLister = std::make_unique<DeviceLister>();
    setUpTree();
    setUpActions();
    setUpEditor();
    updateUiFromTreeItem(nullptr);
    QCoreApplication::postEvent(this, new DeferredInitialRefreshEvent);
}

IpConfigurationWidget::~IpConfigurationWidget() { closeDevice(); }

void IpConfigurationWidget::setUpTree() {
    ui->deviceTree->setHeaderLabels({QString(), QStringLiteral("Serial Number"), QStringLiteral("MAC Address"),
                                     QStringLiteral("Status"), QStringLiteral("IP Configuration"),
                                     QStringLiteral("IP Address"), QStringLiteral("Subnet Mask")});
    setUsualColumnWidths();
    restoreHeader();
    ui->deviceTree->installEventFilter(this);
    connect(ui->deviceTree, SIGNAL(customContextMenuRequested(const QPoint &)), this,
            SLOT(onShowContextMenu(const QPoint &)));
    connect(ui->deviceTree, &QTreeWidget::currentItemChanged, this, &IpConfigurationWidget::onCurrentItemChanged);
    connect(ui->selectionInfo, SIGNAL(linkActivated(const QString &)), this,
            SLOT(onSelectionInfo_linkActivated(const QString &)));
    ui->splitter->setStretchFactor(0, 1);
    ui->splitter->setStretchFactor(1, 0);
}

void IpConfigurationWidget::setUsualColumnWidths() {
    // Until there are devices to go by.
    const char *const usual[] = {"Model Name",         "00000000",        "025AE3000000", "Not Reachable",
                                 "Static IP, Auto IP", "192.168.100.100", "255.255.255.0"};
    QHeaderView *header = ui->deviceTree->header();
    const QFontMetrics metrics = ui->deviceTree->fontMetrics();
    for (int column = ColName; column <= ColSubnetMask; ++column) {
        const int textWidth = metrics.horizontalAdvance(QLatin1String(usual[column]));
        const int iconWidth = 2 * ui->deviceTree->iconSize().width();
        header->resizeSection(column, std::max(textWidth + iconWidth, header->sectionSizeHint(column)));
    }
}

void IpConfigurationWidget::setUpActions() {
    auto *showConnections = new QAction(this);
    showConnections->setObjectName(QStringLiteral("actionShowNetworkConnections"));
    showConnections->setShortcut(QKeySequence(QStringLiteral("Alt+Shift+Ctrl+N")));
    connect(showConnections, SIGNAL(triggered()), this, SLOT(ShowNetworkConnections_triggered()));
    auto *forceByMac = new QAction(this);
    forceByMac->setObjectName(QStringLiteral("actionForceIpByMac"));
    forceByMac->setShortcut(QKeySequence(QStringLiteral("Alt+Shift+Ctrl+F")));
    connect(forceByMac, SIGNAL(triggered()), this, SLOT(forceIpByMac_triggered()));
    addActions({showConnections, forceByMac});
}

void IpConfigurationWidget::setUpEditor() {
    for (QRadioButton *button : {ui->btnUsePersistentIp, ui->btnUseDhcp, ui->btnUseAutoIp})
        connect(button, SIGNAL(clicked(bool)), this, SLOT(ipConfigurationEdited()));
    auto *address = new QIpAddressWithNetmaskValidator(ui->editNetmask, ui->editIpAddress);
    ui->editIpAddress->setValidator(address);
    m_pNetmaskValidator = new QIpNetmaskValidator(ui->editNetmask);
    ui->editNetmask->setValidator(m_pNetmaskValidator);
    auto *gateway = new QIpAddressWithNetmaskValidator(ui->editNetmask, ui->editDefaultGateway);
    gateway->setAllowNullAddress(true);
    ui->editDefaultGateway->setValidator(gateway);
    for (QLineEdit *edit : {ui->editIpAddress, ui->editNetmask, ui->editDefaultGateway})
        connect(edit, &QLineEdit::returnPressed, this, &IpConfigurationWidget::onReturnPressed);
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), ui->editor);
    escape->setContext(Qt::WidgetWithChildrenShortcut);
    connect(escape, &QShortcut::activated, this, &IpConfigurationWidget::revertEditor);
    // A button has one shortcut, and that of this one is Ctrl+S.
    auto *mnemonic = new QShortcut(QKeySequence::mnemonic(ui->btnWriteConfiguration->text()), this);
    connect(mnemonic, &QShortcut::activated, ui->btnWriteConfiguration, &QPushButton::click);
}

void IpConfigurationWidget::restoreHeader() {
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    if (settings.value("headerver").toInt() == HeaderVersion)
        m_areColumnsSized = ui->deviceTree->header()->restoreState(settings.value("header").toByteArray()) &&
                            settings.value("headersized", true).toBool();
}

void IpConfigurationWidget::saveHeader() const {
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    settings.setValue("headerver", HeaderVersion);
    settings.setValue("header", ui->deviceTree->header()->saveState());
    settings.setValue("headersized", m_areColumnsSized);
}

void IpConfigurationWidget::guarded(const char *context, const std::function<void()> &work) {
    try {
        work();
    } catch (const GenICam::GenericException &error) {
        showException(context, error, this);
    } catch (const std::exception &error) {
        showException(context, error, this);
    } catch (...) {
        showUnexpectedException(context, "Unknown exception occurred", this);
    }
}

bool IpConfigurationWidget::event(QEvent *event) {
    if (event->type() != DeferredInitialRefreshEvent::eventType())
        return QWidget::event(event);
    awaitExposure(*window());
    refresh();
    return true;
}

bool IpConfigurationWidget::eventFilter(QObject *watched, QEvent *event) {
    // The menu key means the current row, wherever the tree believes the text cursor to be.
    const bool isMenuKey = watched == ui->deviceTree && event->type() == QEvent::ContextMenu &&
                           static_cast<QContextMenuEvent *>(event)->reason() == QContextMenuEvent::Keyboard;
    if (!isMenuKey)
        return QWidget::eventFilter(watched, event);
    if (const QTreeWidgetItem *item = ui->deviceTree->currentItem())
        onShowContextMenu(ui->deviceTree->visualItemRect(item).center());
    return true;
}

void IpConfigurationWidget::closeEvent(QCloseEvent *event) {
    // A window system's request can arrive in the middle of a wait, whose code still needs the window.
    if (m_BusyDepth > 0 || !saveBeforeClosing()) {
        event->ignore();
        return;
    }
    closeDevice();
    saveHeader();
    event->accept();
}

// Refresh and rows

void IpConfigurationWidget::refresh() {
    if (m_BusyDepth > 0)
        return;
    guarded("Failed to enumerate devices", [this] { doRefresh(); });
}

void IpConfigurationWidget::on_btnRefresh_clicked() { refresh(); }

void IpConfigurationWidget::doRefresh() {
    const OptionalDevice device = GetSelectedDeviceInfo();
    const QString mac = device ? displayText(*device, PropMacAddress) : QString();
    const CNetworkAdapter *adapter = GetSelectedNetworkAdapter();
    const QString adapterName = adapter ? adapter->name() : QString();
    if (checkSaveChanges() && !(device && writeConfiguration(*device))) {
        showFailedSave(
            QStringLiteral("The configuration could not be saved.\nThe Refresh operation has been canceled."),
            QMessageBox::Ok);
        return;
    }

    const QScopedValueRollback<int> busy(m_BusyDepth, m_BusyDepth + 1);
    const FocusKeeper focus(*this, *ui->deviceTree);
    const QSignalBlocker blocker(ui->deviceTree); // rows come and go without prompts
    closeDevice();
    ui->deviceTree->clear();
    updateUiFromTreeItem(nullptr);
    setSelectionInfoText(QStringLiteral("Searching for devices..."));
    const WaitCursor cursor;
    repaint();
    processEventsWithoutUser();
    try {
        fillTree();
    } catch (...) {
        select(mac, adapterName);
        throw;
    }
    select(mac, adapterName);
}

void IpConfigurationWidget::fillTree() {
    m_NetworkAdapters = CNetworkAdapter::allNetworkAdapters(RequiredFlags, QNetworkInterface::IsLoopBack);
    for (int i = 0; i < m_NetworkAdapters.size(); ++i) {
        auto *item = new QTreeWidgetItem(ui->deviceTree, AdapterRow);
        item->setData(ColName, IndexRole, i);
        UpdateTreeItemFromNetworkAdapter(item, &m_NetworkAdapters[i]);
    }
    if (m_NetworkAdapters.isEmpty())
        return;
    m_pDeviceLister->discoverAllDevices();
    addDeviceRows();
    sizeColumnsOnce();
}

void IpConfigurationWidget::sizeColumnsOnce() {
    if (m_areColumnsSized || m_pDeviceLister->devices().empty())
        return;
    constexpr int Gap = 8; // between the texts of neighbouring columns
    for (int column = 0; column < ui->deviceTree->columnCount(); ++column) {
        ui->deviceTree->resizeColumnToContents(column);
        ui->deviceTree->setColumnWidth(column, ui->deviceTree->columnWidth(column) + Gap);
    }
    m_areColumnsSized = true;
}

void IpConfigurationWidget::addDeviceRows() {
    std::vector<DIPtrAndIndexPair> sorted;
    int index = 0;
    for (const CDeviceInfo &device : m_pDeviceLister->devices())
        sorted.push_back({&device, index++});
    std::stable_sort(sorted.begin(), sorted.end(), CompareDIByProps{"ModelName", PropMacAddress});
    for (const DIPtrAndIndexPair &entry : sorted) {
        QTreeWidgetItem *adapter = findAdapterTreeItem(displayText(*entry.m_pDI, PropIfName));
        auto *item = adapter ? new QTreeWidgetItem(adapter, DeviceRow) : new QTreeWidgetItem(ui->deviceTree, DeviceRow);
        item->setData(ColName, IndexRole, entry.m_DIIndex);
        const CQuorelGigEDeviceInfo device(*entry.m_pDI);
        UpdateTreeItemFromDeviceInfo(item, &device);
    }
}

void IpConfigurationWidget::select(const QString &mac, const QString &adapterName) {
    QTreeWidgetItem *item = mac.isEmpty() ? nullptr : findDeviceTreeItem(mac);
    if (!item && !adapterName.isEmpty())
        item = findAdapterTreeItem(adapterName);
    if (!item)
        item = ui->deviceTree->topLevelItem(0);
    ui->deviceTree->setCurrentItem(item);
    updateUiFromTreeItem(item);
    if (m_NetworkAdapters.isEmpty())
        setSelectionInfoText(noAdaptersText());
}

std::size_t IpConfigurationWidget::updateTreeRowFromDeviceInfoByMac(const QString &mac) {
    std::size_t count = 0;
    for (QTreeWidgetItem *item : deviceTreeItems()) {
        const OptionalDevice device = deviceOf(item);
        if (device && displayText(*device, PropMacAddress) == mac && UpdateTreeItemFromDeviceInfo(item, &*device))
            ++count;
    }
    return count;
}

bool IpConfigurationWidget::UpdateTreeItemFromDeviceInfo(QTreeWidgetItem *item, const CQuorelGigEDeviceInfo *device) {
    if (!item || !device)
        return false;
    const EDeviceAccessiblityInfo verdict = GetAccessibility(*device);
    const QString model = displayText(*device, "ModelName");
    item->setText(ColName, plainDeviceText(model));
    item->setIcon(ColName, m_Icons.model(model));
    item->setText(ColSerialNumber, plainDeviceText(displayText(*device, "SerialNumber")));
    item->setText(ColMac, displayText(*device, PropMacAddress));
    item->setText(ColStatus, FormatAccessibility(verdict));
    item->setIcon(ColStatus, m_Icons.accessibility(verdict));
    item->setText(ColIpConfiguration, formatIPConfigurationOf(*device));
    item->setText(ColIpAddress, displayText(*device, "IpAddress"));
    item->setText(ColSubnetMask, displayText(*device, "SubnetMask"));
    return true;
}

bool IpConfigurationWidget::UpdateTreeItemFromNetworkAdapter(QTreeWidgetItem *item, const CNetworkAdapter *adapter) {
    if (!item || !adapter)
        return false;
    item->setText(ColName, adapter->displayName());
    item->setIcon(ColName, m_Icons.adapter());
    item->setFirstColumnSpanned(true);
    item->setExpanded(true);
    item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    return true;
}

QTreeWidgetItem *IpConfigurationWidget::findAdapterTreeItem(const QString &name) const {
    // A device seen through several adapters stands under the first that there is.
    for (const QString &part : name.split(QLatin1Char(';'))) {
        for (int i = 0; i < ui->deviceTree->topLevelItemCount(); ++i) {
            QTreeWidgetItem *item = ui->deviceTree->topLevelItem(i);
            const CNetworkAdapter *adapter =
                item->type() == AdapterRow ? GetNetworkAdapterFromItemIndex(indexOf(item)) : nullptr;
            if (adapter != nullptr && adapter->name() == part)
                return item;
        }
    }
    return nullptr;
}

QTreeWidgetItem *IpConfigurationWidget::findDeviceTreeItem(const QString &mac) const {
    for (QTreeWidgetItem *item : deviceTreeItems()) {
        const OptionalDevice device = deviceOf(item);
        if (device && displayText(*device, PropMacAddress) == mac)
            return item;
    }
    return nullptr;
}

std::vector<QTreeWidgetItem *> IpConfigurationWidget::deviceTreeItems() const {
    std::vector<QTreeWidgetItem *> items;
    for (QTreeWidgetItemIterator i(ui->deviceTree); *i; ++i) {
        if ((*i)->type() == DeviceRow)
            items.push_back(*i);
    }
    return items;
}

// Selection

const CNetworkAdapter *IpConfigurationWidget::GetNetworkAdapterFromItemIndex(int index) const {
    return index >= 0 && index < m_NetworkAdapters.size() ? &m_NetworkAdapters[index] : nullptr;
}

IpConfigurationWidget::OptionalDevice IpConfigurationWidget::GetDeviceInfoFromItemIndex(int index) const {
    const auto &devices = m_pDeviceLister->devices();
    if (index < 0 || static_cast<std::size_t>(index) >= devices.size())
        return std::nullopt;
    return CQuorelGigEDeviceInfo(devices[static_cast<std::size_t>(index)]);
}

IpConfigurationWidget::OptionalDevice IpConfigurationWidget::deviceOf(const QTreeWidgetItem *item) const {
    return item && item->type() == DeviceRow ? GetDeviceInfoFromItemIndex(indexOf(item)) : std::nullopt;
}

IpConfigurationWidget::OptionalDevice IpConfigurationWidget::GetSelectedDeviceInfo() const {
    return deviceOf(ui->deviceTree->currentItem());
}

const CNetworkAdapter *IpConfigurationWidget::GetSelectedNetworkAdapter() const {
    const QTreeWidgetItem *item = ui->deviceTree->currentItem();
    return item && item->type() == AdapterRow ? GetNetworkAdapterFromItemIndex(indexOf(item)) : nullptr;
}

const CNetworkAdapter *IpConfigurationWidget::GetNetworkAdapaterFromDeviceItem(const QTreeWidgetItem *item) const {
    if (item && item->type() == DeviceRow)
        item = item->parent();
    return item && item->type() == AdapterRow ? GetNetworkAdapterFromItemIndex(indexOf(item)) : nullptr;
}

void IpConfigurationWidget::onCurrentItemChanged(QTreeWidgetItem *current, QTreeWidgetItem *previous) {
    guarded("onCurrentItemChanged", [&] {
        if (checkSaveChanges())
            saveChangesOf(previous);
        closeDevice();
        updateUiFromTreeItem(current);
    });
}

void IpConfigurationWidget::updateUiFromTreeItem(const QTreeWidgetItem *item) {
    updateSelectionInfo(item);
    fillEditor(item);
}

void IpConfigurationWidget::showPatchedInfo(const QString &mac) {
    updateTreeRowFromDeviceInfoByMac(mac);
    updateSelectionInfo(ui->deviceTree->currentItem());
}

void IpConfigurationWidget::updateSelectionInfo(const QTreeWidgetItem *item) {
    const OptionalDevice device = deviceOf(item);
    const CNetworkAdapter *adapter = GetNetworkAdapaterFromDeviceItem(item);
    if (device) {
        const QString diagnosis = diagnosisText(*device, adapter);
        setSelectionInfoText(deviceText(*device) + diagnosis);
        scrollSelectionInfo(!diagnosis.isEmpty()); // to what is wrong
    } else if (adapter)
        setSelectionInfoText(adapterText(*adapter));
    else
        setSelectionInfoText(noDevicesText());
}

void IpConfigurationWidget::setSelectionInfoText(const QString &richText) { ui->selectionInfo->setText(richText); }

void IpConfigurationWidget::scrollSelectionInfo(bool toEnd) {
    // Later, when the label has its new height.
    QTimer::singleShot(0, ui->selectionInfo, [this, toEnd] {
        QScrollBar *bar = ui->selectionInfoArea->verticalScrollBar();
        bar->setValue(toEnd ? bar->maximum() : 0);
    });
}

void IpConfigurationWidget::setHintText(const QString &text) { ui->hintText->setText(text); }

void IpConfigurationWidget::onShowContextMenu(const QPoint &position) {
    QTreeWidgetItem *item = ui->deviceTree->itemAt(position);
    if (!item || item->type() == AdapterRow)
        return;
    Q_ASSERT_X(item->type() == DeviceRow, "onShowContextMenu", "Unknown treeitem type");
    QMenu menu(this);
    QAction *assign = menu.addAction(QStringLiteral("&Assign Temporary IP Address..."));
    connect(assign, SIGNAL(triggered()), this, SLOT(onAssignTemporaryIPAddress()));
    menu.exec(ui->deviceTree->viewport()->mapToGlobal(position));
}

void IpConfigurationWidget::onSelectionInfo_linkActivated(const QString &) {}

void IpConfigurationWidget::ShowNetworkConnections_triggered() {}

// Editor

void IpConfigurationWidget::fillEditor(const QTreeWidgetItem *item) {
    const OptionalDevice device = deviceOf(item);
    const auto persistentOr = [&](const char *persistent, const char *current) {
        return device ? displayText(*device, device->GetPropertyAvailable(persistent) ? persistent : current)
                      : QString();
    };
    ui->editIpAddress->setText(persistentOr("GevPersistentIPAddress", "IpAddress"));
    ui->editNetmask->setText(persistentOr("GevPersistentSubnetMask", "SubnetMask"));
    ui->editDefaultGateway->setText(persistentOr("GevPersistentDefaultGateway", "DefaultGateway"));
    checkModeButton(device);
    clearEditFlags();
    updateUiState(const_cast<QTreeWidgetItem *>(item));
    m_Loaded = editorContent();
}

void IpConfigurationWidget::checkModeButton(const OptionalDevice &device) {
    // Of the flags of the current configuration only this number is patched after a save.
    const uint modes = device ? displayText(*device, "IpConfigCurrent").toUInt() : 0;
    QRadioButton *chosen = nullptr;
    if ((modes & 1u) != 0)
        chosen = ui->btnUsePersistentIp;
    else if ((modes & 2u) != 0)
        chosen = ui->btnUseDhcp;
    else if ((modes & 4u) != 0)
        chosen = ui->btnUseAutoIp;
    const auto buttons = {ui->btnUsePersistentIp, ui->btnUseDhcp, ui->btnUseAutoIp};
    for (QRadioButton *button : buttons)
        button->setAutoExclusive(false); // else one could not be unchecked
    for (QRadioButton *button : buttons)
        button->setChecked(button == chosen); // NOLINT(clang-analyzer-core.CallAndMessage): the list holds no null
    for (QRadioButton *button : buttons)
        button->setAutoExclusive(true);
}

void IpConfigurationWidget::updateUiState(QTreeWidgetItem *item) {
    const OptionalDevice device = deviceOf(item);
    const EDeviceAccessiblityInfo verdict = device ? GetAccessibility(*device) : Accessibility_Unknown;
    const bool inUse = verdict == Accessibility_Opened || verdict == Accessibility_OpenedExclusively;
    enableWidgets(device && !inUse);
    if (inUse)
        setHintText(QStringLiteral("The device is in use. Its configuration cannot be changed."));
}

void IpConfigurationWidget::enableWidgets(bool enable) {
    const OptionalDevice device = GetSelectedDeviceInfo();
    const bool known = device && device->GetPropertyAvailable("_PortableIpConfigOptions");
    ui->editor->setEnabled(enable);
    ui->btnUsePersistentIp->setEnabled(enable && known && device->IsPersistentIpSupported());
    ui->btnUseDhcp->setEnabled(enable && known && device->IsDhcpSupported());
    ui->btnUseAutoIp->setEnabled(enable && known && device->IsAutoIpSupported());
    const bool isStatic = selectedMode() == AddressMode::Static;
    for (QLineEdit *edit : {ui->editIpAddress, ui->editNetmask, ui->editDefaultGateway})
        edit->setEnabled(enable && isStatic);
    const bool valid = isValidConfigInUI();
    const bool changed = hasChanges();
    setHintText(changed && !valid && enable ? QStringLiteral("The addresses do not make a valid configuration.")
                                            : QString());
    ui->btnWriteConfiguration->setEnabled(enable && changed && valid);
    ui->btnWriteConfiguration->setDefault(m_isEditModeActive && changed && valid);
}

void IpConfigurationWidget::ipConfigurationEdited() {
    m_isIpProtocolConfigDirty = selectedMode() != m_Loaded.mode;
    // With another mode the addresses are the camera's: what was typed for a static one shall not be written.
    if (selectedMode() != AddressMode::Static)
        revertAddresses();
    edited();
}

void IpConfigurationWidget::on_editIpAddress_textEdited(const QString &text) {
    m_isIpAddressEdited = true;
    m_isIpAddressDirty = canonicalIpAddress(text) != m_Loaded.ipAddress;
    edited();
}

void IpConfigurationWidget::on_editNetmask_textEdited(const QString &text) {
    m_isNetmaskEdited = true;
    m_isNetmaskDirty = canonicalNetmask(*m_pNetmaskValidator, text) != m_Loaded.netmask;
    edited();
}

void IpConfigurationWidget::on_editNetmask_editingFinished() {
    QString mask = ui->editNetmask->text();
    m_pNetmaskValidator->fixup(mask);
    ui->editNetmask->setText(mask);
}

void IpConfigurationWidget::on_editDefaultGateway_textEdited(const QString &text) {
    m_isDefaultGatewayEdited = true;
    m_isDefaultGatewayDirty = canonicalIpAddress(text) != m_Loaded.defaultGateway;
    edited();
}

void IpConfigurationWidget::edited() {
    m_isEditModeActive = true;
    updateUiState(ui->deviceTree->currentItem());
}

void IpConfigurationWidget::onReturnPressed() {
    if (ui->btnWriteConfiguration->isEnabled())
        ui->btnWriteConfiguration->click();
}

void IpConfigurationWidget::revertEditor() { fillEditor(ui->deviceTree->currentItem()); }

bool IpConfigurationWidget::isValidConfigInUI() const {
    const AddressMode mode = selectedMode();
    return mode == AddressMode::Static ? areAddressesValid() : mode != AddressMode::None;
}

bool IpConfigurationWidget::areAddressesValid() const {
    return ui->editIpAddress->hasAcceptableInput() && isIPAddressValidForDevice(editorContent().ipAddress) &&
           m_pNetmaskValidator->isUsable(ui->editNetmask->text()) && ui->editDefaultGateway->hasAcceptableInput();
}

void IpConfigurationWidget::revertAddresses() {
    ui->editIpAddress->setText(m_Loaded.ipAddress);
    ui->editNetmask->setText(m_Loaded.netmask);
    ui->editDefaultGateway->setText(m_Loaded.defaultGateway);
    m_isIpAddressDirty = m_isIpAddressEdited = false;
    m_isNetmaskDirty = m_isNetmaskEdited = false;
    m_isDefaultGatewayDirty = m_isDefaultGatewayEdited = false;
}

bool IpConfigurationWidget::hasChanges() const {
    return m_isIpProtocolConfigDirty || m_isIpAddressDirty || m_isNetmaskDirty || m_isDefaultGatewayDirty ||
           m_isCustomNameDirty;
}

IpConfigurationWidget::AddressMode IpConfigurationWidget::selectedMode() const {
    const auto isChosen = [](const QRadioButton *button) { return button->isEnabled() && button->isChecked(); };
    if (isChosen(ui->btnUsePersistentIp))
        return AddressMode::Static;
    if (isChosen(ui->btnUseDhcp))
        return AddressMode::Dhcp;
    return isChosen(ui->btnUseAutoIp) ? AddressMode::AutoIp : AddressMode::None;
}

IpConfigurationWidget::EditorContent IpConfigurationWidget::editorContent() const {
    return {selectedMode(), canonicalIpAddress(ui->editIpAddress->text()),
            canonicalNetmask(*m_pNetmaskValidator, ui->editNetmask->text()),
            canonicalIpAddress(ui->editDefaultGateway->text())};
}

void IpConfigurationWidget::clearEditFlags() {
    m_isIpProtocolConfigDirty = false;
    m_isIpAddressDirty = false;
    m_isIpAddressEdited = false;
    m_isNetmaskDirty = false;
    m_isNetmaskEdited = false;
    m_isDefaultGatewayDirty = false;
    m_isDefaultGatewayEdited = false;
    m_isCustomNameDirty = false;
    m_isEditModeActive = false;
    ui->btnWriteConfiguration->setDefault(false);
}
