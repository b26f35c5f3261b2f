#include "Lanvane/ipconfigurationwidget.h"

#include "Base/GCException.h"
#include "CorvoQtBase/DeviceText.h"
#include "CorvoQtBase/errorhandling.h"
#include "Lanvane/AddressRules.h"
#include "Lanvane/AddressText.h"
#include "Lanvane/FindingText.h"
#include "Lanvane/IpConfigurationParts.h"
#include "Lanvane/QIpAddressValidator.h"
#include "Lanvane/QIpAddressWithNetmaskValidator.h"
#include "Lanvane/QIpNetmaskValidator.h"
#include "Lanvane/WaitIndication.h"
#include "MinimalCorvo/TraceLog.h"
#include "commissioning/DeviceInfos.h"
#include "ui_ipconfigurationwidget.h"

#include <QAction>
#include <QClipboard>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QHostAddress>
#include <QPointer>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTextDocument>
#include <QTimer>
#include <QToolTip>

#include <algorithm>
#include <utility>

using namespace Corvo;

namespace {

/// Starts the first refresh once the window is there.
class DeferredInitialRefreshEvent : public QEvent {
public:
    DeferredInitialRefreshEvent() : QEvent(eventType()) {}
    static Type eventType() {
        static const int type = registerEventType();
        return static_cast<Type>(type);
    }
};

void copyText(const QString &text) {
    if (!text.isEmpty())
        QGuiApplication::clipboard()->setText(text);
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
          m_NetworkAdapters,
          [this](const QString &mac, std::optional<commissioning::Address> forced) { onUpdated(mac, forced); }),
      m_Background([this]() -> IGigETransportLayer & { return m_pDeviceLister->Tl(); },
                   [this] { return m_BusyDepth > 0 || m_Interaction.operation().isRunning(); }, m_Host,
                   [this](commissioning::Diagnosis found) { takeUpdate(std::move(found)); },
                   [this] { emit summaryChanged(m_Situation.summary() + QStringLiteral(" (last search failed)")); }) {
    m_Interaction.setPrelude([this] { m_Background.end(); });
    ui->setupUi(this);
    m_pDeviceLister = std::make_unique<DeviceLister>();
    setUpTree();
    setUpActions();
    setUpShortcuts();
    setUpEditor();
    updateUiFromTreeItem(nullptr);
    QCoreApplication::postEvent(this, new DeferredInitialRefreshEvent);
}

IpConfigurationWidget::~IpConfigurationWidget() { closeDevice(); }

IpConfigurationWidget::Busy::~Busy() {
    if (m_Depth == 1)
        discardUserInput();
    --m_Depth;
}

void IpConfigurationWidget::setUpTree() {
    restoreLayout();
    ui->deviceTree->setSituation(&m_Situation);
    ui->deviceTree->installEventFilter(this);
    connect(ui->deviceTree, SIGNAL(customContextMenuRequested(const QPoint &)), this,
            SLOT(onShowContextMenu(const QPoint &)));
    connect(ui->deviceTree, &QTreeWidget::currentItemChanged, this, &IpConfigurationWidget::onCurrentItemChanged);
    // Later, when the current row has followed.
    connect(ui->deviceTree, &QTreeWidget::itemSelectionChanged, this, &IpConfigurationWidget::onSelectionChanged,
            Qt::QueuedConnection);
    connect(ui->editFilter, &QLineEdit::textChanged, ui->deviceTree, &DeviceTree::setFilter);
    connect(ui->deviceTree, &DeviceTree::nameEntered, this, &IpConfigurationWidget::renameDevice, Qt::QueuedConnection);
    connect(ui->selectionInfo, SIGNAL(linkActivated(const QString &)), this,
            SLOT(onSelectionInfo_linkActivated(const QString &)));
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

/// A button's own shortcut shows the button pressed for 100 ms before it clicks, whatever is selected by then. These
/// act at once.
void IpConfigurationWidget::setUpShortcuts() {
    const auto addShortcut = [this](const QKeySequence &keys, QAbstractButton *button) {
        auto *shortcut = new QShortcut(keys, this);
        shortcut->setAutoRepeat(false);
        connect(shortcut, &QShortcut::activated, button, &QAbstractButton::click);
    };
    const std::initializer_list<QAbstractButton *> buttons = {ui->btnRefresh, ui->btnWriteConfiguration,
                                                              ui->btnUsePersistentIp, ui->btnUseDhcp, ui->btnUseAutoIp};
    for (QAbstractButton *button : buttons) {
        addShortcut(QKeySequence::mnemonic(button->text()), button);
        button->setShortcut(QKeySequence()); // the letter stays underlined
    }
    addShortcut(QKeySequence(QStringLiteral("Ctrl+S")), ui->btnWriteConfiguration);
    auto *find = new QShortcut(QKeySequence(QStringLiteral("Ctrl+F")), this);
    connect(find, &QShortcut::activated, ui->editFilter, [this] { ui->editFilter->setFocus(Qt::ShortcutFocusReason); });
    auto *unfilter = new QShortcut(QKeySequence(Qt::Key_Escape), ui->editFilter);
    unfilter->setContext(Qt::WidgetShortcut);
    connect(unfilter, &QShortcut::activated, ui->editFilter, &QLineEdit::clear);
    auto *copy = new QShortcut(QKeySequence(QKeySequence::Copy), ui->deviceTree);
    copy->setContext(Qt::WidgetShortcut);
    connect(copy, &QShortcut::activated, this, [this] { copySelected(); });
}

void IpConfigurationWidget::setUpEditor() {
    for (QRadioButton *button : {ui->btnUsePersistentIp, ui->btnUseDhcp, ui->btnUseAutoIp})
        connect(button, SIGNAL(clicked(bool)), this, SLOT(ipConfigurationEdited()));
    ui->editIpAddress->setValidator(new QIpAddressWithNetmaskValidator(ui->editNetmask, ui->editIpAddress));
    ui->editNetmask->setValidator(new QIpNetmaskValidator(ui->editNetmask));
    auto *gateway = new QIpAddressWithNetmaskValidator(ui->editNetmask, ui->editDefaultGateway);
    gateway->setAllowNullAddress(true);
    ui->editDefaultGateway->setValidator(gateway);
    for (QLineEdit *edit : {ui->editIpAddress, ui->editNetmask, ui->editDefaultGateway}) {
        edit->setMaxLength(LongestAddressText);
        connect(edit, &QLineEdit::returnPressed, this, &IpConfigurationWidget::onReturnPressed);
    }
    constexpr int HintLines = 4; // room for the longest hint, so that none moves the fields
    ui->hintText->setFixedHeight(HintLines * ui->hintText->fontMetrics().lineSpacing());
    ui->selectionInfoArea->setMinimumWidth(
        std::max(ui->selectionInfoArea->minimumWidth(), 40 * fontMetrics().averageCharWidth()));
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), ui->editor);
    escape->setContext(Qt::WidgetWithChildrenShortcut);
    connect(escape, &QShortcut::activated, this, &IpConfigurationWidget::revertEditor);
}

