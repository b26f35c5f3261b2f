// IpConfigurationWidget: the refresh, from the search to the rows.

#include "Base/GCException.h"
#include "Lanvane/DeviceSearch.h"
#include "Lanvane/FindingText.h"
#include "Lanvane/ipconfigurationwidget.h"
#include "ui_ipconfigurationwidget.h"

#include <QPointer>
#include <QSignalBlocker>

using namespace Corvo;

namespace {

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

} // namespace

void IpConfigurationWidget::refresh() {
    if (m_BusyDepth > 0)
        return;
    const Busy busy(m_BusyDepth);
    guarded("Failed to enumerate devices", [this] { doRefresh(); });
}

void IpConfigurationWidget::on_btnRefresh_clicked() { refresh(); }

void IpConfigurationWidget::doRefresh() {
    ui->deviceTree->finishEditing(); // its row goes
    if (checkSaveChanges() && !saveEdited()) {
        showFailure(QStringLiteral("The configuration could not be saved.\nThe Refresh operation has been canceled."),
                    QMessageBox::Ok);
        return;
    }
    const FocusKeeper focus(*this, *ui->deviceTree);
    const QSignalBlocker blocker(ui->deviceTree); // rows come and go without prompts
    const DeviceTree::View view = ui->deviceTree->view();
    closeDevice();
    ui->deviceTree->clearRows();
    m_Notice = {};
    const bool hadFindings = !inventory().findings.empty();
    takeSituation({});
    if (hadFindings) // the user may have changed the host since
        m_Host.forget();
    updateUiFromTreeItem(nullptr);
    setSelectionInfoText(QStringLiteral("Searching for devices..."));
    try {
        fillTree(view);
    } catch (const GenICam::GenericException &error) {
        show(view);
        setSelectionInfoText(searchFailedText(QString::fromUtf8(error.GetDescription())));
        throw;
    } catch (...) {
        show(view);
        throw;
    }
    show(view);
}

void IpConfigurationWidget::fillTree(const DeviceTree::View &view) {
    m_NetworkAdapters = usableAdapters();
    addAdapterRows(0);
    commissioning::DiagnosisOptions options;
    m_Host.attach(&options, std::chrono::steady_clock::now());
    if (!search(view, options))
        m_Notice.text = QStringLiteral("The search was cancelled: the list may not be complete or up to date.");
    else
        m_Host.learn(m_Situation.observation());
    if (!m_pDeviceLister->devices().empty())
        showAllColumnsOnce();
}

void IpConfigurationWidget::addAdapterRows(int first) {
    for (int i = first; i < m_NetworkAdapters.size(); ++i)
        UpdateTreeItemFromNetworkAdapter(ui->deviceTree->addAdapterRow(m_NetworkAdapters[i], i), &m_NetworkAdapters[i]);
}

bool IpConfigurationWidget::search(const DeviceTree::View &view, const commissioning::DiagnosisOptions &options) {
    DeviceTree &tree = *ui->deviceTree;
    DeviceSearch search(m_Interaction.operation(), *m_pDeviceLister, m_pDeviceLister->Tl(),
                        {[&](const std::vector<commissioning::Adapter> &adapters) { takeAdapters(adapters); },
                         [&](const CDeviceInfo &device) { tree.addDeviceRow(CQuorelGigEDeviceInfo(device)); },
                         [&] {
                             tree.sortRows();
                             tree.restore(view);
                         },
                         [&](const CDeviceInfo &device) {
                             const CQuorelGigEDeviceInfo judged(device);
                             UpdateTreeItemFromDeviceInfo(tree.findDevice(macOf(judged)), &judged);
                         }},
                        options);
    const bool hasAdapters = !m_NetworkAdapters.isEmpty(); // else there is nothing to search on
    const bool isDone = m_Interaction.runSearch([&] { hasAdapters ? search.run() : search.runWithoutSearch(); });
    takeSituation(search.takeSituation());
    showHiddenDevices();
    m_Missed.clear();
    return isDone;
}

void IpConfigurationWidget::showHiddenDevices() {
    for (const commissioning::Camera &camera : inventory().cameras) {
        if (camera.hidden)
            ui->deviceTree->showHidden(camera);
    }
}

void IpConfigurationWidget::takeAdapters(const std::vector<commissioning::Adapter> &adapters) {
    commissioning::Diagnosis known;
    known.observation.adapters = adapters;
    m_Situation = Situation(std::move(known), false);
    const int listed = m_NetworkAdapters.size();
    for (int i = 0; i < listed; ++i) // some have turned out to be of no use
        UpdateTreeItemFromNetworkAdapter(findAdapterTreeItem(m_NetworkAdapters[i].name()), &m_NetworkAdapters[i]);
    m_NetworkAdapters += idleAdapters(adapters, m_NetworkAdapters);
    addAdapterRows(listed);
}

void IpConfigurationWidget::takeSituation(Situation situation) {
    m_Situation = std::move(situation);
    ui->deviceTree->refreshSigns();
    emit summaryChanged(m_Situation.summary());
}

void IpConfigurationWidget::show(const DeviceTree::View &view) {
    ui->deviceTree->restore(view);
    updateUiFromTreeItem(ui->deviceTree->currentItem());
    if (m_NetworkAdapters.isEmpty())
        setSelectionInfoText(noAdaptersText() + findingsText(m_Situation.ofHost()));
}

void IpConfigurationWidget::showNextInNeed() {
    QTreeWidgetItem *const row = m_BusyDepth > 0 ? nullptr : ui->deviceTree->nextNeedingAttention();
    if (!row)
        return;
    if (row->isHidden())
        ui->editFilter->clear();
    ui->deviceTree->setCurrentItem(row);
    ui->deviceTree->setFocus();
}
