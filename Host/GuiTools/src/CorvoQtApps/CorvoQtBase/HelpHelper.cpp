#include "CorvoQtBase/HelpHelper.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QUrl>

bool CHelpHelper::m_isInitialised = false;
std::array<QString, CHelpHelper::HelpType_Max> CHelpHelper::m_pathnames;

namespace {

bool isKnown(CHelpHelper::HelpType type) { return type >= 0 && type < CHelpHelper::HelpType_Max; }

QString existingFile(const QDir &folder, const QString &name) {
    const QFileInfo file(folder, name);
    return file.exists() ? file.absoluteFilePath() : QString();
}

} // namespace

void CHelpHelper::init() {
    if (m_isInitialised)
        return;
    m_pathnames.fill(QString());
    m_isInitialised = true;

    QDir folder(QCoreApplication::applicationDirPath());
    if (!folder.cd(QStringLiteral("../share/doc")))
        return;
    m_pathnames[HelpType_CppProgGuide] = existingFile(folder, QStringLiteral("C++/index.html"));
    m_pathnames[HelpType_CProgGuide] = existingFile(folder, QStringLiteral("C/index.html"));
    m_pathnames[HelpType_BconProgGuide] = existingFile(folder, QStringLiteral("BCON/index.html"));
}

bool CHelpHelper::isHelpAvailable(HelpType type) { return !getHelpPath(type).isEmpty(); }

QString CHelpHelper::getHelpPath(HelpType type) {
    init();
    return isKnown(type) ? m_pathnames.at(static_cast<std::size_t>(type)) : QString();
}

QString CHelpHelper::GetHelpFilePath() { return QString(); }

void CHelpHelper::showHelp(HelpType type) {
    const QString path = getHelpPath(type);
    if (path.isEmpty() || QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        return;
    QMessageBox::information(nullptr, QCoreApplication::applicationName(),
                             QStringLiteral("Please open this file in a webbrowser:\n\n%1").arg(path));
}
