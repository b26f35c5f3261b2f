// Drives the real window without a user: finds the cameras, gives the one in a foreign subnet a temporary address,
// saves a configuration, prints what it did and leaves pictures. Usage: drive_window FOLDER

#include "Lanvane/MainWnd.h"
#include "Lanvane/ipconfigurationwidget.h"
#include "MinimalCorvo/CorvoBase.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <cstdio>
#include <stdexcept>

namespace {

enum Column { ColName, ColSerialNumber, ColMac, ColStatus, ColIpConfiguration, ColIpAddress };

class Driver {
public:
    Driver(MainWnd &window, const QString &folder)
        : m_Window(window), m_Tree(*window.findChild<QTreeWidget *>(QStringLiteral("deviceTree"))), m_Folder(folder) {}

    void run() {
        waitForRows();
        step("Found");
        printRows();
        picture("found");

        select(QStringLiteral("21000102"));
        step("Selected the camera in a foreign subnet");
        picture("foreign");
        answerDialog(QStringLiteral("192.168.10.77"));
        QMetaObject::invokeMethod(&widget(), "onAssignTemporaryIPAddress");
        step("Gave it the temporary address 192.168.10.77");
        printRows();

        select(QStringLiteral("21000101"));
        type(widget(), "editIpAddress", QStringLiteral("192.168.10.21"));
        click(QStringLiteral("btnWriteConfiguration"));
        step("Saved 192.168.10.21 as the static address of the camera on the conveyor");
        printRows();
        picture("saved");
    }

private:
    IpConfigurationWidget &widget() { return *m_Window.findChild<IpConfigurationWidget *>(); }

    static void step(const char *what) { std::printf("\n%s\n", what); }

    void waitForRows() {
        for (int i = 0; i < 200 && m_Tree.topLevelItemCount() == 0; ++i)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }

    void printRows() {
        for (QTreeWidgetItemIterator i(&m_Tree); *i; ++i) {
            const QTreeWidgetItem &row = **i;
            if (!row.parent()) {
                std::printf("  %s\n", qPrintable(row.text(ColName)));
                continue;
            }
            std::printf("    %-10s %-10s %-14s %-20s %s\n", qPrintable(row.text(ColName)),
                        qPrintable(row.text(ColSerialNumber)), qPrintable(row.text(ColStatus)),
                        qPrintable(row.text(ColIpConfiguration)), qPrintable(row.text(ColIpAddress)));
        }
    }

    void select(const QString &serialNumber) {
        const auto rows = m_Tree.findItems(serialNumber, Qt::MatchExactly | Qt::MatchRecursive, ColSerialNumber);
        if (rows.isEmpty())
            throw std::runtime_error("camera " + serialNumber.toStdString() + " is not listed");
        m_Tree.setCurrentItem(rows.first());
    }

    static void type(QWidget &parent, const char *field, const QString &text) {
        auto *edit = parent.findChild<QLineEdit *>(QLatin1String(field));
        edit->setText(text);
        emit edit->textEdited(text); // as typing does
    }

    void click(const QString &button) {
        auto *push = widget().findChild<QPushButton *>(button);
        if (!push->isEnabled())
            throw std::runtime_error(button.toStdString() + " is disabled");
        push->click();
    }

    /// Fills in the dialog that comes up next and accepts it.
    void answerDialog(const QString &address) {
        QTimer::singleShot(200, &m_Window, [this, address] {
            QWidget *dialog = QApplication::activeModalWidget();
            if (!dialog)
                return;
            type(*dialog, "editIpAddress", address);
            dialog->grab().save(m_Folder + QStringLiteral("/force-ip.png"));
            static_cast<QDialog *>(dialog)->accept();
        });
    }

    void picture(const char *name) {
        QApplication::processEvents();
        const QString file = m_Folder + QLatin1Char('/') + QLatin1String(name) + QStringLiteral(".png");
        if (!m_Window.grab().save(file))
            throw std::runtime_error("cannot write " + file.toStdString());
        std::printf("  picture: %s\n", qPrintable(QDir::cleanPath(file)));
    }

    MainWnd &m_Window;
    QTreeWidget &m_Tree;
    QString m_Folder;
};

} // namespace

int main(int argc, char *argv[]) {
    if (argc != 2) {
        std::fprintf(stderr, "Usage: drive_window FOLDER\n");
        return 2;
    }
    Q_INIT_RESOURCE(Lanvane);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {}); // as the tool does
    const QString folder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(folder);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder); // leaves the user's settings alone
    const QApplication application(argc, argv);
    Corvo::CorvoInitialize();
    int result = 0;
    try {
        MainWnd window;
        window.resize(1000, 480);
        window.show();
        Driver(window, folder).run();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        result = 1;
    }
    Corvo::CorvoTerminate(true);
    return result;
}