void IpConfigurationWidget::restoreLayout() {
    ui->splitter->setStretchFactor(0, 1);
    ui->splitter->setStretchFactor(1, 0);
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    ui->deviceTree->restoreHeader(settings);
    ui->splitter->restoreState(settings.value("splitter").toByteArray());
}

/// A window of the size it has before there are settings grows to what its first devices need, as far as the screen
/// lets it.
void IpConfigurationWidget::showAllColumnsOnce() {
    if (!ui->deviceTree->sizeColumnsOnce())
        return;
    const bool isNew = !QSettings().contains(QLatin1String(SettingsGroup) + "/size");
    if (isNew && !window()->isMaximized())
        growWindow();
    if (ui->deviceTree->missingWidth() > 0)
        ui->deviceTree->bringAddressesForward();
}

/// To the width of its columns, and to a height at which most of what can be wrong is read without scrolling.
void IpConfigurationWidget::growWindow() {
    constexpr int InfoLines = 15;
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const QSize frame = window()->frameGeometry().size() - window()->size();
    const int missingHeight = InfoLines * fontMetrics().lineSpacing() - ui->selectionInfoArea->height();
    const QSize wanted(window()->width() + ui->deviceTree->missingWidth(),
                       window()->height() + std::max(0, missingHeight));
    window()->resize(wanted.boundedTo(screen.size() - frame).expandedTo(window()->size()));
    const QPoint beyond = window()->frameGeometry().bottomRight() - screen.bottomRight();
    if (beyond.x() > 0 || beyond.y() > 0)
        window()->move(window()->pos() - QPoint(std::max(0, beyond.x()), std::max(0, beyond.y())));
}

