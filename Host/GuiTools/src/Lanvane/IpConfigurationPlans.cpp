// IpConfigurationWidget: what is done with several cameras in one go, and undone.

#include "Lanvane/IpConfigurationParts.h"
#include "Lanvane/PlanWindow.h"
#include "commissioning/AddressText.h"
#include "commissioning/Undo.h"
#include "ui_ipconfigurationwidget.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>

using namespace Corvo;
using commissioning::JournalEntry;

namespace {

constexpr const char *PlanFilter = "Plans (*.csv);;All files (*)";

std::vector<std::string> texts(const QStringList &list) {
    std::vector<std::string> result;
    for (const QString &text : list)
        result.push_back(text.toStdString());
    return result;
}

/// When it was begun, and what it changed.
QString undoNote(const std::string &id, const std::vector<JournalEntry> &entries) {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const JournalEntry &each) { return each.id == id || each.plan == id; });
    const QDateTime time = QDateTime::fromString(QString::fromStdString(found->time), Qt::ISODateWithMs);
    return QStringLiteral("The cameras get back what they had stored before the change of %1.")
        .arg(time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
}

QString lossText(const std::vector<commissioning::UndoLoss> &losses) {
    QString text = losses.empty() ? QString() : QStringLiteral("\nNot everything comes back:");
    for (const commissioning::UndoLoss &loss : losses)
        text += QStringLiteral("\n%1: %2")
                    .arg(QString::fromStdString(commissioning::macText(loss.mac)), QString::fromStdString(loss.text));
    return text;
}

QString problemText(const commissioning::Plan &plan) {
    QStringList lines;
    for (const commissioning::PlanProblem &problem : plan.problems)
        lines << QString::fromStdString(problem.text);
    return lines.join(QLatin1Char('\n'));
}

} // namespace

bool IpConfigurationWidget::settleEditor() {
    if (!m_Editor.isSavePending())
        return true;
    if (checkSaveChanges()) {
        if (!saveEdited()) {
            showFailure(QStringLiteral("The configuration could not be saved."), QMessageBox::Ok);
            return false;
        }
        doRefresh();
    }
    fillEditor(ui->deviceTree->currentItem());
    return true;
}

void IpConfigurationWidget::execPlan(PlanTable table, const PlanOrder &order) {
    PlanWindow window(
        {m_Interaction.operation(), m_pDeviceLister->Tl(), m_Journal, m_Patience, [this] { m_Background.end(); }},
        std::move(table), order, this);
    window.exec();
    for (const std::string &mac : window.doneCameras())
        m_ForcedAddresses.remove(QString::fromStdString(mac)); // what they have is what they have stored
    if (window.wasApplied())
        doRefresh();
}

void IpConfigurationWidget::configureSelected() {
    if (m_BusyDepth > 0)
        return;
    const Busy busy(m_BusyDepth);
    guarded("configureSelected", [this] {
        const QStringList macs = ui->deviceTree->selectedMacs();
        if (macs.isEmpty() || !settleEditor())
            return;
        PlanTable table(texts(macs), inventory());
        execPlan(std::move(table), {QStringLiteral("Configure Cameras"), QString(), true, "plan", ""});
    });
}

void IpConfigurationWidget::openPlan() {
    if (m_BusyDepth > 0)
        return;
    const Busy busy(m_BusyDepth);
    guarded("openPlan", [this] {
        if (!settleEditor())
            return;
        const QString name =
            QFileDialog::getOpenFileName(this, QStringLiteral("Open Plan"), QString(), QLatin1String(PlanFilter));
        if (name.isEmpty())
            return;
        QFile file(name);
        const bool isOpen = file.open(QIODevice::ReadOnly);
        const QByteArray text = file.read(static_cast<qint64>(commissioning::MaxPlanBytes) + 1);
        if (!isOpen || file.error() != QFileDevice::NoError) {
            showBox(QMessageBox::Critical, QStringLiteral("The plan cannot be read."), file.errorString(),
                    QMessageBox::Close);
            return;
        }
        PlanTable table(commissioning::readPlan(text.toStdString()), inventory(), true);
        execPlan(std::move(table), {QFileInfo(name).fileName(), QString(), false, "plan", ""});
    });
}

void IpConfigurationWidget::saveListAs() {
    if (m_BusyDepth > 0)
        return;
    const Busy busy(m_BusyDepth);
    guarded("saveListAs", [this] {
        commissioning::Inventory listed = inventory();
        const std::vector<std::string> macs = texts(ui->deviceTree->selectedMacs());
        auto &cameras = listed.cameras;
        if (macs.size() > 1)
            cameras.erase(std::remove_if(cameras.begin(), cameras.end(),
                                         [&](const commissioning::Camera &camera) {
                                             return std::find(macs.begin(), macs.end(), camera.mac) == macs.end();
                                         }),
                          cameras.end());
        std::sort(cameras.begin(), cameras.end(), [](const auto &a, const auto &b) { return a.mac < b.mac; });
        const QString title = macs.size() > 1 ? QStringLiteral("Save the List of the Selected Cameras")
                                              : QStringLiteral("Save the List of All Cameras");
        const QString name = QFileDialog::getSaveFileName(this, title, QDir::current().filePath("cameras.csv"),
                                                          QLatin1String(PlanFilter));
        if (name.isEmpty())
            return;
        QSaveFile file(name); // all of it or nothing
        file.setDirectWriteFallback(true);
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(QByteArray::fromStdString(planText(commissioning::planOf(listed)))) < 0 || !file.commit())
            showBox(QMessageBox::Critical, QStringLiteral("The list could not be saved."), file.errorString(),
                    QMessageBox::Close);
    });
}

bool IpConfigurationWidget::canUndo() const {
    try {
        return !commissioning::lastStandingIn(m_Journal.read().entries).empty();
    } catch (const std::system_error &) { // which the attempt tells
        return true;
    }
}

void IpConfigurationWidget::undoLastChange() {
    if (m_BusyDepth > 0)
        return;
    const Busy busy(m_BusyDepth);
    guarded("undoLastChange", [this] {
        if (!settleEditor())
            return;
        const std::vector<JournalEntry> entries = m_Journal.read().entries;
        const std::string id = commissioning::lastStandingIn(entries);
        if (id.empty()) {
            showBox(QMessageBox::Information, QStringLiteral("There is nothing to undo."), QString(), QMessageBox::Ok);
            return;
        }
        const commissioning::Inventory now = inventory();
        commissioning::Undo undo = commissioning::undoOf(id, entries, now, false);
        if (!undo.plan.problems.empty()) {
            if (showBox(QMessageBox::Question,
                        QStringLiteral("Not all of the last change can be undone.\nDo you want to undo what can be?"),
                        problemText(undo.plan), QMessageBox::Yes | QMessageBox::No) != QMessageBox::Yes)
                return;
            undo = commissioning::undoOf(id, entries, now, true);
        }
        PlanTable table(undo.plan, now, false);
        execPlan(std::move(table), {QStringLiteral("Undo Last Change"), undoNote(id, entries) + lossText(undo.losses),
                                    false, "undo", id});
    });
}
