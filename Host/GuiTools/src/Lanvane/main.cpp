#include "Lanvane/MainWnd.h"
#include "Lanvane/TerminationSignals.h"
#include "MinimalCorvo/CorvoBase.h"

#include <QApplication>
#include <QIcon>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

/// Only fatal messages reach the user; everything else that Qt has to say is dropped.
void LanvaneMessageOutput(QtMsgType type, const QMessageLogContext &context, const QString &message) {
    if (type != QtFatalMsg)
        return;
    const auto known = [](const char *text) { return text != nullptr ? text : ""; }; // release builds leave it out
    std::fprintf(stderr, "Fatal: %s (%s:%u, %s)\n", message.toLocal8Bit().constData(), known(context.file),
                 static_cast<unsigned>(context.line), known(context.function));
    std::abort();
}

/// What the tool needs differs from what the library does when nothing is set.
void provideSettings() {
    const std::pair<const char *, const char *> settings[] = {
        // Hundreds of cameras answer a search faster than the usual buffer takes.
        {"CORVO_BROADCAST_RECV_BUF_SIZE", "1000000"},
        // How long, in ms, a camera stays blocked when the tool dies: short, but longer than the 10 s that a camera may
        // ask for to write a setting.
        {"CORVO_GIGE_HEARTBEAT", "12000"},
    };
    for (const auto &[variable, value] : settings) {
        if (!qEnvironmentVariableIsSet(variable))
            qputenv(variable, value);
    }
}

/// The library is up as long as this lives.
class CorvoLibrary {
public:
    CorvoLibrary() { Corvo::CorvoInitialize(); }
    ~CorvoLibrary() { Corvo::CorvoTerminate(true); }
    Q_DISABLE_COPY(CorvoLibrary)
};

QIcon applicationIcon() {
    QIcon icon;
    for (const char *size : {"256x256", "128x128", "64x64", "32x32", "16x16"})
        icon.addFile(QStringLiteral(":/Lanvane/Resources/Icon_%1.png").arg(QLatin1String(size)));
    return icon;
}

} // namespace

static int run(int argc, char *argv[]) {
    QCoreApplication::setApplicationName(QStringLiteral("Ostra Lanvane"));
    QCoreApplication::setOrganizationName(QStringLiteral("Quorel"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("quorel.example"));
    QGuiApplication::setDesktopFileName(QStringLiteral("lanvane")); // by which Wayland docks find the icon
    qInstallMessageHandler(&LanvaneMessageOutput);
    provideSettings();
    Q_INIT_RESOURCE(Lanvane); // in a static library the linker would leave them out
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);

    // Destroyed in reverse order, also when a later one throws: icon, window, library, application.
    const QApplication application(argc, argv);
    const CorvoLibrary library;
    MainWnd window;
    const QIcon icon = applicationIcon();
    window.setWindowIcon(icon);
    window.setWindowTitle(window.windowTitle() + buildSuffix());
    const TerminationSignals terminationSignals([&window] { window.giveUpDevice(); });
    window.show();
    QObject::connect(&application, SIGNAL(lastWindowClosed()), &application, SLOT(quit()));
    return QApplication::exec();
}

// Without any handler the runtime would end the process before it destroys what has been built.
int main(int argc, char *argv[]) try { return run(argc, argv); } catch (...) {
    throw;
}
