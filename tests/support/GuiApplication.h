#pragma once

#include <QApplication>
#include <QLocale>
#include <QSettings>
#include <QTemporaryDir>
#include <memory>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

/// An application as the product has it, with settings of its own and the C locale. No thread may run yet.
class GuiApplication {
public:
    GuiApplication(int &argc, char **argv, const char *platform = "offscreen") {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_Settings.path());
        qputenv("QT_QPA_PLATFORM", platform);
        qputenv("LC_ALL", "C"); // the application object sets the C library's locale from it
        QLocale::setDefault(QLocale::c());
        QCoreApplication::setApplicationName(QStringLiteral("Ostra Lanvane"));
        QCoreApplication::setOrganizationName(QStringLiteral("Quorel"));
        QCoreApplication::setOrganizationDomain(QStringLiteral("quorel.example"));
        Q_INIT_RESOURCE(Lanvane);
#ifdef __SANITIZE_ADDRESS__
        const __lsan::ScopedDisabler ignored; // the offscreen platform never frees its screen
#endif
        m_Application = std::make_unique<QApplication>(argc, argv);
    }

private:
    QTemporaryDir m_Settings;
    std::unique_ptr<QApplication> m_Application;
};
