// IpConfigurationWidget: making the selected camera usable.

#include "Lanvane/IpConfigurationParts.h"
#include "Lanvane/MakeUsable.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/Survey.h"
#include "ui_ipconfigurationwidget.h"

#include <QHostAddress>
#include <QMenu>

#include <algorithm>

using namespace Corvo;

namespace {

QString doneText(const MakeUsable &way) {
    const QString address = QHostAddress(way.plan().address).toString();
    if (!way.isKept())
        return QStringLiteral("The camera has the address %1 until its next restart.").arg(address);
    return way.plan().mode == commissioning::Mode::Dhcp
               ? QStringLiteral("The camera gets its address by DHCP from now on.")
               : QStringLiteral("The camera has the address %1 and keeps it.").arg(address);
}

} // namespace

IpConfigurationWidget::OptionalDevice IpConfigurationWidget::selectedLostDevice() const {
    const auto *hidden = m_Situation.hiddenCamera(DeviceTree::keyOf(ui->deviceTree->currentItem()).mac);
    return hidden ? OptionalDevice(commissioning::infoOf(*hidden)) : GetSelectedDeviceInfo();
}

void IpConfigurationWidget::addMakeUsable(QMenu &menu) {
    const OptionalDevice device = selectedLostDevice();
    QAction *action = menu.addAction(QStringLiteral("Make &Usable..."));
    action->setEnabled(device && !isInUse(*device));
    connect(action, &QAction::triggered, this, &IpConfigurationWidget::makeUsable);
}

QString IpConfigurationWidget::makeUsableText(const QString &mac) const {
    const auto &cameras = inventory().cameras;
    const auto findings = m_Situation.ofCamera(mac);
    const auto hasOtherMask = [&](const commissioning::Camera &camera) {
        return camera.status != commissioning::Status::InUse &&
               std::any_of(findings.begin(), findings.end(),
                           [](const commissioning::Finding *finding) { return finding->code == "mask-differs"; });
    };
    const bool isNeeded = std::any_of(cameras.begin(), cameras.end(), [&](const commissioning::Camera &camera) {
        return camera.mac == mac.toStdString() && (needsRescue(camera, inventory()) || hasOtherMask(camera));
    });
    return isNeeded
               ? QStringLiteral("<p><a href='%1'>Make this camera usable...</a></p>").arg(QLatin1String(MakeUsableLink))
               : QString();
}

void IpConfigurationWidget::makeUsable() {
    const OptionalDevice device = selectedLostDevice();
    if (!device || m_BusyDepth > 0)
        return;
    const Busy busy(m_BusyDepth);
    aimAtSelection();
    m_Notice = {};
    guarded("makeUsable", [&] {
        MakeUsable way(*this, m_Interaction, *device, m_Change.adapter);
        const bool isWanted = way.propose([this] {
            commissioning::Inventory all = inventory();
            all.adapters = commissioning::surveyAdapters();
            return all;
        });
        if (isWanted)
            carryOut(way);
        else if (!way.problem().isEmpty())
            showBox(QMessageBox::Critical, QStringLiteral("The camera cannot be made usable."), way.problem(),
                    QMessageBox::Close);
    });
}

void IpConfigurationWidget::carryOut(MakeUsable &way) {
    const commissioning::Result result = way.carryOut(operationContext());
    if (m_Interaction.isCancelled() && !result.success)
        followCancelledRescue(way, result);
    else
        followRescue(way, result);
}

void IpConfigurationWidget::followRescue(const MakeUsable &way, const commissioning::Result &result) {
    const QString mac = macOf(way.plan().device);
    if (!result.success) {
        updateEditor();
        showPatchedInfo(mac);
        const QString failure = m_Interaction.lastFailure();
        showBox(QMessageBox::Critical, QStringLiteral("The camera could not be made usable."),
                QString::fromStdString(result.text) + (failure.isEmpty() ? failure : QStringLiteral("\n\n") + failure),
                QMessageBox::Close);
        return;
    }
    if (way.isKept())
        m_ForcedAddresses.remove(mac);
    else
        m_ForcedAddresses[mac] = QHostAddress(way.plan().address).toString();
    clearEditFlags();
    doRefresh();
    const OptionalDevice device = deviceOf(mac);
    const bool isSilent = device && GetAccessibility(*device) == Accessibility_NotReachable;
    m_Notice = {mac, QString::fromStdString(result.text).prepend(doneText(way) + QLatin1Char(' ')).trimmed(),
                isSilent ? QStringLiteral("Done, but the camera cannot be reached yet.") : QStringLiteral("Done.")};
    updateSelectionInfo(ui->deviceTree->currentItem());
}

void IpConfigurationWidget::followCancelledRescue(const MakeUsable &way, const commissioning::Result &result) {
    const QString mac = macOf(way.plan().device);
    const bool isForcedOnly = result.path == commissioning::Path::None || result.path == commissioning::Path::Force;
    m_Notice = {mac, isForcedOnly ? QStringLiteral("Nothing was sent.") : QString::fromStdString(result.text)};
    const bool wasSent = m_Interaction.sent().has_value();
    if (isForcedOnly)
        followCancelledForce();
    if (isForcedOnly && wasSent && way.isKept())
        m_Notice.text += QStringLiteral(" Nothing was stored.");
    showPatchedInfo(mac);
    updateEditor();
}