void IpConfigurationWidget::saveLayout() const {
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    ui->deviceTree->saveHeader(settings);
    settings.setValue("splitter", ui->splitter->saveState());
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
    // A window system's request can arrive in the middle of an operation, whose code still needs the window.
    event->ignore();
    if (m_BusyDepth > 0)
        return m_Interaction.cancel();
    const Busy busy(m_BusyDepth);
    if (!saveBeforeClosing())
        return;
    closeDevice();
    saveLayout();
    event->accept();
}

// Rows

std::size_t IpConfigurationWidget::updateTreeRowFromDeviceInfoByMac(const QString &mac) {
    const OptionalDevice device = deviceOf(mac);
    return device && UpdateTreeItemFromDeviceInfo(ui->deviceTree->findDevice(mac), &*device) ? 1 : 0;
}

bool IpConfigurationWidget::UpdateTreeItemFromDeviceInfo(QTreeWidgetItem *item, const CQuorelGigEDeviceInfo *device) {
    if (!item || !device)
        return false;
    ui->deviceTree->showDevice(*item, *device);
    return true;
}

bool IpConfigurationWidget::UpdateTreeItemFromNetworkAdapter(QTreeWidgetItem *item, const CNetworkAdapter *adapter) {
    if (!item || !adapter)
        return false;
    ui->deviceTree->showAdapter(*item, *adapter);
    return true;
}

