// main() of the tests that need widgets: an application as the product has it, with settings of its own.

#include <QApplication>
#include <QLocale>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace {

std::unique_ptr<QApplication> makeApplication(int &argc, char **argv) {
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler ignored; // the offscreen platform never frees its screen
#endif
    return std::make_unique<QApplication>(argc, argv);
}

} // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) // asked at build time, where there may be no display
        return RUN_ALL_TESTS();
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    qputenv("LC_ALL", "C"); // the application object sets the C library's locale from it
    QLocale::setDefault(QLocale::c());
    QCoreApplication::setApplicationName(QStringLiteral("Ostra Lanvane"));
    QCoreApplication::setOrganizationName(QStringLiteral("Quorel"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("quorel.example"));
    Q_INIT_RESOURCE(Lanvane);
    const std::unique_ptr<QApplication> application = makeApplication(argc, argv);
    return RUN_ALL_TESTS();
}
