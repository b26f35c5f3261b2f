// main() of the system tests: a private network before anything else, then the application's surroundings.

#include "MinimalCorvo/CorvoBase.h"
#include "support/NetworkMain.h"
#include "support/TestFolder.h"

#include <QApplication>
#include <QSettings>
#include <gtest/gtest.h>

/// Read by LeakSanitizer: Qt's off-screen platform keeps its one screen.
extern "C" const char *__lsan_default_suppressions() { return "leak:libqoffscreen.so\n"; }

int main(int argc, char **argv) {
    return testnet::runInPrivateNetwork(argc, argv, [&] {
        const TestFolder folder;
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("LC_ALL", "C", 1);
        setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1); // of the trace log
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                           QString::fromStdString((folder / "settings").string()));
        QCoreApplication::setOrganizationName(QStringLiteral("Quorel"));
        QCoreApplication::setApplicationName(QStringLiteral("Ostra Lanvane"));
        Q_INIT_RESOURCE(Lanvane);
        const QApplication application(argc, argv);
        Corvo::CorvoInitialize();
        const int result = RUN_ALL_TESTS();
        Corvo::CorvoTerminate(true);
        return result;
    });
}