QTreeWidgetItem *IpConfigurationWidget::findAdapterTreeItem(const QString &name) const {
    return ui->deviceTree->findAdapter(name);
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

IpConfigurationWidget::OptionalDevice IpConfigurationWidget::deviceOf(const QString &mac) const {
    const CDeviceInfo *const found = m_pDeviceLister->find(mac);
    return found ? OptionalDevice(*found) : std::nullopt;
}

IpConfigurationWidget::OptionalDevice IpConfigurationWidget::GetSelectedDeviceInfo() const {
    return ui->deviceTree->hasSeveralSelected() ? std::nullopt : deviceOf(ui->deviceTree->currentItem());
}

const CNetworkAdapter *IpConfigurationWidget::GetSelectedNetworkAdapter() const {
    return GetNetworkAdapterFromItemIndex(DeviceTree::adapterIndexOf(ui->deviceTree->currentItem()));
}

const CNetworkAdapter *IpConfigurationWidget::GetNetworkAdapaterFromDeviceItem(const QTreeWidgetItem *item) const {
    return adapterOf(DeviceTree::keyOf(item).adapterName);
}

const CNetworkAdapter *IpConfigurationWidget::adapterOf(const QString &name) const {
    return GetNetworkAdapterFromItemIndex(DeviceTree::adapterIndexOf(findAdapterTreeItem(name)));
}

DeviceSurroundings IpConfigurationWidget::surroundingsOf(const QTreeWidgetItem *item) const {
    const DeviceTree::RowKey key = DeviceTree::keyOf(item);
    const OptionalDevice device = deviceOf(key.mac);
    return {key.adapterName, firstIPv4Entry(adapterOf(key.adapterName)), addressEntriesOf(m_NetworkAdapters),
            device && m_ForcedAddresses.value(key.mac) == displayText(device->GetIpAddress())};
}

void IpConfigurationWidget::onCurrentItemChanged(QTreeWidgetItem * /*current*/, QTreeWidgetItem * /*previous*/) {
    if (m_BusyDepth > 0)
        return;
    bool saved = false;
    guarded("onCurrentItemChanged", [&] {
        saved = saveBeforeLeaving();
        closeDevice();
        updateUiFromTreeItem(ui->deviceTree->currentItem());
    });
    if (saved)
        QTimer::singleShot(0, this, &IpConfigurationWidget::refresh); // not while the selection changes
}

void IpConfigurationWidget::updateUiFromTreeItem(const QTreeWidgetItem *item) {
    updateSelectionInfo(item);
    fillEditor(item);
}

void IpConfigurationWidget::showPatchedInfo(const QString &mac) {
    if (const OptionalDevice device = deviceOf(mac)) {
        m_Situation.follow(*device);
        takeSituation(std::move(m_Situation));
    }
    updateTreeRowFromDeviceInfoByMac(mac);
    updateSelectionInfo(ui->deviceTree->currentItem());
}

void IpConfigurationWidget::onUpdated(const QString &mac, std::optional<commissioning::Address> forced) {
    if (forced)
        m_ForcedAddresses[mac] = QHostAddress(*forced).toString();
    showPatchedInfo(mac);
}

void IpConfigurationWidget::updateSelectionInfo(const QTreeWidgetItem *item) {
    if (ui->deviceTree->hasSeveralSelected())
        return setSelectionInfoText(severalDevicesText(ui->deviceTree->selectedMacs().size()));
    const DeviceTree::RowKey key = DeviceTree::keyOf(item);
    const OptionalDevice device = deviceOf(item);
    const CNetworkAdapter *adapter = GetNetworkAdapaterFromDeviceItem(item);
    if (device) {
        QString notes = diagnosisText(*device, adapter);
        if (isAtTemporaryAddress(*device, surroundingsOf(item).isForced))
            notes += temporaryAddressText(*device);
        notes += findingsText(m_Situation.ofCamera(key.mac)) + makeUsableText(key.mac);
        showInfo(deviceText(*device) + userDefinedNameText(*device), notes + noticeText(key.mac));
    } else if (const commissioning::Camera *hidden = m_Situation.hiddenCamera(key.mac))
        showInfo(deviceText(commissioning::infoOf(*hidden)),
                 findingsText(m_Situation.ofCamera(key.mac)) + makeUsableText(key.mac) + noticeText(key.mac));
    else if (adapter)
        showInfo(adapterText(*adapter) + adapterFindingsText(m_Situation, adapter->name()), noticeText(QString()));
    else
        setSelectionInfoText(noDevicesText() + noticeText(QString()));
}

void IpConfigurationWidget::showInfo(const QString &facts, const QString &notes) {
    const DeviceTree::RowKey key = DeviceTree::keyOf(ui->deviceTree->currentItem());
    const QString subject = key.mac.isEmpty() ? key.adapterName : key.mac;
    const bool isUpdate = subject == std::exchange(m_InfoSubject, subject) && m_BusyDepth == 0;
    if (isUpdate && facts + notes == ui->selectionInfo->text()) // part of it may be selected
        return;
    setSelectionInfoText(facts + notes);
    if (!isUpdate)
        scrollSelectionInfo(notes.isEmpty() ? QString() : facts);
}

QString IpConfigurationWidget::noticeText(const QString &mac) const {
    return m_Notice.text.isEmpty() || !(m_Notice.mac.isEmpty() || m_Notice.mac == mac)
               ? QString()
               : QStringLiteral("<p><b>%1</b> %2</p>").arg(m_Notice.title, richDeviceText(m_Notice.text));
}

void IpConfigurationWidget::setSelectionInfoText(const QString &richText) { ui->selectionInfo->setText(richText); }

void IpConfigurationWidget::scrollSelectionInfo(const QString &above) {
    // Later, when the label has its new height.
    QTimer::singleShot(0, ui->selectionInfo, [this, above] {
        QTextDocument document;
        document.setDefaultFont(ui->selectionInfo->font());
        document.setHtml(above);
        document.setTextWidth(ui->selectionInfo->contentsRect().width());
        const int height = above.isEmpty() ? 0 : static_cast<int>(document.size().height());
        ui->selectionInfoArea->verticalScrollBar()->setValue(height);
    });
}

void IpConfigurationWidget::setHintText(const QString &text) { ui->hintText->setText(text); }

void IpConfigurationWidget::copySelected(int column) const {
    copyText(column < 0 ? ui->deviceTree->selectedText() : ui->deviceTree->selectedText(column));
}

void IpConfigurationWidget::onSelectionInfo_linkActivated(const QString &link) {
    if (link == QLatin1String(MakeUsableLink))
        return makeUsable();
    const QString command = commandOf(link);
    copyText(command);
    if (!command.isEmpty())
        QToolTip::showText(QCursor::pos(), QStringLiteral("Copied"), ui->selectionInfo);
    if (m_BusyDepth > 0 || !m_Editor.device() || link != QLatin1String(KeepAddressLink))
        return;
    m_Editor.takeCurrentAddresses();
    showEditorState();
}

void IpConfigurationWidget::ShowNetworkConnections_triggered() {}

void IpConfigurationWidget::onNetworkAdapterProperties() {}

void IpConfigurationWidget::aimAtSelection() {
    m_Change = {};
    m_Change.adapter = DeviceTree::keyOf(ui->deviceTree->currentItem()).adapterName.toStdString();
    if (const OptionalDevice device = GetSelectedDeviceInfo())
        m_Change.device = *device;
}
