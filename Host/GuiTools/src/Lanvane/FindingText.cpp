#include "Lanvane/FindingText.h"

#include "CorvoQtBase/DeviceText.h"

#include <QUrl>

#include <algorithm>

using commissioning::Finding;
using commissioning::Severity;

namespace {

constexpr const char *CopyScheme = "copy:";
constexpr const char *NoAnswer = "no-answer";

QString rich(const std::string &text) { return richDeviceText(QString::fromStdString(text)); }

const char *wordOf(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return "<b>Error:</b> ";
    case Severity::Warning:
        return "<b>Warning:</b> ";
    case Severity::Info:
        break;
    }
    return "";
}

/// Below the heading that says the rest.
QString causesOf(const Finding &finding) {
    const auto causes = std::find_if(finding.evidence.begin(), finding.evidence.end(),
                                     [](const auto &entry) { return entry.first == "causes"; });
    const auto *text = causes != finding.evidence.end() ? std::get_if<std::string>(&causes->second) : nullptr;
    return rich(text ? *text : finding.text);
}

QString sentenceOf(const Finding &finding) {
    return QLatin1String(wordOf(finding.severity)) +
           (finding.code == NoAnswer ? causesOf(finding) : rich(finding.text));
}

QString commandText(const std::string &command) {
    const QByteArray link = QUrl::toPercentEncoding(QString::fromStdString(command));
    return QStringLiteral("<p style='margin-left:12px'><span style='font-family:monospace'>%1</span> &nbsp;<a "
                          "href='%2%3'>Copy</a></p>")
        .arg(rich(command), QLatin1String(CopyScheme), QString::fromLatin1(link));
}

QString text(const Finding &finding) {
    QString all = QStringLiteral("<p>%1</p>").arg(sentenceOf(finding));
    if (!finding.remedies.empty())
        all += finding.remedies.size() == 1 ? QStringLiteral("<p>This command helps:</p>")
                                            : QStringLiteral("<p>Commands that help:</p>");
    for (const std::string &command : finding.remedies)
        all += commandText(command);
    return all;
}

} // namespace

QString findingsText(const Situation::Findings &findings) {
    QString all;
    for (const Finding *finding : findings)
        all += text(*finding);
    return all;
}

QString adapterFindingsText(const Situation &situation, const QString &adapter) {
    const bool isSearched = situation.observation().searched.count(adapter.toStdString()) != 0;
    const bool isSilent = situation.isComplete() && isSearched && !situation.hasCameraBehind(adapter);
    return (isSilent ? QStringLiteral("<p><b>No camera answered here</b></p>") : QString()) +
           findingsText(situation.ofAdapter(adapter));
}

QString findingsTip(const Situation::Findings &findings) {
    QString tip;
    for (const Finding *finding : findings)
        tip += QStringLiteral("<p>%1%2</p>").arg(QLatin1String(wordOf(finding->severity)), rich(finding->text));
    return tip;
}

QString commandOf(const QString &link) {
    if (!link.startsWith(QLatin1String(CopyScheme)))
        return {};
    return QUrl::fromPercentEncoding(link.mid(static_cast<int>(qstrlen(CopyScheme))).toLatin1());
}
