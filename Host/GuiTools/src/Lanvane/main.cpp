#include "Lanvane/MainWnd.h"
#include "MinimalCorvo/CorvoBase.h"

#include <QApplication>
#include <QIcon>

#include <cstdio>
#include <cstdlib>

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

/// Hundreds of cameras answer a search faster than the library's usual buffer takes.
void provideLargeReceiveBuffer() {
    constexpr const char *Variable = "CORVO_BROADCAST_RECV_BUF_SIZE";
    if (!qEnvironmentVariableIsSet(Variable))
        qputenv(Variable, "1000000");
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
    provideLargeReceiveBuffer();
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
    window.show();
    QObject::connect(&application, SIGNAL(lastWindowClosed()), &application, SLOT(quit()));
    return QApplication::exec();
}

// Without any handler the runtime would end the process before it destroys what has been built.
int main(int argc, char *argv[]) try { return run(argc, argv); } catch (...) {
    throw;
}
