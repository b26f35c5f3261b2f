#pragma once

#include "ui_MainWnd.h"

#include <QMainWindow>

class IpConfigurationWidget;

/// The program's window: menus, the configuration widget, and the geometry kept across runs.
class MainWnd : public QMainWindow, private Ui_MainWnd {
    Q_OBJECT

public:
    explicit MainWnd(QWidget *parent = nullptr, Qt::WindowFlags flags = {});

    /// Closes the device that an operation may have opened, so that others can have it. For the end of the process.
    void giveUpDevice();

private slots:
    void on_actionRefresh_triggered();
    void on_actionAbout_triggered();
    void on_actionTroubleshooting_triggered();
    /// Asks the configuration widget first, which may refuse.
    void closeEvent(QCloseEvent *event) override;

private:
    void setUpStatusBar();
    void restoreGeometryFromSettings();

    IpConfigurationWidget *m_IpConfigWidget = nullptr;
};

/// " 64-Bit", for the window's title and the version.
QString buildSuffix();
