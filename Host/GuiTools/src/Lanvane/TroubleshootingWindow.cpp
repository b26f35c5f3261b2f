#include "Lanvane/TroubleshootingWindow.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QRegularExpression>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {

/// A cell or line of Markdown, of which the documentation uses only code and links.
QString richText(const QString &markdown) {
    QString text = markdown.trimmed().toHtmlEscaped();
    text.replace(QRegularExpression(QStringLiteral("`([^`]*)`")), QStringLiteral("<code>\\1</code>"));
    return text.replace(QRegularExpression(QStringLiteral("\\[([^\\]]*)\\]\\([^)]*\\)")), QStringLiteral("\\1"));
}

QString sentence(const QString &markdown) {
    const QString text = markdown.trimmed();
    return richText(text.left(1).toUpper() + text.mid(1)) + (text.endsWith(QLatin1Char('.')) ? "" : ".");
}

QString entry(const QStringList &cells) {
    return QStringLiteral("<h3>%1</h3><p><b>What to do:</b> %2</p><p><b>Found by:</b> %3</p>"
                          "<p><small>%4, %5</small></p>")
        .arg(sentence(cells[3]), sentence(cells[5]), sentence(cells[4]), richText(cells[1]), richText(cells[2]));
}

} // namespace

QString troubleshootingPage(const QString &findings) {
    QString page = QStringLiteral(
        "<h2>When a camera does not show up or cannot be used</h2><p>Check cable and power first: the camera's link "
        "light is on. Select the camera's row, or its adapter's, to read what is wrong with it. <code>lanvanectl "
        "doctor</code> looks at this computer and its cameras and prints which of the following apply, with evidence "
        "and with commands that help; in those below, <code>eth1</code> stands for the adapter.</p>");
    for (const QString &line : findings.split(QLatin1Char('\n'))) {
        const QStringList cells = line.split(QLatin1Char('|'));
        if (line.startsWith(QLatin1String("| `")) && cells.size() == 7)
            page += entry(cells);
        if (line.startsWith(QLatin1String("(1)")) || line.startsWith(QLatin1String("the adapter has no link-local")))
            page += QStringLiteral("<p><small>%1</small></p>").arg(richText(line));
    }
    return page;
}

TroubleshootingWindow::TroubleshootingWindow(QWidget *parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("Troubleshooting"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *page = new QTextBrowser(this);
    page->setObjectName(QStringLiteral("troubleshooting"));
    page->setAccessibleName(QStringLiteral("What to do"));
    QFile findings(QStringLiteral(":/Lanvane/findings.md"));
    findings.open(QIODevice::ReadOnly);
    page->setHtml(troubleshootingPage(QString::fromUtf8(findings.readAll())));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(page);
    layout->addWidget(buttons);
    resize(70 * fontMetrics().averageCharWidth(), 30 * fontMetrics().lineSpacing());
}
