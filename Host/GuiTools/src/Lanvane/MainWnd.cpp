#include "Lanvane/MainWnd.h"

#include "CorvoQtBase/HelpHelper.h"
#include "Lanvane/TroubleshootingWindow.h"
#include "Lanvane/aboutdialog.h"
#include "Lanvane/ipconfigurationwidget.h"

#include <QCloseEvent>
#include <QDebug>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QStatusBar>

namespace {

constexpr const char *SettingsGroup = IpConfigurationWidget::SettingsGroup;
/// Stage of the build, for instance "beta"; empty for a release.
constexpr const char *BuildStageTag = "";

/// The stored rectangle with the frame that window systems put around it, roughly.
QRect frameOf(const QPoint &pos, const QSize &size) {
    return {QPoint(pos.x() - 8, pos.y() - 16), QPoint(pos.x() + size.width() - 9, pos.y() + size.height() - 9)};
}

bool isOnAScreen(const QRect &frame) {
    if (!frame.isValid())
        return false;
    for (const QScreen *screen : QGuiApplication::screens()) {
        if (screen->availableGeometry().intersects(frame))
            return true;
    }
    return false;
}

} // namespace

QString buildSuffix() {
    QString suffix = QStringLiteral(" 64-Bit");
    if (*BuildStageTag != '\0')
        suffix += QLatin1Char(' ');
    return suffix;
}

MainWnd::MainWnd(QWidget *parent, Qt::WindowFlags flags) : QMainWindow(parent, flags), Ui_MainWnd() {
    setupUi(this);
    m_IpConfigWidget = new IpConfigurationWidget(this);
    setCentralWidget(m_IpConfigWidget);
    if (!CHelpHelper::isHelpAvailable(CHelpHelper::HelpType_ApplicationHelp)) {
        menuHelp->removeAction(actionViewHelp);
        qDebug() << "View Help removed";
    }
    setUpStatusBar();
    restoreGeometryFromSettings();
    const QString kept = QLatin1String(SettingsGroup) + QStringLiteral("/keepuptodate");
    connect(actionKeepUpToDate, &QAction::toggled, this, [this, kept](bool isKept) {
        QSettings().setValue(kept, isKept);
        m_IpConfigWidget->setKeptUpToDate(isKept);
    });
    actionKeepUpToDate->setChecked(QSettings().value(kept).toBool());
    connect(actionExit, SIGNAL(triggered()), this, SLOT(close()));
    connect(actionOpenPlan, &QAction::triggered, m_IpConfigWidget, &IpConfigurationWidget::openPlan);
    connect(actionSaveListAs, &QAction::triggered, m_IpConfigWidget, &IpConfigurationWidget::saveListAs);
    connect(actionConfigureSelected, &QAction::triggered, m_IpConfigWidget, &IpConfigurationWidget::configureSelected);
    connect(actionUndoLastChange, &QAction::triggered, m_IpConfigWidget, &IpConfigurationWidget::undoLastChange);
    connect(menuCameras, &QMenu::aboutToShow, this, [this] {
        actionConfigureSelected->setEnabled(m_IpConfigWidget->isCameraSelected());
        actionUndoLastChange->setEnabled(m_IpConfigWidget->canUndo());
    });
}

void MainWnd::setUpStatusBar() {
    auto *summary = new QPushButton(this);
    summary->setObjectName(QStringLiteral("btnSummary"));
    summary->setFlat(true);
    summary->setStyleSheet(QStringLiteral("QPushButton { border: 1px solid transparent; padding: 2px 4px; }"
                                          "QPushButton:focus { border-color: palette(highlight); }"));
    summary->setToolTip(QStringLiteral("Select the next row that needs attention"));
    summary->hide(); // until there is something to say
    statusBar()->addWidget(summary);
    statusBar()->setSizeGripEnabled(false);
    connect(summary, &QPushButton::clicked, m_IpConfigWidget, &IpConfigurationWidget::showNextInNeed);
    connect(m_IpConfigWidget, &IpConfigurationWidget::summaryChanged, summary, [summary](const QString &text) {
        summary->setText(text);
        summary->setVisible(!text.isEmpty());
    });
}

void MainWnd::restoreGeometryFromSettings() {
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    if (!settings.contains("pos") || !settings.contains("size"))
        return;
    const QPoint pos = settings.value("pos").toPoint();
    const QSize size = settings.value("size").toSize();
    if (!isOnAScreen(frameOf(pos, size)))
        return;
    resize(size);
    move(pos);
}

void MainWnd::giveUpDevice() { m_IpConfigWidget->giveUpDevice(); }

void MainWnd::on_actionRefresh_triggered() { m_IpConfigWidget->refresh(); }

void MainWnd::on_actionAbout_triggered() {
    AboutDialog about(this);
    about.setProductVersion(QStringLiteral("%1.%2.%3.%4%5").arg(1).arg(0).arg(13).arg(0).arg(buildSuffix()));
    about.setCopyrightTimeRange(QStringLiteral("2019"));
    about.exec();
}

void MainWnd::on_actionTroubleshooting_triggered() {
    auto *open = findChild<TroubleshootingWindow *>();
    TroubleshootingWindow &page = open ? *open : *new TroubleshootingWindow(this);
    page.show();
    page.raise();
    page.activateWindow();
}

void MainWnd::closeEvent(QCloseEvent *event) {
    if (!m_IpConfigWidget->close()) {
        event->ignore();
        return;
    }
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    settings.setValue("pos", pos());
    settings.setValue("size", QSize(width(), height()));
    event->accept();
}
